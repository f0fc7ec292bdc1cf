#pragma once

#include <string_view>
#include <vector>

#include "platform/asic/Feature.h"

namespace Asic {

/// What is known of a table class that is loaded.
struct TableClass {
  std::string_view name;  ///< Without namespace.
  Kiln::Type const* type;
  std::vector<std::string_view> (*parts)();  ///< The parts' names; empty for a table that is not merged.
  Dovel::Ptr<Feature const> (*makeUtil)();
};

/// Puts a table class into the list, at load time.
struct TableLink {
  TableLink(Kiln::Type const& type, std::vector<std::string_view> (*parts)(), Dovel::Ptr<Feature const> (*makeUtil)());
};

/// All table classes that are loaded, by name; part classes too.
std::vector<TableClass const*> tableClasses();
/// Null if no class of that name is loaded.
TableClass const* tableClass(std::string_view name);

/// Built where TableDefinitions.h is included.
template <class Table>
KILN_BUILT_ONCE TableLink tableLink();

}  // namespace Asic

/// First line of a table class: its description, and its place among the tables that a profile can name.
#define ASIC_TABLE(Class_)                \
  KILN_TYPE(Class_, Asic::SwTable)        \
 public:                                  \
  using Util = ::Asic::TableUtil<Class_>; \
                                          \
 private:                                 \
  inline static ::Asic::TableLink const asicTableLink_ = ::Asic::tableLink<Class_>();
