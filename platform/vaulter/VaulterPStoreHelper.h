#pragma once

#include <rapidjson/document.h>

#include "platform/dovel/Node.h"
#include "platform/kiln/Attribute.h"

namespace Vaulter {

/// A feature's part in a fast software upgrade: takes over what the former version of the agent has stored.
class VaulterPStoreHelper : public Dovel::Node {
  KILN_BASE_TYPE(Vaulter::VaulterPStoreHelper)

 public:
  /// Called once, before the feature starts, with what the feature's former version has stored.
  virtual void doRestore(rapidjson::Value const& value) = 0;
};

}  // namespace Vaulter
