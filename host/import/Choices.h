#pragma once

#include <string>

#include "host/import/VlanChoices.h"

namespace Host {

/// What the command line decides about captures.
struct Choices {
  VlanChoices vlans;  ///< Of VNIs whose kernel has none.
  std::string vti;    ///< The VXLAN device whose tunnel interface is read; empty: the one with most remote VTEPs.
};

}  // namespace Host
