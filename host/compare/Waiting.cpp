#include "host/compare/Waiting.h"

#include <algorithm>
#include <set>

#include "platform/asic/Store.h"

namespace Host {

std::vector<Waiting> waitingIn(Asic::Chip const& chip) {
  std::vector<Waiting> waiting;
  for (auto const* store : chip.stores()) {
    // One that could not fit into the empty table either is not in its queue.
    if (store->refused() == 0) continue;
    store->forEachEntry([&](Asic::EntryView const& entry) {
      if (entry.state() == Asic::EntryState::full)
        waiting.push_back({entry.handle().record()->lastWrite, std::string(store->name()), entry.key()});
    });
  }
  std::sort(waiting.begin(), waiting.end());
  return waiting;
}

std::vector<Waiting> newlyWaiting(std::vector<Waiting> const& before, std::vector<Waiting> after) {
  std::set<std::pair<std::string, std::string>> known;
  for (auto const& one : before) known.emplace(one.table, one.key);
  std::erase_if(after, [&](Waiting const& one) { return known.contains({one.table, one.key}); });
  return after;
}

}  // namespace Host
