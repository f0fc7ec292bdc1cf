#pragma once

#include "platform/dovel/Factory.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/vaulter/VaulterPStoreHelper.h"

namespace TesselVxlan {

/// Takes over what the feature's former version has stored for an upgrade: which ids were in use for which VTEPs.
///
/// Writes the recovered collections of `vxlanToL2State`. Main thread only.
class TesselVxlanVaulterPStoreHelper final : public Vaulter::VaulterPStoreHelper {
  KILN_TYPE(TesselVxlan::TesselVxlanVaulterPStoreHelper, Vaulter::VaulterPStoreHelper)
  KILN_FIXED(0x102, Dovel::Ptr<TesselCentral::VxlanToL2State>, vxlanToL2State)

 public:
  explicit TesselVxlanVaulterPStoreHelper(Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State)
      : vxlanToL2State_(std::move(vxlanToL2State)) {}

  /// An object of up to three objects, each by ids as decimal numbers: "vxlanVpVtepMap" (virtual ports) and
  /// "vxlanNhIdVtepMap" (next hops) with an address each, "mhTnlIdVtepList" (multihomed tunnels) with an array of
  /// addresses. Replaces what is recovered under the same id. REQUIRES: that shape. A name that is no number of type
  /// `int` throws what `std::stoi` throws.
  void doRestore(rapidjson::Value const& value) override;
};

inline constexpr Dovel::Factory<TesselVxlanVaulterPStoreHelper> tesselVxlanVaulterPStoreHelperFactory;
inline constexpr Dovel::Factory<TesselVxlanVaulterPStoreHelper> TesselVxlanVaulterPStoreHelperIs;

}  // namespace TesselVxlan
