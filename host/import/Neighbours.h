#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "host/import/Fields.h"
#include "host/import/Underlay.h"

namespace Host::Import {

/// What the kernel knows of neighbours.
class Neighbours {
 public:
  /// Null: none is. Throws InputError where a value is of a wrong type.
  explicit Neighbours(JsonDocument const* file);

  /// Why packets can't be sent to a neighbour that is not resolved.
  std::string whyNot(Hop const& hop) const;
  /// Nothing where the neighbour is not resolved. Throws InputError where its address is not a unicast Ethernet
  /// address.
  std::optional<EthAddr> ethAddrOf(Hop const& hop) const;

 private:
  // Read when asked for: the link layer of a device that no next hop uses need not be Ethernet.
  std::map<Hop, JsonIn> entries_;
  bool missing_;
};

}  // namespace Host::Import
