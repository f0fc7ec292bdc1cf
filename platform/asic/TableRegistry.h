#pragma once

#include <string_view>
#include <vector>

#include "platform/asic/Feature.h"

namespace Asic {

/// A table class that is loaded.
struct TableClass {
  std::string_view name;  ///< Without namespace.
  Kiln::Type const* type;
  std::vector<std::string_view> (*parts)();  ///< The parts' names; empty for a table that is not merged.
  Dovel::Ptr<Feature const> (*makeUtil)();
};

/// Registers a table class, at load time.
struct TableLink {
  TableLink(Kiln::Type const& type, std::vector<std::string_view> (*parts)(), Dovel::Ptr<Feature const> (*makeUtil)());
};

/// All table classes that are loaded, by name; part classes too.
std::vector<TableClass const*> tableClasses();
/// Null if no class of that name is loaded.
TableClass const* tableClass(std::string_view name);

}  // namespace Asic

/// First line of a table class: its description, and what a profile names it by. `ASIC_DESCRIBE_TABLE(Ns::Table)` of
/// TableDefinitions.h defines both, in the folder's Tables.cpp.
#define ASIC_TABLE(Class_)                       \
  KILN_TYPE(Class_, Asic::SwTable)               \
 public:                                         \
  using Util = ::Asic::TableUtil<Class_>;        \
                                                 \
 private:                                        \
  static ::Asic::TableLink const asicTableLink_; \
  ::Dovel::Ptr<::Asic::StoreBase> bind(::Asic::Chip& chip, ::Asic::UnitId) override;
