#pragma once

// Instantiates the stores and registrations of table classes. For the one source file that includes the headers of a
// folder's table classes (Tables.cpp), and for a source file that describes a table of its own: other files only refer
// to what is instantiated there.

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
Kiln::Type const& TableUtil<Table>::kilnType() {
  static std::string const name = std::string(Table::kilnName) + "::Util";
  static Kiln::Type const type(name, &Feature::kilnType(), nullptr);
  return type;
}

template <class Table>
Kiln::Type const& TableUtil<Table>::typeData() const {
  return kilnType();
}

template <class Table, class K, class E>
TableSpec KeyedStore<Table, K, E>::tableSpec() {
  TableSpec described{Table::kilnType(), Table::reservedRows, {}};
  auto const names = partNames<Table>();
  forEachPart([&](std::size_t part, auto const& of) {
    using PartEntry = std::remove_cvref_t<decltype(of(std::declval<E const&>()))>;
    described.parts.push_back(Row::layoutOf<PartEntry>(names.empty() ? shortName(Table::kilnName) : names[part]));
  });
  return described;
}

template <class Table, class E>
TableSpec BlockStore<Table, E>::tableSpec() {
  return {Table::kilnType(), Table::reservedRows, {Row::layoutOf<E>(shortName(Table::kilnName))}};
}

/// The store of a table class on a chip; null for a part, whose rows are in the store of the merged table.
template <class Table>
Dovel::Ptr<StoreBase> storeOf(Chip& chip, UnitId unit) {
  if constexpr (requires { typename Table::Store; }) {
    return chip.storeOf(Table::kilnType(), unit, [](Chip& on, UnitId) -> Dovel::Ptr<StoreBase> {
      return Dovel::make<typename Table::Store>(on, Table::Store::tableSpec());
    });
  } else {
    return nullptr;
  }
}

}  // namespace Asic

/// Defines what `ASIC_TABLE` declares, and puts the class into the list of tables at load time. At global scope.
#define ASIC_DESCRIBE_TABLE(Class_)                                                       \
  KILN_DESCRIBE(Class_)                                                                   \
  template class ::Asic::TableUtil<Class_>;                                               \
  ::Dovel::Ptr<::Asic::StoreBase> Class_::bind(::Asic::Chip& chip, ::Asic::UnitId unit) { \
    return ::Asic::storeOf<Class_>(chip, unit);                                           \
  }                                                                                       \
  ::Asic::TableLink const Class_::asicTableLink_{                                         \
      kilnType(), &::Asic::partNames<Class_>,                                             \
      []() -> ::Dovel::Ptr<::Asic::Feature const> { return ::Dovel::make<Util>(); }};
