#pragma once

#include <optional>
#include <string>

#include "host/show/Report.h"
#include "platform/meshal/IpGenAddr.h"

namespace Host {

/// What of a report is shown: all of it, or what concerns some VTEPs, a VNI, or both.
class Filter {
 public:
  Filter() = default;
  /// `vteps`: an address or a prefix such as "10.255.0.0/24"; `vni`: a number. An empty text filters nothing. Throws
  /// `InputError` for another text.
  Filter(std::string const& vteps, std::string const& vni);

  /// Leaves in the report: the tunnels to these VTEPs, for a VNI those that its VLANs are flooded to; the mappings of
  /// the VNI; the groups with one of these VTEPs.
  void apply(Report& report) const;

 private:
  struct Prefix {
    Meshal::IpGenAddr network;
    unsigned length = 0;
  };
  bool has(Meshal::IpGenAddr const& vtep) const;

  std::optional<Prefix> vteps_;
  std::optional<std::uint32_t> vni_;
};

}  // namespace Host
