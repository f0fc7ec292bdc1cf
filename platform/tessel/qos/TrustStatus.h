#pragma once

#include <cstdint>

#include "platform/kiln/Dir.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/Sm.h"

namespace TesselCommon::Qos {

/// Where the chip's rows of the trust maps begin. Readers check that the values fit their fields.
class TrustStatus final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCommon::Qos::TrustStatus, Kiln::NamedEntity)
  KILN_ATTR(0x102, std::uint8_t, tosBasePtr)
  KILN_ATTR(0x103, std::uint8_t, remarkBasePtr)

 public:
  using NamedEntity::NamedEntity;
};

Dovel::Ptr<TrustStatus> trustStatusFactory(Dovel::String name);

/// Keeps one `TrustStatus` equal to the first one of a directory.
///
/// Without one in the directory the local one stays as it was. Main thread only.
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
