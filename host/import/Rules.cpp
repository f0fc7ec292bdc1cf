#include "host/import/Rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace Host::Import {

namespace {

constexpr std::uint32_t vrfPriority = 1000;

/// A number in decimal or hexadecimal digits, as a number or as a text.
std::uint32_t numberOf(JsonIn at) {
  if (!at.isText()) return number(at);
  std::string const text(at.text());
  std::size_t end = 0;
  unsigned long value = 0;
  try {
    value = std::stoul(text, &end, 0);
  } catch (std::exception const&) {
    end = 0;
  }
  if (text.empty() || text[0] == '-' || end != text.size() || value > UINT32_MAX) at.fail("expected a number");
  return static_cast<std::uint32_t>(value);
}

std::uint32_t numberOr(JsonIn at, std::string_view key, std::uint32_t otherwise) {
  auto const member = at.find(key);
  return member ? numberOf(*member) : otherwise;
}

std::optional<Prefix> selector(JsonIn at, std::string_view address, std::string_view length) {
  auto const member = at.find(address);
  if (!member || member->text() == "all") return std::nullopt;
  auto selected = prefix(*member);
  auto const bits = at.find(length);
  if (bits) selected.length = numberIn(*bits, 0, bitsOf(selected.network));
  return Prefix{network(selected.network, selected.length), selected.length};
}

bool contains(Prefix const& prefix, IpGenAddr const& address) {
  return address.isIpv6() == prefix.network.isIpv6() && network(address, prefix.length) == prefix.network;
}

bool isZeroTos(JsonIn tos) { return !tos.isText() ? number(tos) == 0 : tos.text() == "0" || tos.text() == "0x00"; }

bool isUdp(JsonIn protocol) {
  return protocol.isText() ? protocol.text() == "udp" || protocol.text() == "17" : number(protocol) == 17;
}

/// Whether packets without a mark, a tunnel id or a user of their own, from the host itself, match.
bool matchesAlways(JsonIn at, std::uint32_t udpPort) {
  if (auto const in = word(at, "iif"); in && *in != "lo") return false;
  if ((numberOr(at, "fwmark", 0) & numberOr(at, "fwmask", UINT32_MAX)) != 0) return false;
  if (auto const tos = at.find("tos"); tos && !isZeroTos(*tos)) return false;
  if (auto const protocol = at.find("ipproto"); protocol && !isUdp(*protocol)) return false;
  auto const port = numberOr(at, "dport", udpPort);
  if (port != udpPort || numberOr(at, "dport_start", 0) > udpPort) return false;
  if (numberOr(at, "dport_end", UINT32_MAX) < udpPort) return false;
  return numberOr(at, "uid_start", 0) == 0 && numberOr(at, "tun_id", 0) == 0;
}

/// What a rule may have; realms mark what it finds and select nothing.
bool isKnown(std::string_view key) {
  static std::set<std::string_view> const known{"priority",
                                                "not",
                                                "src",
                                                "srclen",
                                                "dst",
                                                "dstlen",
                                                "tos",
                                                "fwmark",
                                                "fwmask",
                                                "iif",
                                                "oif",
                                                "ipproto",
                                                "dport",
                                                "dport_start",
                                                "dport_end",
                                                "l3mdev",
                                                "tun_id",
                                                "uid_start",
                                                "uid_end",
                                                "table",
                                                "protocol",
                                                "suppress_prefixlen",
                                                "suppress_ifgroup",
                                                "action",
                                                "goto",
                                                "nop",
                                                "flow_from",
                                                "flow_to",
                                                "realms",
                                                "iif_detached",
                                                "oif_detached",
                                                "unresolved",
                                                "type",
                                                "family",
                                                "to_realms"};
  return known.contains(key);
}

/// Why a lookup ends at a rule of this action; empty: it does not.
std::string endOf(std::string const& action) {
  static std::set<std::string> const ends{"blackhole", "unreachable", "prohibit"};
  return ends.contains(action) ? action + " rule" : "";
}

}  // namespace

std::string tableName(std::string const& text) {
  static std::map<std::string, std::string> const names{{"253", "default"}, {"254", "main"}, {"255", "local"}};
  auto const name = names.find(text);
  return name == names.end() ? text : name->second;
}

Rules::Rules(Files const& files, Links const& links, Warnings& warnings) : links_(links), warnings_(warnings) {
  auto const named = [](std::uint32_t priority, char const* table) {
    Rule rule;
    rule.priority = priority;
    rule.step.table = table;
    return rule;
  };
  Rule vrf;
  vrf.priority = vrfPriority;
  vrf.vrf = true;
  v4_ = v6_ = {named(0, "local"), vrf, named(32766, "main"), named(32767, "default")};
  if (files.v4) read(*files.v4, v4_);
  if (files.v6) read(*files.v6, v6_);
}

void Rules::read(JsonDocument const& file, std::vector<Rule>& into) {
  into.clear();
  for (auto const at : objects(file.root())) add(at, into);
  std::stable_sort(into.begin(), into.end(), [](auto& a, auto& b) { return a.priority < b.priority; });
}

void Rules::add(JsonIn at, std::vector<Rule>& into) {
  std::string unknown;
  at.eachMember([&](std::string_view key, JsonIn const&) {
    if (!isKnown(key)) unknown = key;
  });
  Rule rule;
  rule.priority = numberOr(at, "priority", 0);
  rule.invert = has(at, "not");
  rule.possible = matchesAlways(at, links_.vti().udpPort.value_or(0));
  rule.from = selector(at, "src", "srclen");
  rule.to = selector(at, "dst", "dstlen");
  rule.oif = word(at, "oif").value_or("");
  rule.vrf = has(at, "l3mdev");
  if (auto const target = at.find("goto")) rule.jump = target->isNull() ? 0 : numberOf(*target);
  auto const action = word(at, "action").value_or("");
  rule.step.end = endOf(action);
  rule.step.table = tableName(word(at, "table").value_or(""));
  if (has(at, "suppress_prefixlen")) rule.step.suppressedLength = numberOr(at, "suppress_prefixlen", 0);
  rule.step.suppressedGroup = word(at, "suppress_ifgroup").value_or("");
  bool const acts = rule.jump || rule.vrf || !rule.step.table.empty() || !rule.step.end.empty();
  rule.skip = has(at, "nop") || action == "nop";
  if (unknown.empty() && !acts && !rule.skip) unknown = "action";
  if (!unknown.empty()) {
    warnings_.add("rule", at.find(unknown).value_or(at),
                  fmt::format("ignored: the rule of priority {} depends on {}", rule.priority, unknown),
                  "packets that it leads otherwise are sent as if it were missing");
    rule.skip = true;
  }
  into.push_back(std::move(rule));
}

bool Rules::matches(Rule const& rule, Query const& query) const {
  bool matches = rule.possible;
  if (rule.to) matches = matches && contains(*rule.to, query.to);
  // Without a source address the lookup has the unspecified one.
  if (rule.from) matches = matches && (query.from ? contains(*rule.from, *query.from) : rule.from->length == 0);
  if (!rule.oif.empty()) matches = matches && query.device && query.device->name == rule.oif;
  if (rule.vrf) matches = matches && query.device && !query.device->table.empty();
  return matches != rule.invert;
}

std::vector<Rules::Step> Rules::steps(Query const& query) const {
  std::vector<Step> steps;
  auto const& rules = query.to.isIpv6() ? v6_ : v4_;
  std::uint32_t from = 0;  // after a jump, the rules before its target are passed over
  for (auto const& rule : rules) {
    if (rule.priority < from || rule.skip || !matches(rule, query)) continue;
    if (rule.jump) {
      auto const target = *rule.jump;
      auto const exists = std::any_of(rules.begin(), rules.end(), [&](auto& each) { return each.priority == target; });
      if (exists && target > rule.priority) from = target;
      continue;
    }
    steps.push_back(rule.step);
    if (rule.vrf && query.device) steps.back().table = query.device->table;
  }
  return steps;
}

std::set<std::string> Rules::tables(bool v6) const {
  std::set<std::string> tables;
  for (auto const& rule : v6 ? v6_ : v4_) tables.insert(rule.step.table);
  for (auto const device : links_.devices()) tables.insert(device->table);
  tables.erase("");
  return tables;
}

}  // namespace Host::Import
