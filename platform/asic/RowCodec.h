#pragma once

#include <array>
#include <cstring>
#include <tuple>

#include "platform/anvil/PerUnitBitmap.h"
#include "platform/asic/ChipDriver.h"
#include "platform/asic/Entry.h"
#include "platform/asic/FieldVisitor.h"
#include "platform/asic/Record.h"
#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"

/// How an entry becomes numbers, from its description. Of the table library.
///
/// Integers, flags and enumerations are one word as they are: callers check the range of a field that is narrower on
/// the chip than its C++ type. An Ethernet or IPv4 address is one word, an address of either family three (family,
/// upper, lower half), a port bitmap six. A handle is the first row of its target, or `Index::none`.
namespace Asic::Row {

constexpr std::size_t kBitmapWords = (Anvil::PerUnitBitmap::kWords + 1) / 2;

template <class T>
constexpr bool isHandle = std::is_same_v<T, EntryHandle::PtrConst>;
template <class T>
constexpr bool isResponse = std::is_same_v<T, WriteResponseFn>;

template <class T>
constexpr std::size_t wordsOfField() {
  if constexpr (isResponse<T>) {
    return 0;
  } else if constexpr (std::is_same_v<T, Meshal::IpGenAddr>) {
    return 3;
  } else if constexpr (std::is_same_v<T, Anvil::PerUnitBitmap>) {
    return kBitmapWords;
  } else {
    return 1;
  }
}

template <class E>
constexpr std::size_t wordsOf() {
  std::size_t words = 0;
  boost::mp11::mp_for_each<Kiln::described::Fields<E>>(
      [&](auto field) { words += wordsOfField<std::remove_cvref_t<decltype(std::declval<E&>().*field.pointer)>>(); });
  return words;
}

/// The number of a handle as it is, or as it was while `rowless` had no row.
inline std::uint64_t numberOf(EntryHandle::PtrConst const& handle, RecordBase const* rowless) {
  if (!handle) return Index::none;
  auto const* record = handle->record();
  if (!record) return handle->dontCareIndex().value();
  return record == rowless ? Index::none : record->row;
}

template <class T>
std::uint64_t* put(std::uint64_t* out, T const& value, RecordBase const* rowless) {
  if constexpr (isResponse<T>) {
    return out;
  } else if constexpr (isHandle<T>) {
    *out = numberOf(value, rowless);
  } else if constexpr (std::is_same_v<T, Meshal::IpGenAddr>) {
    *out++ = static_cast<std::uint64_t>(value.af());
    *out++ = value.u64(0);
    *out = value.u64(1);
  } else if constexpr (std::is_same_v<T, Anvil::PerUnitBitmap>) {
    for (std::size_t i = 0; i < Anvil::PerUnitBitmap::kWords; i += 2) {
      auto const next = i + 1 < Anvil::PerUnitBitmap::kWords ? std::uint64_t{value.bitList(i + 1)} << 32 : 0;
      out[i / 2] = value.bitList(i) | next;
    }
    return out + kBitmapWords;
  } else if constexpr (std::is_same_v<T, Meshal::EthAddr>) {
    *out = value.u64();
  } else if constexpr (std::is_same_v<T, Meshal::IpAddr>) {
    *out = value.value();
  } else if constexpr (isFilledByTable<T>) {
    *out = value.value;
  } else {
    *out = static_cast<std::uint64_t>(value);
  }
  return out + 1;
}

template <class E>
using Words = std::array<std::uint64_t, wordsOf<E>()>;

/// The numbers of one row; `rowless` as for `numberOf`.
template <class E>
void encode(E const& entry, Words<E>& out, RecordBase const* rowless = nullptr) {
  auto* next = out.data();
  boost::mp11::mp_for_each<Kiln::described::Fields<E>>(
      [&](auto field) { next = put(next, entry.*field.pointer, rowless); });
}

template <class E>
RowLayout layoutOf(std::string_view table) {
  RowLayout layout{.table = table, .fields = {}, .words = static_cast<std::uint32_t>(wordsOf<E>())};
  E const entry{};
  Kiln::described::forEachField(entry, [&](std::string_view name, auto const& value) {
    using Field = std::remove_cvref_t<decltype(value)>;
    if constexpr (wordsOfField<Field>() > 0) layout.fields.push_back({name, wordsOfField<Field>()});
  });
  return layout;
}

/// Calls `visit(handle)` for each handle field, those of parts too.
template <class E, class Visit>
void forEachHandle(E& entry, Visit const& visit) {
  boost::mp11::mp_for_each<Kiln::described::Fields<std::remove_const_t<E>>>([&](auto field) {
    auto& value = entry.*field.pointer;
    using Field = std::remove_cvref_t<decltype(value)>;
    if constexpr (EntryType<Field>) {
      forEachHandle(value, visit);
    } else if constexpr (isHandle<Field>) {
      visit(value);
    }
  });
}

/// Calls `visit(record)` for the target of each handle field but don't-care ones.
template <class E, class Visit>
void forEachTarget(E& entry, Visit const& visit) {
  forEachHandle(entry, [&](EntryHandle::PtrConst const& handle) {
    if (auto* const target = handle ? handle->record() : nullptr) visit(*target);
  });
}

/// The same for targets that may still get a row.
template <class E, class Visit>
void forEachRowless(E& entry, Visit const& visit) {
  forEachTarget(entry, [&](RecordBase& target) {
    if (!target.expired && !target.hasRow()) visit(target);
  });
}

template <class E>
bool refersToRowless(E const& entry) {
  bool rowless = false;
  forEachRowless(entry, [&](RecordBase const&) { rowless = true; });
  return rowless;
}

/// Makes each handle of a stored entry a reference to its target. True if a target has no row.
template <class E>
bool takeReferences(E& entry) {
  bool rowless = false;
  forEachHandle(entry, [&](EntryHandle::PtrConst& handle) {
    auto const* target = handle ? handle->record() : nullptr;
    if (!target || target->expired) return;
    if (handle.get() != &target->strong()) handle = EntryHandle::PtrConst(&target->strong());
    rowless |= !target->hasRow();
  });
  return rowless;
}

/// Removes the mark of absence, which an entry has that was read from a missing key and then changed.
template <class E>
void markPresent(E& entry) {
  entry.absent = false;
  boost::mp11::mp_for_each<Kiln::described::Fields<E>>([&](auto field) {
    auto& value = entry.*field.pointer;
    if constexpr (EntryType<std::remove_cvref_t<decltype(value)>>) markPresent(value);
  });
}

template <class E>
void show(E const& entry, FieldVisitor& visitor) {
  Kiln::described::forEachField(entry, [&](std::string_view name, auto const& value) {
    using Field = std::remove_cvref_t<decltype(value)>;
    if constexpr (EntryType<Field>) {
      visitor.groupBegin(name);
      show(value, visitor);
      visitor.groupEnd();
    } else if constexpr (isHandle<Field>) {
      visitor.handle(name, value);
    } else if constexpr (isFilledByTable<Field>) {
      visitor.computed(name, value.value);
    } else if constexpr (std::is_arithmetic_v<Field> || std::is_enum_v<Field>) {
      visitor.number(name, static_cast<std::uint64_t>(value));
    } else if constexpr (!isResponse<Field>) {
      visitor.text(name, Kiln::toText(value));
    }
  });
}

/// Mixes what an entry's fields say, handles by their entry: entries that are `isEq` have one hash.
template <class E>
std::uint64_t hash(std::uint64_t seed, E const& entry) {
  boost::mp11::mp_for_each<Kiln::described::Fields<E>>([&](auto field) {
    auto const& value = entry.*field.pointer;
    using Field = std::remove_cvref_t<decltype(value)>;
    if constexpr (isHandle<Field>) {
      auto const* record = value ? value->record() : nullptr;
      seed = Kiln::mix(seed, reinterpret_cast<std::uintptr_t>(record));
    } else if constexpr (!isResponse<Field> && !isFilledByTable<Field>) {
      seed = Kiln::mix(seed, Kiln::Hash<Field>{}(value));
    }
  });
  return seed;
}

}  // namespace Asic::Row
