#pragma once

#include <cstdint>

#include "platform/dovel/Factory.h"
#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IntfId.h"
#include "platform/vxlan/Vni.h"

// Which VNI a VLAN of this switch has (local mappings), which VLAN a VNI from elsewhere has (remote mappings), and what
// was done with both.

namespace Vane::VXLAN {

/// A VLAN of a VXLAN interface: "Vxlan1, vlanId:10".
struct VtiVlanKey {
  KILN_FIELD(Meshal::IntfId, intfId){};
  KILN_FIELD(std::uint16_t, vlanId) = 0;

  friend bool operator==(VtiVlanKey const&, VtiVlanKey const&) = default;
  friend std::strong_ordering operator<=>(VtiVlanKey const&, VtiVlanKey const&) = default;
};
BOOST_DESCRIBE_STRUCT(VtiVlanKey, (), (intfId_, vlanId_))
inline std::size_t hash_value(VtiVlanKey const& key) {
  return Kiln::mix(std::uint64_t{key.intfId().id()} << 32 | key.vlanId());
}
void appendText(std::string& out, VtiVlanKey const& key);
bool parseText(std::string_view text, VtiVlanKey& out);
constexpr char const* expectedText(VtiVlanKey const*) { return "interface and VLAN such as \"Vxlan1, vlanId:10\""; }
KILN_VALUE_STREAM(VtiVlanKey)

/// A VNI of a VXLAN interface: "Vxlan1, vni:10010".
struct VtiVniKey {
  KILN_FIELD(Meshal::IntfId, intfId){};
  KILN_FIELD(Vxlan::VniExt, vni){};

  friend bool operator==(VtiVniKey const&, VtiVniKey const&) = default;
  friend std::strong_ordering operator<=>(VtiVniKey const&, VtiVniKey const&) = default;
};
BOOST_DESCRIBE_STRUCT(VtiVniKey, (), (intfId_, vni_))
inline std::size_t hash_value(VtiVniKey const& key) {
  return Kiln::mix(std::uint64_t{key.intfId().id()} << 32 | key.vni().value());
}
void appendText(std::string& out, VtiVniKey const& key);
bool parseText(std::string_view text, VtiVniKey& out);
constexpr char const* expectedText(VtiVniKey const*) { return "interface and VNI such as \"Vxlan1, vni:10010\""; }
KILN_VALUE_STREAM(VtiVniKey)

}  // namespace Vane::VXLAN

namespace VaneHelper {

/// What is to be done with a mapping. The default is the value of a mapping that does not exist.
struct VaneHelperVniConfigEntry {
  static constexpr std::uint8_t add = 0;     ///< Program it.
  static constexpr std::uint8_t remove = 1;  ///< Remove a local mapping that stays configured. None for remote ones.
  static constexpr std::uint8_t none = 2;    ///< It does not exist, or, for a remote one, is to be removed.

  KILN_FIELD(std::uint16_t, vlanId) = 0;
  KILN_FIELD(Vxlan::VniExtOrNone, vni){};
  KILN_FIELD(std::uint8_t, action) = none;
};
BOOST_DESCRIBE_STRUCT(VaneHelperVniConfigEntry, (), (vlanId_, vni_, action_))
KILN_VALUE_OPS(VaneHelperVniConfigEntry)

/// What was done with a mapping. The default is the value of a mapping that has no status.
struct VaneHelperVniStatusEntry {
  static constexpr std::uint8_t programmed = 0;
  static constexpr std::uint8_t pending = 5;  ///< A remote mapping whose VNI a local one holds.

  KILN_FIELD(std::uint16_t, vlanId) = 0;
  KILN_FIELD(Vxlan::VniExtOrNone, vni){};
  KILN_FIELD(std::uint8_t, action) = programmed;
};
BOOST_DESCRIBE_STRUCT(VaneHelperVniStatusEntry, (), (vlanId_, vni_, action_))
KILN_VALUE_OPS(VaneHelperVniStatusEntry)

/// The wanted mappings. A writer removes a mapping before it assigns its VLAN or its VNI to another one.
class VaneHelperVniConfig final : public Kiln::NamedEntity {
  KILN_TYPE(VaneHelper::VaneHelperVniConfig, Kiln::NamedEntity)
  KILN_COLL(0x102, Vane::VXLAN::VtiVlanKey, VaneHelperVniConfigEntry, vlanVniMap)      ///< Local.
  KILN_COLL(0x103, Vane::VXLAN::VtiVniKey, VaneHelperVniConfigEntry, remoteVniConfig)  ///< Remote.

 public:
  using NamedEntity::NamedEntity;
};

/// What was done with them. Written by the feature; outlives the agent's process.
class VaneHelperVniStatus final : public Kiln::NamedEntity {
  KILN_TYPE(VaneHelper::VaneHelperVniStatus, Kiln::NamedEntity)
  KILN_COLL(0x102, Vane::VXLAN::VtiVlanKey, VaneHelperVniStatusEntry, statusEntry)
  KILN_COLL(0x103, Vane::VXLAN::VtiVniKey, VaneHelperVniStatusEntry, remoteVniStatusEntry)

 public:
  using NamedEntity::NamedEntity;
};

/// A pair of both for a feature that owns its mappings. Base of the feature's own class.
class VaneHelperVni : public Kiln::NamedEntity {
  KILN_TYPE(VaneHelper::VaneHelperVni, Kiln::NamedEntity)
  KILN_FIXED(0x102, Dovel::Ptr<VaneHelperVniConfig>, helperVniConfig)
  KILN_FIXED(0x103, Dovel::Ptr<VaneHelperVniStatus>, helperVniStatus)

 public:
  /// Handles a request to verify the hardware.
  virtual void verifyHwVni() = 0;

 protected:
  explicit VaneHelperVni(Dovel::String name);
};

}  // namespace VaneHelper

KILN_DECLARE_CODEC(Vane::VXLAN::VtiVlanKey);
KILN_DECLARE_CODEC(Vane::VXLAN::VtiVniKey);
KILN_DECLARE_CODEC(VaneHelper::VaneHelperVniConfigEntry);
KILN_DECLARE_CODEC(VaneHelper::VaneHelperVniStatusEntry);
