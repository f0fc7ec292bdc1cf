#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace Host {

/// The VLANs that the command line assigns to VNIs of captures whose kernel has no VLANs.
class VlanChoices {
 public:
  /// Reads "VNI=VLAN". Throws InputError for another text, and where an earlier choice has the VNI or the VLAN.
  void add(std::string const& text);

  /// The VLAN of a VNI that a capture has; nothing where none is chosen.
  std::optional<std::uint32_t> take(std::uint32_t vni);
  /// Whether it is the VLAN of some VNI.
  bool hasVlan(std::uint32_t vlan) const { return vlans_.contains(vlan); }
  /// Throws InputError about the choice for `vni`. REQUIRES: there is one.
  [[noreturn]] void fail(std::uint32_t vni, std::string const& problem) const;
  /// Throws InputError for a choice that was never taken.
  void checkTaken() const;

 private:
  struct Choice {
    std::uint32_t vlan = 0;
    std::string text;
    bool taken = false;
  };
  std::map<std::uint32_t, Choice> byVni_;
  std::set<std::uint32_t> vlans_;
};

}  // namespace Host
