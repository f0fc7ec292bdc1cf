#include "platform/tessel/values/L3Keys.h"

#include "platform/kiln/Json.h"

namespace TesselL3Common {
namespace {

constexpr std::string_view underlayPrefix = "adj:";
constexpr std::string_view otherPrefix = "other:";
constexpr std::string_view arrow = " > ";

template <class Key>
void appendEnds(std::string& out, Key const& key) {
  Kiln::writeText(out, key.sip());
  out += arrow;
  Kiln::writeText(out, key.dip());
}

template <class Key>
bool parseEnds(std::string_view text, Key& out) {
  auto const sides = Kiln::splitAt(text, arrow);
  Key key;
  if (!sides || !Kiln::readText(sides->first, key.sip_) || !Kiln::readText(sides->second, key.dip_)) return false;
  out = key;
  return true;
}

}  // namespace

std::size_t hash_value(L3NextHop2Key const& key) {
  return Kiln::mix(key.macAddr().u64(), std::uint64_t{key.intfId().id()} << 32);
}

void appendText(std::string& out, L3NextHop2Key const& key) {
  Kiln::writeText(out, key.macAddr());
  if (!key.intfId().empty()) out.append(" ").append(key.intfId().name());
}

bool parseText(std::string_view text, L3NextHop2Key& out) {
  L3NextHop2Key key;
  if (auto const sides = Kiln::splitAt(text, " ")) {
    text = sides->first;
    key.intfIdIs(Meshal::IntfId(sides->second));
  }
  if (!Kiln::readText(text, key.macAddr_)) return false;
  out = key;
  return true;
}

void appendText(std::string& out, L3AdjIdKey const& key) {
  out += key.isUnderlay() ? underlayPrefix : otherPrefix;
  Kiln::writeText(out, key.adjId());
}

bool parseText(std::string_view text, L3AdjIdKey& out) {
  auto const prefix = text.starts_with(underlayPrefix) ? underlayPrefix : otherPrefix;
  std::uint32_t adjId = 0;
  if (!text.starts_with(prefix) || !Kiln::readText(text.substr(prefix.size()), adjId)) return false;
  out = prefix == underlayPrefix ? L3AdjIdKey::l3Underlay(adjId) : L3AdjIdKey(adjId);
  return true;
}

void appendText(std::string& out, L3IpmcKey const& key) { Kiln::described::appendLabelled(out, key); }

bool parseText(std::string_view text, L3IpmcKey& out) { return Kiln::described::parseLabelled(text, out); }

std::size_t hash_value(EgrL3TunnelKey const& key) { return Kiln::mix(hash_value(key.sip()), hash_value(key.dip())); }

void appendText(std::string& out, EgrL3TunnelKey const& key) { appendEnds(out, key); }

bool parseText(std::string_view text, EgrL3TunnelKey& out) { return parseEnds(text, out); }

std::size_t hash_value(EgrL3Ipv6TunnelKey const& key) {
  return Kiln::mix(hash_value(key.sip()), hash_value(key.dip()));
}

void appendText(std::string& out, EgrL3Ipv6TunnelKey const& key) { appendEnds(out, key); }

bool parseText(std::string_view text, EgrL3Ipv6TunnelKey& out) { return parseEnds(text, out); }

}  // namespace TesselL3Common

KILN_VALUE_CODEC(TesselL3Common::EncapId, "TesselL3Common::EncapId")
KILN_VALUE_CODEC(TesselL3Common::L3NextHop2Key, "TesselL3Common::L3NextHop2Key")
KILN_VALUE_CODEC(TesselL3Common::L3AdjIdKey, "TesselL3Common::L3AdjIdKey")
KILN_VALUE_CODEC(TesselL3Common::L3IpmcKey, "TesselL3Common::L3IpmcKey")
KILN_VALUE_CODEC(TesselL3Common::EgrL3TunnelKey, "TesselL3Common::EgrL3TunnelKey")
KILN_VALUE_CODEC(TesselL3Common::EgrL3Ipv6TunnelKey, "TesselL3Common::EgrL3Ipv6TunnelKey")
