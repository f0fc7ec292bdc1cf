#pragma once

#include <cstdint>

#include "platform/dovel/Factory.h"
#include "platform/kiln/Dir.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/Sm.h"

namespace TesselCommon::Qos {

/// The first rows of the chip's trust maps. Readers check that the values fit their fields.
class TrustStatus final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCommon::Qos::TrustStatus, Kiln::NamedEntity)
  KILN_ATTR(0x102, std::uint8_t, tosBasePtr)
  KILN_ATTR(0x103, std::uint8_t, remarkBasePtr)

 public:
  using NamedEntity::NamedEntity;
};

inline constexpr Dovel::Factory<TrustStatus> trustStatusFactory;

/// Keeps one `TrustStatus` equal to the first one of a directory.
///
/// While the directory has none, the local one keeps its values. Main thread only.
class TrustStatusSm final : public Kiln::Sm {
  KILN_BASE_TYPE(TesselCommon::Qos::TrustStatusSm)
  KILN_FIXED(0x102, Dovel::Ptr<Kiln::Dir const>, qosTrustStatusDir)
  KILN_FIXED(0x103, Dovel::Ptr<TrustStatus>, local)

 public:
  TrustStatusSm(Dovel::Ptr<Kiln::Dir const> qosTrustStatusDir, Dovel::Ptr<TrustStatus> local);

 private:
  using Self = TrustStatusSm;

  void dirDispatch(Dovel::Change const&) { handleDir(); }
  void sourceDispatch(Dovel::Change const&) { handleSource(); }
  void handleDir();
  void handleSource();

  Kiln::Watch<Kiln::Dir const, &Self::dirDispatch> dir_;
  Kiln::Watch<TrustStatus const, &Self::sourceDispatch, &Self::handleSource> source_{*this};
};

}  // namespace TesselCommon::Qos
