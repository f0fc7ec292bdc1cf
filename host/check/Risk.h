#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

/// Something of one host, or across hosts, that is wrong or may become so. In the order in which reports have them:
/// heaviest first, then by host, then by value.
struct Risk {
  enum class Weight : std::uint8_t {
    serious,  ///< Traffic is lost now.
    warning,  ///< Some of it may be, or will be with the next change.
    hint,     ///< Allowed, and rarely meant.
  };
  Weight weight{};
  std::vector<std::string> hosts;  ///< By name.
  std::string subject;             ///< What it is about: "10.255.0.2", "VNI 10010", a table, a file.
  std::string kind;                ///< A word for programs; docs/state.md lists them.
  std::string text;                ///< One line, without subject and hosts.

  auto operator<=>(Risk const&) const = default;
};

/// "serious", "warning", "hint"
std::string_view weightText(Risk::Weight weight);

}  // namespace Host
