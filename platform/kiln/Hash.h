#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace Kiln {

/// Folds two words into one well-mixed word with a single wide multiplication.
constexpr std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
  __extension__ using Wide = unsigned __int128;
  Wide const product = static_cast<Wide>(a ^ 0xa0761d6478bd642fULL) * (b ^ 0xe7037ed1a0b428dbULL);
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// A well-mixed word of one word.
constexpr std::uint64_t mix(std::uint64_t a) { return mix(a, 0); }

/// Hash of a value for the open-addressing containers.
///
/// Numbers, enumerations and pointers are mixed here, strings go to the standard hash, ordered ranges are mixed element
/// by element, and every other type brings a `hash_value(T const&)` in its own namespace. All of them spread over all
/// bits, so that no container mixes again.
template <class T>
struct Hash {
  using is_avalanching = void;

  std::size_t operator()(T const& value) const noexcept {
    if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
      return mix(static_cast<std::uint64_t>(value));
    } else if constexpr (std::is_pointer_v<T> && !std::is_convertible_v<T, std::string_view>) {
      return mix(reinterpret_cast<std::uintptr_t>(value));
    } else if constexpr (std::is_convertible_v<T const&, std::string_view>) {
      return std::hash<std::string_view>{}(value);
    } else if constexpr (requires { hash_value(value); }) {
      return hash_value(value);
    } else {
      static_assert(
          !requires { typename T::hasher; }, "an unordered container has no hash of its elements in order");
      std::uint64_t seed = value.size();
      for (auto const& element : value) seed = mix(seed, Hash<std::remove_cvref_t<decltype(element)>>{}(element));
      return seed;
    }
  }
};

/// Equality of values, as `Hash`. Unlike `std::equal_to` it costs no <functional>, which the collections would bring
/// into every source.
template <class T>
struct Equal {
  bool operator()(T const& a, T const& b) const { return a == b; }
};

}  // namespace Kiln
