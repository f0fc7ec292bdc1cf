#pragma once

#include <vector>

#include "host/check/HostFacts.h"

namespace Host {

/// The risks of all hosts, in the order of reports, each once: their own, and those that only several hosts together
/// show.
///
/// Across hosts: one local VTEP on two of them (unless they share it as a pair), different UDP ports, a VTEP that
/// floods a VNI to one that does not flood back or does not have it, a VNI with different MTUs or VLANs.
std::vector<Risk> risksOf(std::vector<HostFacts> const& hosts);

}  // namespace Host
