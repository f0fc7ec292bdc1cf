#pragma once

#include "platform/kiln/Entity.h"

namespace Asic {

/// A capability of a chip, found in its profile by type. Attributes are read from the profile and never written
/// afterwards.
class Feature : public Kiln::Entity {
  KILN_TYPE(Asic::Feature, Kiln::Entity)

 public:
  /// What makes the attributes invalid, as "attribute: value: what is wrong"; empty if they are valid.
  virtual std::string fault() const { return {}; }
};

/// Present in a profile if and only if the chip has the table. `Table::Util` names it. Defined by
/// TableDefinitions.h.
template <class Table>
class TableUtil final : public Feature {
 public:
  static Kiln::Type const& kilnType();
  Kiln::Type const& typeData() const override;
};

}  // namespace Asic
