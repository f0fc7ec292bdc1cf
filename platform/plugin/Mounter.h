#pragma once

#include "platform/dovel/String.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "platform/stateway/Mounter.h"

namespace Plugin {

/// Entry point of a plug-in: the object that the host creates by its type name and drives.
///
/// Order of the host's calls: `handleParent`, the attributes that a subclass requires, `doInit`; then, from the loop,
/// `doMountsComplete`. The calls of the agent's stages may occur between any two of these. Main thread only.
class Mounter : public Stateway::Mounter {
  KILN_TYPE(Plugin::Mounter, Stateway::Mounter)

 public:
  /// The mounter was placed in the agent. Does nothing here.
  virtual void handleParent() {}
  /// The shared memory of the agent; null if it has none.
  virtual Dovel::Ptr<KilnSharedMem::EntityManager> getShmemEntityManager() const { return nullptr; }
  /// Requests the mounts.
  virtual void doInit() = 0;

  /// The agent reaches stage `stage` of `progression`. Does nothing here.
  virtual void doStage(Dovel::String const& progression, Dovel::String const& stage);
  virtual void handleStageInstance(Dovel::String const& name);
  virtual void handleStageProgressionComplete(Dovel::String const& progression, Dovel::String const& stage);
};

}  // namespace Plugin
