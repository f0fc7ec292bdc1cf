#pragma once

#include <stdexcept>
#include <string>

#include "platform/kiln/Entity.h"

namespace Brisk {

/// Thrown while a collection in shared memory is walked whose memory is not consistent.
class CorruptionException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Base of collections in shared memory, which another process can damage.
///
/// Here the memory is that of the process; a fault is injected by `corruption`.
class BriskMapBase : public Kiln::NamedEntity {
  KILN_TYPE(Brisk::BriskMapBase, Kiln::NamedEntity)
  KILN_ATTR(0x82, Dovel::String, corruption)          ///< What is wrong with the memory; empty: nothing.
  KILN_ATTR(0x83, Dovel::String, corruptionDetected)  ///< What a reader has found to be wrong; written by it.

 public:
  /// Publishes what a reader has found.
  void doCorruptionDetected(std::string const& what);

 protected:
  using NamedEntity::NamedEntity;
  /// Before each element of a walk. Throws `CorruptionException`.
  void checkMemory() const;
};

}  // namespace Brisk
