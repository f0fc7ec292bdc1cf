#pragma once

// Makes the stores of table classes and their places in the list. For the one source file that includes the headers of
// a folder's table classes (Tables.cpp), and for a source file that describes a table of its own: what is made there
// serves the whole program, and other files only refer to it.

#include "platform/asic/SwTable.h"
#include "platform/kiln/AttributeDefinitions.h"

namespace Asic {

template <class Table>
std::vector<std::string_view> partNames() {
  std::vector<std::string_view> names;
  if constexpr (requires { typename Table::Parts; }) {
    boost::mp11::mp_for_each<boost::mp11::mp_transform<boost::mp11::mp_identity, typename Table::Parts>>(
        [&](auto part) { names.push_back(shortName(decltype(part)::type::kilnType().name())); });
  }
  return names;
}

template <class Table>
TableLink tableLink() {
  return {Table::kilnType(), &partNames<Table>,
          []() -> Dovel::Ptr<Feature const> { return Dovel::make<TableUtil<Table>>(); }};
}

template <class Table, class K, class E>
Dovel::Ptr<StoreBase> KeyedStore<Table, K, E>::makeStore(Chip& chip, UnitId) {
  TableSpec spec{Table::kilnType(), Table::reservedRows, {}};
  auto const names = partNames<Table>();
  forEachPart([&](std::size_t part, auto const& of) {
    using PartEntry = std::remove_cvref_t<decltype(of(std::declval<E const&>()))>;
    spec.parts.push_back(Row::layoutOf<PartEntry>(names.empty() ? shortName(Table::kilnType().name()) : names[part]));
  });
  return Dovel::make<KeyedStore>(chip, spec);
}

template <class Table, class E>
Dovel::Ptr<StoreBase> BlockStore<Table, E>::makeStore(Chip& chip, UnitId) {
  TableSpec const spec{Table::kilnType(), Table::reservedRows, {Row::layoutOf<E>(shortName(Table::kilnType().name()))}};
  return Dovel::make<BlockStore>(chip, spec);
}

}  // namespace Asic
