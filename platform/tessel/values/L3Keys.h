#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/kiln/StrongId.h"
#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"

/// Keys of the tables that several features of the agent share. Aggregates; all of them compare, hash and read back
/// from their texts.
namespace TesselL3Common {

/// The encapsulation of a flood VTEP.
struct EncapId : Kiln::StrongId<EncapId> {
  using StrongId::StrongId;
};

/// An underlay next hop: "02:00:00:00:00:01 up1", without the interface when that is empty.
struct L3NextHop2Key {
  KILN_FIELD(Meshal::EthAddr, macAddr){};
  KILN_FIELD(Meshal::IntfId, intfId){};

  friend bool operator==(L3NextHop2Key const&, L3NextHop2Key const&) = default;
  friend std::strong_ordering operator<=>(L3NextHop2Key const&, L3NextHop2Key const&) = default;
};
std::size_t hash_value(L3NextHop2Key const& key);
void appendText(std::string& out, L3NextHop2Key const& key);
bool parseText(std::string_view text, L3NextHop2Key& out);
constexpr char const* expectedText(L3NextHop2Key const*) { return "a next hop such as \"02:00:00:00:00:01 up1\""; }
KILN_VALUE_STREAM(L3NextHop2Key)

/// An adjacency of the underlay or of another layer: "adj:36" in the underlay, "other:36" else. Ids of the two layers
/// never name the same adjacency.
class L3AdjIdKey {
 public:
  constexpr L3AdjIdKey() = default;
  /// Of another layer than the underlay.
  constexpr explicit L3AdjIdKey(std::uint32_t adjId) : value_(adjId) {}
  static constexpr L3AdjIdKey l3Underlay(std::uint32_t adjId) {
    L3AdjIdKey key(adjId);
    key.value_ |= underlayBit;
    return key;
  }

  constexpr std::uint32_t adjId() const { return static_cast<std::uint32_t>(value_); }
  constexpr bool isUnderlay() const { return (value_ & underlayBit) != 0; }

  friend constexpr bool operator==(L3AdjIdKey const&, L3AdjIdKey const&) = default;
  friend constexpr auto operator<=>(L3AdjIdKey const&, L3AdjIdKey const&) = default;
  friend std::size_t hash_value(L3AdjIdKey const& key) { return Kiln::mix(key.value_); }

 private:
  static constexpr std::uint64_t underlayBit = std::uint64_t{1} << 32;  // above every id

  std::uint64_t value_ = 0;
};
void appendText(std::string& out, L3AdjIdKey const& key);
bool parseText(std::string_view text, L3AdjIdKey& out);
constexpr char const* expectedText(L3AdjIdKey const*) { return "an adjacency such as adj:36"; }
KILN_VALUE_STREAM(L3AdjIdKey)

/// A multicast entry of a VLAN: "1, vlanId:10".
struct L3IpmcKey {
  KILN_FIELD(std::uint8_t, type) = 0;
  KILN_FIELD(std::uint16_t, vlanId) = 0;

  friend bool operator==(L3IpmcKey const&, L3IpmcKey const&) = default;
  friend std::strong_ordering operator<=>(L3IpmcKey const&, L3IpmcKey const&) = default;
};
BOOST_DESCRIBE_STRUCT(L3IpmcKey, (), (type_, vlanId_))
inline std::size_t hash_value(L3IpmcKey const& key) { return Kiln::mix(key.type() << 16 | key.vlanId()); }
void appendText(std::string& out, L3IpmcKey const& key);
bool parseText(std::string_view text, L3IpmcKey& out);
constexpr char const* expectedText(L3IpmcKey const*) { return "a multicast entry such as \"1, vlanId:10\""; }
KILN_VALUE_STREAM(L3IpmcKey)

/// The two ends of an IPv4 tunnel header: "10.0.0.1 > 10.0.0.2".
struct EgrL3TunnelKey {
  KILN_FIELD(Meshal::IpGenAddr, sip){};
  KILN_FIELD(Meshal::IpGenAddr, dip){};

  friend bool operator==(EgrL3TunnelKey const&, EgrL3TunnelKey const&) = default;
  friend std::strong_ordering operator<=>(EgrL3TunnelKey const&, EgrL3TunnelKey const&) = default;
};
std::size_t hash_value(EgrL3TunnelKey const& key);
void appendText(std::string& out, EgrL3TunnelKey const& key);
bool parseText(std::string_view text, EgrL3TunnelKey& out);
constexpr char const* expectedText(EgrL3TunnelKey const*) { return "two addresses such as \"10.0.0.1 > 10.0.0.2\""; }
KILN_VALUE_STREAM(EgrL3TunnelKey)

/// The same for an IPv6 tunnel header: "2001:db8::1 > 2001:db8::2".
struct EgrL3Ipv6TunnelKey {
  KILN_FIELD(Meshal::IpGenAddr, sip){};
  KILN_FIELD(Meshal::IpGenAddr, dip){};

  friend bool operator==(EgrL3Ipv6TunnelKey const&, EgrL3Ipv6TunnelKey const&) = default;
  friend std::strong_ordering operator<=>(EgrL3Ipv6TunnelKey const&, EgrL3Ipv6TunnelKey const&) = default;
};
std::size_t hash_value(EgrL3Ipv6TunnelKey const& key);
void appendText(std::string& out, EgrL3Ipv6TunnelKey const& key);
bool parseText(std::string_view text, EgrL3Ipv6TunnelKey& out);
constexpr char const* expectedText(EgrL3Ipv6TunnelKey const*) {
  return "two addresses such as \"2001:db8::1 > 2001:db8::2\"";
}
KILN_VALUE_STREAM(EgrL3Ipv6TunnelKey)

}  // namespace TesselL3Common

KILN_DECLARE_CODEC(TesselL3Common::EncapId);
KILN_DECLARE_CODEC(TesselL3Common::L3NextHop2Key);
KILN_DECLARE_CODEC(TesselL3Common::L3AdjIdKey);
KILN_DECLARE_CODEC(TesselL3Common::L3IpmcKey);
KILN_DECLARE_CODEC(TesselL3Common::EgrL3TunnelKey);
KILN_DECLARE_CODEC(TesselL3Common::EgrL3Ipv6TunnelKey);
