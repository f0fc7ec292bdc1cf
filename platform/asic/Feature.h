#pragma once

#include "platform/kiln/Entity.h"

namespace Asic {

/// Something that a chip can do, found in its profile by type. Attributes are read from the profile; nobody writes them
/// afterwards.
class Feature : public Kiln::Entity {
  KILN_TYPE(Asic::Feature, Kiln::Entity)

 public:
  /// What no chip can be, as "attribute: value: what is wrong"; empty if nothing is.
  virtual std::string fault() const { return {}; }
};

/// Stands in a profile if and only if the chip has the table. `Table::Util` names it. Defined by
/// TableDefinitions.h.
template <class Table>
class TableUtil final : public Feature {
 public:
  static Kiln::Type const& kilnType();
  Kiln::Type const& typeData() const override;
};

}  // namespace Asic
