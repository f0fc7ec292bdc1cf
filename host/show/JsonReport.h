#pragma once

#include "host/agent/Agent.h"
#include "host/show/Tunnels.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

using Kiln::JsonWriter;

/// Writes what there is to see of an agent as the members of one JSON object: profile, settled, tunnels, tables, chip,
/// logs, and with `withState` the state of the three stores. Other programs read this: names and nesting stay as they
/// are. REQUIRES: inside an object.
void writeReport(JsonWriter& json, Agent const& agent, std::vector<TunnelReport> const& tunnels, bool withState);

void writeTunnel(JsonWriter& json, TunnelReport const& tunnel);
/// Table, key and row of what the handle stands for, or null. One that stands for no entry has its number as row alone.
void writeHandle(JsonWriter& json, Asic::EntryHandle::PtrConst const& handle);

}  // namespace Host
