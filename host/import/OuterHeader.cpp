#include "host/import/OuterHeader.h"

#include <fmt/format.h>

#include <array>
#include <string>

#include "platform/kiln/Text.h"
#include "platform/tessel/values/VxlanTunnelKey.h"

namespace Host::Import {

namespace {

constexpr std::uint32_t mostSourcePorts = 0x3fff;
constexpr auto inherited = "0x1";  ///< As TOS.

/// A setting that the switch does not have, the value that means the same, and what the switch does.
struct Foreign {
  char const* key;
  char const* usual;
  char const* consequence;
};
constexpr std::array foreign{
    Foreign{"df", "\"unset\"", "the switch does not set the DF bit by it"},
    Foreign{"udp_csum", "true", "the switch writes the UDP checksum in its own way"},
    Foreign{"udp_zero_csum6_tx", "false", "the switch writes the UDP checksum in its own way"},
    Foreign{"udp_zero_csum6_rx", "false", "the switch checks the UDP checksum in its own way"},
    Foreign{"gbp", "false", "the switch writes no group policy"},
    Foreign{"gpe", "false", "the switch writes no header with a next protocol"},
};

std::string shownAt(JsonIn data, std::string_view key) {
  auto const value = data.find(key);
  return value ? value->shown() : "";
}

/// A TOS of its own, neither the kernel's nor the inner header's: the switch's map begins with the inner header anyway.
std::string tosOf(JsonIn data) {
  auto const tos = word(data, "tos").value_or("0");
  return tos == inherited ? "0" : tos;
}

bool differ(JsonIn one, JsonIn other, std::string_view key) {
  return key == "tos" ? tosOf(one) != tosOf(other) : shownAt(one, key) != shownAt(other, key);
}

class Reader {
 public:
  Reader(JsonIn data, Warnings& warnings) : data_(data), warnings_(warnings) {}

  OuterHeader read() {
    OuterHeader header;
    header.ttl = ttl();
    header.dscpOfInner = word(data_, "tos") == inherited;
    if (auto const tos = data_.find("tos"); tos && !header.dscpOfInner && word(data_, "tos") != "0") {
      ignore(*tos, "the switch has no fixed TOS of outer headers", "their DSCP is that of the switch's map");
    }
    header.sourcePorts = sourcePorts();
    for (auto const& [key, usual, consequence] : foreign) {
      auto const value = data_.find(key);
      if (value && value->shown() != usual) ignore(*value, "the switch has no such setting", consequence);
    }
    return header;
  }

 private:
  std::optional<std::uint32_t> ttl() {
    constexpr std::uint32_t highest = TesselL3Common::VxlanTunnelKey::maxTtl;
    auto const at = data_.find("ttl");
    std::uint32_t value = 0;
    auto const text = word(data_, "ttl");
    if (at && text != "0" && text != "auto") {
      if (text && Kiln::readText(*text, value) && value <= highest) return value;
      ignore(*at, fmt::format("the switch writes a fixed TTL from 1 to {}", highest), "the TTL is the switch's");
    }
    return std::nullopt;
  }

  std::optional<std::pair<std::uint32_t, std::uint32_t>> sourcePorts() {
    auto const range = data_.find("port_range");
    auto const low = range ? number(*range, "low").value_or(0) : 0;
    auto const high = range ? number(*range, "high").value_or(0) : 0;
    if (high == 0) return std::nullopt;
    if (low <= high && high <= 0xffff && high - low < mostSourcePorts) return std::pair(low, high - low + 1);
    ignore(*range, fmt::format("the switch has ranges of up to {} UDP source ports", mostSourcePorts),
           "the source ports are the switch's");
    return std::nullopt;
  }

  void ignore(JsonIn at, std::string const& why, std::string consequence) {
    warnings_.add("header", at, "ignored: " + why, std::move(consequence));
  }

  JsonIn data_;
  Warnings& warnings_;
};

std::optional<JsonIn> dataOf(Device const& device) {
  auto const info = device.at.find("linkinfo");
  return info ? info->find("info_data") : std::nullopt;
}

}  // namespace

OuterHeader outerHeader(std::vector<Device const*> const& devices, Warnings& warnings) {
  auto const first = devices.empty() ? std::nullopt : dataOf(*devices.front());
  if (!first) return {};
  for (auto const device : devices) {
    auto const data = dataOf(*device);
    for (auto const key : {"ttl", "tos", "port_range", "df", "udp_csum", "udp_zero_csum6_tx", "udp_zero_csum6_rx"}) {
      if (!data || !differ(*data, *first, key)) continue;
      warnings.add(
          "header", data->find(key).value_or(*data),
          fmt::format("ignored: the {} of {} differs from that of {}", key, device->name, devices.front()->name),
          "the outer headers of both are those of " + devices.front()->name);
    }
  }
  return Reader(*first, warnings).read();
}

}  // namespace Host::Import
