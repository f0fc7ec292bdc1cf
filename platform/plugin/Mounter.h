#pragma once

#include "platform/dovel/String.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "platform/stateway/Mounter.h"

namespace Plugin {

/// What a plug-in puts into the agent: the object that the host makes by its type name and drives.
///
/// Order of the host's calls: `handleParent`, the attributes that a subclass wants set, `doInit`; then, from the loop,
/// `doMountsComplete`. The calls of the agent's stages may come between any two of these. Main thread only.
class Mounter : public Stateway::Mounter {
  KILN_TYPE(Plugin::Mounter, Stateway::Mounter)

 public:
  /// The mounter has its place in the agent. Nothing here.
  virtual void handleParent() {}
  /// The shared memory of the agent; null if it has none.
  virtual Dovel::Ptr<KilnSharedMem::EntityManager> getShmemEntityManager() const { return nullptr; }
  /// Asks for the mounts.
  virtual void doInit() = 0;

  /// The agent reaches stage `stage` of `progression`. Nothing here.
  virtual void doStage(Dovel::String const& progression, Dovel::String const& stage);
  virtual void handleStageInstance(Dovel::String const& name);
  virtual void handleStageProgressionComplete(Dovel::String const& progression, Dovel::String const& stage);
};

}  // namespace Plugin
