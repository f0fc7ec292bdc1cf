#include "host/show/JsonReport.h"

#include "host/agent/Inputs.h"
#include "host/show/FieldText.h"
#include "host/show/NextHops.h"
#include "host/show/Resource.h"
#include "host/show/Sections.h"
#include "platform/asic/Store.h"
#include "platform/tessel/l3common/TesselVxlanState.h"

namespace Host {

namespace {

class FieldJson final : public Asic::FieldVisitor {
 public:
  explicit FieldJson(JsonWriter& json) : json_(json) {}
  void number(std::string_view name, std::uint64_t value) override { json_.key(name).number(value); }
  void text(std::string_view name, std::string value) override { json_.key(name).text(std::string_view(value)); }
  void handle(std::string_view name, Asic::EntryHandle::PtrConst const& target) override {
    writeHandle(json_.key(name), target);
  }
  void groupBegin(std::string_view name) override { json_.key(name).object(); }
  void groupEnd() override { json_.objectEnd(); }

 private:
  JsonWriter& json_;
};

void writeRow(JsonWriter& json, std::optional<Asic::Index> const& row) {
  json.key("row").number(row ? std::optional<std::uint32_t>(row->value()) : std::nullopt);
}

void writeEntry(JsonWriter& json, Asic::EntryView const& entry) {
  json.object();
  json.key("key").text(std::string_view(nameOf(entry.key())));
  writeRow(json, entry.row());
  json.key("state").text(stateText(entry.state()));
  json.key("fields").object();
  FieldJson fields(json);
  entry.fields(fields);
  json.objectEnd();
  json.objectEnd();
}

void writeTables(JsonWriter& json, Asic::Chip const& chip) {
  json.key("tables").object();
  for (auto const* store : sortedStores(chip)) {
    json.key(store->name()).object();
    json.key("rows").number(std::uint64_t{store->capacity()});
    json.key("used").number(std::uint64_t{store->used()});
    json.key("entries").array();
    store->forEachEntry([&](Asic::EntryView const& entry) { writeEntry(json, entry); });
    json.arrayEnd();
    json.objectEnd();
  }
  json.objectEnd();
}

void writeChip(JsonWriter& json, Asic::Chip const& chip) {
  json.key("chip").object();
  json.key("tables").object();
  for (auto const& table : sortedChipTables(chip)) {
    json.key(table.name).object();
    json.key("rows").number(std::uint64_t{table.rows});
    json.key("used").number(std::uint64_t{table.used});
    json.key("writes").number(table.writes);
    json.key("refused").number(table.refused);
    json.objectEnd();
  }
  json.objectEnd();
  json.key("writes").number(chip.writes());
  json.objectEnd();
}

void writeLogs(JsonWriter& json, Kiln::LogCapture const& logs) {
  json.key("logs").array();
  for (auto const& record : logs.records()) {
    json.object();
    json.key("name").text(std::string_view(record.name));
    json.key("severity").number(std::uint64_t{record.severity});
    json.key("text").text(std::string_view(record.text));
    json.objectEnd();
  }
  json.arrayEnd();
}

void writeState(JsonWriter& json, Stateway::AgentStores const& stores) {
  json.key("state").object();
  for (auto const store : kStores) {
    json.key(store).object();
    forEachEntity(stores, store, [&](std::string const& path, Kiln::Entity const& entity) {
      json.key(path);
      Kiln::JsonRoot root(json);
      auto place = root.out();
      Kiln::entityToJson(entity, place);
    });
    json.objectEnd();
  }
  json.objectEnd();
}

/// Null for no address.
void writeAddress(JsonWriter& json, std::string_view name, Meshal::IpGenAddr const& address) {
  json.key(name);
  address.isUnspecified() ? json.null() : json.text(std::string_view(Kiln::toText(address)));
}

/// The local end of all tunnels.
void writeLocal(JsonWriter& json, Agent const& agent) {
  auto const state = agent.local<TesselL3Common::TesselVxlanState>(kVxlanStatePath);
  writeAddress(json, "localVtep", state ? state->localVtep() : Meshal::IpGenAddr());
  writeAddress(json, "localVtep6", state ? state->localVtep6() : Meshal::IpGenAddr());
  json.key("udpPort").number(std::uint64_t{state ? state->udpPort() : 0U});
}

void writeNextHop(JsonWriter& json, Vane::NextHopEntry const& hop, unsigned weight) {
  bool const resolved = hop.type() != Vane::nextHopUnresolved;
  json.object();
  writeAddress(json, "addr", hop.addr());
  json.key("mac").text(resolved ? std::optional(Kiln::toText(hop.ethAddr())) : std::nullopt);
  json.key("port").text(hop.l2Intf().empty() ? std::nullopt : std::optional(std::string(hop.l2Intf().name())));
  json.key("interface").text(std::string_view(hop.l3Intf().name()));
  json.key("weight").number(std::uint64_t{weight});
  json.objectEnd();
}

/// A value of a document, as it is.
void writeValue(JsonWriter& json, rapidjson::Value const& value) {
  if (value.IsObject()) {
    json.object();
    for (auto const& member : value.GetObject()) {
      json.key({member.name.GetString(), member.name.GetStringLength()});
      writeValue(json, member.value);
    }
    json.objectEnd();
  } else if (value.IsArray()) {
    json.array();
    for (auto const& element : value.GetArray()) writeValue(json, element);
    json.arrayEnd();
  } else if (value.IsString()) {
    json.text({value.GetString(), value.GetStringLength()});
  } else if (value.IsBool()) {
    json.boolean(value.GetBool());
  } else if (value.IsUint64()) {
    json.number(std::uint64_t{value.GetUint64()});
  } else if (value.IsInt64()) {
    json.number(std::int64_t{value.GetInt64()});
  } else if (value.IsNumber()) {
    json.number(value.GetDouble());
  } else {
    json.null();
  }
}

}  // namespace

void writeHandle(JsonWriter& json, Asic::EntryHandle::PtrConst const& handle) {
  if (!handle) return json.null();
  json.object();
  if (handle->record()) {
    json.key("table").text(handle->tableName());
    json.key("key").text(std::string_view(nameOf(handle->keyText())));
  } else {
    json.key("table").null();
    json.key("key").null();
  }
  writeRow(json, handle->row());
  json.objectEnd();
}

void writeTunnel(JsonWriter& json, TunnelReport const& tunnel) {
  json.object();
  json.key("type").text(tunnelTypeText(tunnel.type));
  writeAddress(json, "vtep", tunnel.vtep);
  json.key("genId").number(tunnel.genId);
  writeAddress(json, "localVtep", tunnel.localVtep);
  json.key("adjId").number(tunnel.adjId ? std::optional(tunnel.adjId.value()) : std::nullopt);
  json.key("tunnelId").number(tunnel.tunnelId);
  json.key("nextHopId").number(tunnel.nextHopId);
  json.key("nextHops").array();
  for (auto const& [hop, weight] : weighedNextHops(tunnel.nextHops)) writeNextHop(json, hop, weight);
  json.arrayEnd();
  json.key("encapId").number(tunnel.encapId);
  json.key("vlans").array();
  for (auto const vlan : tunnel.vlans) json.number(std::uint64_t{vlan.value()});
  json.arrayEnd();
  json.key("programmed").boolean(tunnel.programmed());
  json.key("reason").text(tunnel.reason);
  json.key("remark").text(tunnel.remark);
  json.objectEnd();
}

void writeMapping(JsonWriter& json, MappingReport const& mapping) {
  json.object();
  json.key("kind").text(kindText(mapping.kind));
  json.key("interface").text(std::string_view(mapping.vti.name()));
  json.key("vlan").number(std::uint64_t{mapping.vlan});
  json.key("vni").number(mapping.vni.isNone() ? std::nullopt : std::optional(mapping.vni.value()));
  json.key("vfi").number(mapping.vfi);
  json.key("programmed").boolean(mapping.programmed());
  json.key("pending").boolean(mapping.pending());
  json.key("reason").text(mapping.reason);
  json.objectEnd();
}

void writeGroup(JsonWriter& json, GroupReport const& group) {
  json.object();
  json.key("group").number(std::uint64_t{group.key.value()});
  json.key("version").number(group.version);
  json.key("tunnelId").number(group.tunnelId);
  json.key("nextHopId").number(group.nextHopId);
  json.key("members").array();
  for (auto const& member : group.members) {
    json.object();
    json.key("vtep").text(std::string_view(Kiln::toText(member.vtep)));
    json.key("forwards").boolean(member.forwards());
    json.key("reason").text(member.reason);
    json.objectEnd();
  }
  json.arrayEnd();
  writeRow(json, group.row.row ? group.row.row->row() : std::nullopt);
  auto const block = group.block.row ? group.block.row->row() : std::nullopt;
  json.key("block").number(block ? std::optional<std::uint32_t>(block->value()) : std::nullopt);
  json.key("programmed").boolean(group.programmed());
  json.key("reason").text(group.reason);
  json.objectEnd();
}

void writeReport(JsonWriter& json, Agent const& agent, Report const& report, bool withState) {
  json.key("format").text(kReportFormat);
  json.key("profile").text(std::string_view(agent.profile().name()));
  json.key("settled").boolean(agent.settled());
  writeLocal(json, agent);
  json.key("tunnels").array();
  for (auto const& tunnel : report.tunnels) writeTunnel(json, tunnel);
  json.arrayEnd();
  json.key("vni").array();
  for (auto const& mapping : report.mappings) writeMapping(json, mapping);
  json.arrayEnd();
  json.key("groups").array();
  for (auto const& group : report.groups) writeGroup(json, group);
  json.arrayEnd();
  writeTables(json, agent.chip());
  writeChip(json, agent.chip());
  writeResources(json, agent.chip());
  writeLogs(json, agent.logs());
  if (!withState) return;
  writeState(json, agent.stores());
  json.key("document");
  writeValue(json, agent.document().root().value());
}

}  // namespace Host
