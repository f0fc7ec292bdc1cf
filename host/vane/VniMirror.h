#pragma once

#include "platform/kiln/Sm.h"
#include "platform/vane/VaneHelperVni.h"

namespace Host {

/// Passes mappings of VNIs between the state database and a feature that owns its mappings itself: the wanted ones
/// there, their statuses back.
///
/// Takes up what both have. Main thread only.
class VniMirror final : public Kiln::Sm {
  void wantedDispatch(Dovel::Change const& change);
  void statusDispatch(Dovel::Change const& change);

  KILN_BASE_TYPE(Host::VniMirror)

 public:
  /// `published` is made what the feature's statuses are.
  VniMirror(Dovel::Ptr<VaneHelper::VaneHelperVniConfig const> wanted,
            Dovel::Ptr<VaneHelper::VaneHelperVniStatus> published, Dovel::Ptr<VaneHelper::VaneHelperVni> own);

 private:
  using Self = VniMirror;

  Kiln::Watch<VaneHelper::VaneHelperVniConfig const, &Self::wantedDispatch> wanted_;
  Kiln::Watch<VaneHelper::VaneHelperVniStatus const, &Self::statusDispatch> status_;
  Dovel::Ptr<VaneHelper::VaneHelperVniStatus> published_;
  Dovel::Ptr<VaneHelper::VaneHelperVniConfig> config_;
};

}  // namespace Host
