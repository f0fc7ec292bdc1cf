#include "host/compare/Transition.h"

#include <algorithm>
#include <map>

#include "host/show/VtepRows.h"
#include "platform/asic/Store.h"

namespace Host {

namespace {

constexpr std::uint64_t kNowhere = ~std::uint64_t{0};  ///< Of a row that an entry waits for; never written.

/// The entries that one refers to, and for a block those of each of its rows.
class Targets final : public Asic::FieldVisitor {
 public:
  void number(std::string_view, std::uint64_t) override {}
  void text(std::string_view, std::string) override {}
  void handle(std::string_view, Asic::EntryHandle::PtrConst const& target) override {
    if (target && target->record()) found.emplace_back(member_, target->record());
  }
  void groupBegin(std::string_view name) override {
    std::uint64_t number = 0;
    if (depth_++ == 0 && Kiln::readText(name, number)) {
      member_ = static_cast<std::uint32_t>(number);
      members = member_ + 1;
    }
  }
  void groupEnd() override { --depth_; }

  std::vector<std::pair<std::uint32_t, Asic::RecordBase*>> found;  ///< With the row that refers to it.
  std::uint32_t members = 1;

 private:
  unsigned depth_ = 0;
  std::uint32_t member_ = 0;
};

Targets targetsOf(Asic::EntryHandle const& entry) {
  Targets targets;
  entry.record()->store().showFields(*entry.record(), targets);
  return targets;
}

}  // namespace

/// Keeps for every row whether all that it leads to is written, and for every way whether it is whole, while rows
/// change one at a time: a change is carried up to what leads to the row.
class Transition::Ways {
 public:
  explicit Ways(boost::unordered_flat_map<RowId, Contents> const& rows) {
    nodes_[kNowhere].contents.written = false;
    for (auto const& [row, contents] : rows) nodes_[row].contents = contents;
    for (auto const& [row, contents] : rows) {
      for (auto const link : contents.links) nodes_[link].above.push_back(row);
    }
  }

  bool isWhole(Way const& way) {
    return std::all_of(way.tops.begin(), way.tops.end(), [this](auto const& top) {
      auto const verdict = verdictOf(top.first);
      return verdict.written && (verdict.sends || !top.second);
    });
  }
  /// Calls `visit(row)` for the row that changed and each above it.
  template <class Visit>
  void change(Event const& event, Visit const& visit) {
    auto const former = std::exchange(nodes_[event.row].contents, event.contents);
    for (auto const link : former.links) {
      auto& above = nodes_[link].above;
      above.erase(std::find(above.begin(), above.end(), event.row));
    }
    for (auto const link : event.contents.links) nodes_[link].above.push_back(event.row);
    forget(event.row, visit);
  }

 private:
  struct Verdict {
    bool written;
    bool sends;
  };
  struct Node {
    Contents contents;
    std::vector<RowId> above;
    std::optional<Verdict> verdict;
  };

  Verdict verdictOf(RowId row) {
    if (auto const known = nodes_[row].verdict) return *known;
    auto const contents = nodes_[row].contents;
    Verdict verdict{contents.written, contents.sends};
    for (auto const link : contents.links) {
      auto const below = verdictOf(link);
      verdict = {verdict.written && below.written, verdict.sends || below.sends};
    }
    nodes_[row].verdict = verdict;
    return verdict;
  }
  /// What is not known already was not asked for since its last change, nor anything above it.
  template <class Visit>
  void forget(RowId row, Visit const& visit) {
    visit(row);
    nodes_[row].verdict.reset();
    auto const above = nodes_[row].above;
    for (auto const one : above) forget(one, visit);
  }

  boost::unordered_flat_map<RowId, Node> nodes_;
};

Transition::Transition(Agent& agent) : agent_(agent), stores_(agent.chip().stores()), sending_(agent.chip()) {
  for (auto const& table : agent.chip().tables()) storeOf_[table.name] = storeNumber(*table.store);
  for (auto const* store : stores_) {
    store->forEachEntry([&](Asic::EntryView const& entry) {
      auto const first = entry.handle().row();
      if (!first) return;
      for (std::uint32_t i = 0; i < targetsOf(entry.handle()).members; ++i) {
        auto contents = contentsOf(entry.handle(), first->value() + i);
        contents.written = entry.state() == Asic::EntryState::written;
        rows_[rowId(*entry.handle().record()) + i] = std::move(contents);
      }
    });
  }
  before_ = ways();
  agent_.driver().observerIs(this);
}

Transition::~Transition() { agent_.driver().observerIs(nullptr); }

std::uint64_t Transition::storeNumber(Asic::StoreBase const& store) const {
  return static_cast<std::uint64_t>(std::find(stores_.begin(), stores_.end(), &store) - stores_.begin());
}

Transition::RowId Transition::rowId(Asic::RecordBase const& record) const {
  return record.hasRow() ? storeNumber(record.store()) << 32 | record.row : kNowhere;
}

/// A reference to a block is one to each of its rows.
Transition::Contents Transition::contentsOf(Asic::EntryHandle const& entry, std::uint32_t row) const {
  Contents contents{.links = {}, .sends = sending_.has(*entry.record())};
  auto const member = row - entry.record()->row;
  for (auto const& [from, target] : targetsOf(entry).found) {
    if (from != member) continue;
    auto const first = rowId(*target);
    auto const count = first == kNowhere ? 1 : targetsOf(target->weak()).members;
    for (std::uint32_t i = 0; i < count; ++i) contents.links.push_back(first + i);
  }
  return contents;
}

std::vector<Transition::Way> Transition::ways() const {
  RowFinder const finder(agent_);
  std::vector<Way> ways;
  for (auto const& tunnel : tunnelReports(agent_)) {
    auto& way = ways.emplace_back(Way{tunnel.type, tunnel.vtep, {}});
    for (auto const& needed : finder.needed(tunnel.type, tunnel.vtep))
      way.tops.emplace_back(needed.row ? rowId(*needed.row->record()) : kNowhere, needed.sends);
  }
  return ways;
}

void Transition::written(std::string_view table, std::uint32_t row, Asic::EntryHandle const& entry) {
  events_.push_back({storeOf_.at(std::string(table)) << 32 | row, contentsOf(entry, row)});
}

void Transition::cleared(std::string_view table, std::uint32_t row) {
  events_.push_back({storeOf_.at(std::string(table)) << 32 | row, {.links = {}, .sends = false, .written = false}});
}

std::vector<Interruption> Transition::interruptions() {
  agent_.driver().observerIs(nullptr);
  struct Tunnel {
    Way const* before;
    Way const* after;
    Interruption interruption;
    std::uint64_t brokenSince = 0;  ///< The write; 0 while it carries traffic.
  };
  Ways ways(rows_);
  std::map<std::pair<Vane::TunnelType, Meshal::IpGenAddr>, Way const*> wanted;
  auto const after = this->ways();
  for (auto const& way : after) wanted[{way.type, way.vtep}] = &way;
  std::vector<Tunnel> tunnels;
  boost::unordered_flat_map<RowId, std::vector<std::size_t>> tunnelsAt;
  for (auto const& way : before_) {
    auto const found = wanted.find({way.type, way.vtep});
    if (found == wanted.end() || !ways.isWhole(way)) continue;
    for (auto const* of : {&way, found->second}) {
      for (auto const& [row, sends] : of->tops) tunnelsAt[row].push_back(tunnels.size());
    }
    ways.isWhole(*found->second);
    tunnels.push_back({&way, found->second, {way.type, way.vtep}});
  }
  std::uint64_t number = 0;
  for (auto const& event : events_) {
    ++number;
    std::vector<std::size_t> touched;
    ways.change(event, [&](RowId row) {
      auto const at = tunnelsAt.find(row);
      if (at != tunnelsAt.end()) touched.insert(touched.end(), at->second.begin(), at->second.end());
    });
    std::sort(touched.begin(), touched.end());
    touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
    for (auto const index : touched) {
      auto& tunnel = tunnels[index];
      bool const carries = ways.isWhole(*tunnel.before) || ways.isWhole(*tunnel.after);
      if (!carries && tunnel.brokenSince == 0) {
        tunnel.brokenSince = number;
        if (tunnel.interruption.from == 0) tunnel.interruption.from = number;
      } else if (carries && tunnel.brokenSince != 0) {
        tunnel.interruption.writes += number - std::exchange(tunnel.brokenSince, 0);
      }
    }
  }
  std::vector<Interruption> interruptions;
  for (auto& tunnel : tunnels) {
    auto& [type, vtep, from, writes, lasts] = tunnel.interruption;
    if (from == 0) continue;
    lasts = tunnel.brokenSince != 0;
    if (lasts) writes += number + 1 - tunnel.brokenSince;
    interruptions.push_back(tunnel.interruption);
  }
  std::sort(interruptions.begin(), interruptions.end(),
            [](auto const& a, auto const& b) { return std::pair(a.type, a.vtep) < std::pair(b.type, b.vtep); });
  return interruptions;
}

}  // namespace Host
