#pragma once

#include <concepts>
#include <cstddef>
#include <type_traits>

#include "platform/asic/EntryHandle.h"
#include "platform/asic/WriteResponse.h"
#include "platform/kiln/Describe.h"

namespace Asic {

/// Base of every entry: a plain value that is built on the stack, passed by reference and copied by its table.
///
/// `ASIC_ENTRY` describes an entry: comparison, text and the numbers of its row are derived from that. A part of a
/// merged entry is an entry itself.
struct EntryBase {};

/// A number that the table computes when the entry is written. A value set by the writer is overwritten, and comparison
/// of entries ignores it.
template <std::unsigned_integral T>
struct FilledByTable {
  T value = 0;
  constexpr FilledByTable() = default;
  // Implicit: a number is filled in as it is.
  constexpr FilledByTable(T number) : value(number) {}
  constexpr operator T() const { return value; }
};

template <class T>
constexpr bool isFilledByTable = false;
template <class T>
constexpr bool isFilledByTable<FilledByTable<T>> = true;

template <class T>
concept EntryType = std::is_base_of_v<EntryBase, T>;

/// Whether all fields of two entries are equal. Handles are equal when they name the same entry; write responses and
/// fields filled by the table are ignored. An absent entry equals nothing.
template <EntryType E>
bool isEq(E const& a, E const& b) {
  if (a.absent || b.absent) return false;
  bool same = true;
  boost::mp11::mp_for_each<Kiln::described::Fields<E>>([&](auto field) {
    if (!same) return;
    auto const& left = a.*field.pointer;
    auto const& right = b.*field.pointer;
    using Field = std::remove_cvref_t<decltype(left)>;
    if constexpr (EntryType<Field>) {
      same = isEq(left, right);
    } else if constexpr (std::is_same_v<Field, EntryHandle::PtrConst>) {
      same = left == right || sameEntry(left, right);
    } else if constexpr (!std::is_same_v<Field, WriteResponseFn> && !isFilledByTable<Field>) {
      same = left == right;
    }
  });
  return same;
}

/// The text of a handle: "table[key]", "#index" for a don't-care handle, "null".
void appendHandleText(std::string& out, EntryHandle::PtrConst const& handle);
/// The same under the name that traces look up.
inline void appendText(std::string& out, EntryHandle::PtrConst const& handle) { appendHandleText(out, handle); }

/// The row of a handle's entry as a field of 16 bits; 0 if it has none.
inline std::uint16_t rowNumber16(EntryHandle::PtrConst const& handle) {
  auto const row = handle ? handle->row() : std::nullopt;
  return row ? static_cast<std::uint16_t>(row->value()) : std::uint16_t{0};
}

/// "{name=value,…}", for traces.
template <EntryType E>
void appendText(std::string& out, E const& entry) {
  if (entry.absent) {
    out += "absent";
    return;
  }
  char separator = '{';
  Kiln::described::forEachField(entry, [&](std::string_view name, auto const& value) {
    using Field = std::remove_cvref_t<decltype(value)>;
    if constexpr (!std::is_same_v<Field, WriteResponseFn>) {
      out.append(1, separator).append(name).append(1, '=');
      separator = ',';
      if constexpr (std::is_same_v<Field, EntryHandle::PtrConst>) {
        appendHandleText(out, value);
      } else if constexpr (isFilledByTable<Field>) {
        Kiln::writeText(out, value.value);
      } else {
        Kiln::writeText(out, value);
      }
    }
  });
  out += separator == '{' ? "{}" : "}";
}

template <EntryType E, class Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out, E const& entry) {
  return out << Kiln::toText(entry);
}

/// An entry that reads as zeros and equals nothing; its parts are absent too.
template <EntryType E>
E makeAbsent() {
  E entry{};
  entry.absent = true;
  Kiln::described::forEachField(entry, [](std::string_view, auto& value) {
    using Field = std::remove_cvref_t<decltype(value)>;
    if constexpr (EntryType<Field>) value = makeAbsent<Field>();
  });
  return entry;
}

}  // namespace Asic

/// Describes an entry's fields, in the order of the row; last in the struct, whose access is public.
/// `absent` marks what a table returns for a key that it doesn't have.
#define ASIC_ENTRY(Entry_, ...) \
  bool absent = false;          \
  BOOST_DESCRIBE_CLASS(Entry_, (), (__VA_ARGS__), (), ())
