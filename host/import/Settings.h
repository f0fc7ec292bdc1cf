#pragma once

#include <optional>
#include <string>

#include "host/import/Fields.h"

namespace Host::Import {

/// Settings of the kernel, as "sysctl.json" of a capture has them by name.
class Settings {
 public:
  /// Null: none is known.
  explicit Settings(JsonDocument const* file) : file_(file) {}

  /// Whether routes over a device without a carrier are skipped; nothing where that is unknown. Throws InputError where
  /// a value is no number.
  std::optional<bool> skipsLinkdown(std::string const& device, bool v6) const {
    auto const own = setting(device, v6);
    // Of IPv4 either setting does, of IPv6 a device's own alone counts.
    auto const all = v6 ? std::nullopt : setting("all", v6);
    if (!own && !all) return std::nullopt;
    return own.value_or(false) || all.value_or(false);
  }

 private:
  std::optional<bool> setting(std::string const& device, bool v6) const {
    if (!file_) return std::nullopt;
    auto const value =
        number(file_->root(), (v6 ? "net.ipv6.conf." : "net.ipv4.conf.") + device + ".ignore_routes_with_linkdown");
    return value ? std::optional(*value != 0) : std::nullopt;
  }

  JsonDocument const* file_;
};

}  // namespace Host::Import
