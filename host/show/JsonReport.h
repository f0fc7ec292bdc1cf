#pragma once

#include <ostream>

#include "host/agent/Agent.h"
#include "host/show/Report.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

using Kiln::JsonWriter;

/// Prints one JSON object to `out`; `members` is called with the writer inside it.
template <class Members>
void writeObject(std::ostream& out, Members const& members) {
  {
    JsonWriter json(out, JsonWriter::Layout::indented);
    json.object();
    members(json);
    json.objectEnd();
  }
  out << '\n';
}

/// Writes the state of an agent as the members of one JSON object: profile, settled, tunnels, vni, groups, tables,
/// chip, resource, logs, and with `withState` the state of the three stores. Other programs read this: names and
/// nesting stay as they are. REQUIRES: inside an object.
void writeReport(JsonWriter& json, Agent const& agent, Report const& report, bool withState);

void writeTunnel(JsonWriter& json, TunnelReport const& tunnel);
void writeMapping(JsonWriter& json, MappingReport const& mapping);
void writeGroup(JsonWriter& json, GroupReport const& group);
/// Table, key and row of the entry that the handle refers to, or null. A don't-care handle has its number as row alone.
void writeHandle(JsonWriter& json, Asic::EntryHandle::PtrConst const& handle);

}  // namespace Host
