#pragma once

#include <cstdint>

namespace Host {

/// Adjacency ids from here to 0x7fffffff are an import's own, those below are the kernel's.
inline constexpr std::uint32_t firstOwnId = 0x40000000;

}  // namespace Host
