#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Hash.h"
#include "platform/kiln/Text.h"

namespace Meshal {

/// An interface, as a 32-bit id that represents its name.
///
/// One name has one id for the life of the process, so that comparing and hashing never touch the name. "Vlan10"
/// carries its VLAN number in the id; all other names are kept in one table of the process. The order is the one of the
/// ids: VLAN interfaces by number, the others in the order in which they were first named. Main thread only.
class IntfId {
 public:
  /// The empty interface.
  constexpr IntfId() = default;
  /// The interface of `name`; the empty interface for "". Throws `RangeException` after 2^24 names.
  explicit IntfId(std::string_view name);
  static IntfId handleInitialized(std::string_view name) { return IntfId(name); }

  std::string name() const;
  constexpr bool empty() const { return id_ == 0; }
  constexpr std::uint32_t id() const { return id_; }

  friend constexpr bool operator==(IntfId const&, IntfId const&) = default;
  friend constexpr auto operator<=>(IntfId const&, IntfId const&) = default;

 private:
  std::uint32_t id_ = 0;
};

/// The content of a VLAN interface's id.
class VlanIntfId {
 public:
  static constexpr bool isVlanIntfId(IntfId intf) { return (intf.id() & 0xff000000) == tag; }
  /// The VLAN number. REQUIRES: `isVlanIntfId(intf)`.
  static constexpr std::uint16_t vlanId(IntfId intf) { return static_cast<std::uint16_t>(intf.id() & 0xffff); }

 private:
  friend class IntfId;
  static constexpr std::uint32_t tag = 0x01000000;
};

inline std::size_t hash_value(IntfId const& intf) { return Kiln::mix(intf.id()); }
void appendText(std::string& out, IntfId const& intf);
bool parseText(std::string_view text, IntfId& out);
constexpr char const* expectedText(IntfId const*) { return "the name of an interface"; }
KILN_VALUE_STREAM(IntfId)

}  // namespace Meshal

KILN_DECLARE_CODEC(Meshal::IntfId);
