#pragma once

#include <iosfwd>

#include "host/show/Groups.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

/// Prints one VTEP group: its ids, each member and what it lacks, the chip's rows down to the ports, and at the end one
/// verdict with the first thing that is missing.
void printGroupExplanation(std::ostream& out, Agent const& agent, GroupReport const& group);
/// The same as members of a JSON object: the group's report in "report", its rows in "chain"; both null without a
/// group. REQUIRES: inside an object.
void writeGroupExplanation(Kiln::JsonWriter& json, GroupReport const* group);

}  // namespace Host
