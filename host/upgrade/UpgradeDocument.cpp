#include "host/upgrade/UpgradeDocument.h"

#include <rapidjson/prettywriter.h>

#include <limits>
#include <map>
#include <vector>

#include "host/Unicast.h"
#include "host/agent/Agent.h"
#include "platform/kiln/Json.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/vane/VtepGroup.h"

namespace Host {

namespace {

using Kiln::JsonIn;
using Meshal::IpGenAddr;
using Writer = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

constexpr char const* ports = "vxlanVpVtepMap";
constexpr char const* nextHops = "vxlanNhIdVtepMap";
constexpr char const* groups = "mhTnlIdVtepList";

void checkId(std::string_view name, JsonIn const& in) {
  auto const id = Kiln::fromText<std::uint64_t>(name);
  if (id && *id <= std::numeric_limits<std::int32_t>::max() && Kiln::toText(*id) == name) return;
  in.fail("expected an id as its name, a decimal number from 0 to 2147483647");
}

void checkAddress(JsonIn const& in) {
  IpGenAddr address;
  Kiln::readJson(address, in);
  if (auto const why = whyNotUnicast(address); !why.empty()) {
    in.fail(std::string("expected a unicast address, not ").append(why));
  }
}

template <class Id>
bool isProgrammed(Id const& id) {
  return id.value() <= std::uint32_t{std::numeric_limits<std::int32_t>::max()};
}

void write(Writer& writer, IpGenAddr const& address) { writer.String(Kiln::toText(address).c_str()); }
void write(Writer& writer, std::vector<IpGenAddr> const& addresses) {
  writer.StartArray();
  for (auto const& address : addresses) write(writer, address);
  writer.EndArray();
}
template <class Value>
void write(Writer& writer, char const* section, std::map<std::uint32_t, Value> const& byId) {
  writer.Key(section);
  writer.StartObject();
  for (auto const& [id, value] : byId) {
    writer.Key(Kiln::toText(id).c_str());
    write(writer, value);
  }
  writer.EndObject();
}

}  // namespace

std::string upgradeText(Agent const& agent) {
  std::map<std::uint32_t, IpGenAddr> vteps;
  std::map<std::uint32_t, IpGenAddr> overlays;
  for (auto const& map : agent.state<TesselCentral::VxlanToL2State>(kVxlanToL2StatePath)->vtepIpToTnlIdNhIdMapColl()) {
    if (isProgrammed(map->tnlId())) vteps[map->tnlId().value()] = map->vtepIp();
    if (isProgrammed(map->nhId())) overlays[map->nhId().value()] = map->vtepIp();
  }
  std::map<std::uint32_t, std::vector<IpGenAddr>> lists;
  auto const statuses = agent.state<Vane::VXLAN::VaneVtepGroupStatusDir>(kVtepGroupStatusPath);
  for (auto const& group : statuses->vaneVtepGroupStatusColl()) {
    if (isProgrammed(group->hwTunnelId())) {
      lists[group->hwTunnelId().value()] = Kiln::keysOf(group->activeVtepListColl());
    }
  }
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  writer.SetIndent(' ', 2);
  writer.StartObject();
  write(writer, ports, vteps);
  write(writer, nextHops, overlays);
  write(writer, groups, lists);
  writer.EndObject();
  return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
}

void checkUpgrade(JsonIn const& document) {
  document.eachMember([](std::string_view section, JsonIn const& ids) {
    bool const isList = section == groups;
    if (section != ports && section != nextHops && !isList) {
      ids.fail(std::string("expected ") + ports + ", " + nextHops + " or " + groups);
    }
    ids.eachMember([&](std::string_view id, JsonIn const& value) {
      checkId(id, value);
      isList ? value.eachElement(checkAddress) : checkAddress(value);
    });
  });
}

Kiln::JsonDocument readUpgrade(std::string const& file) {
  auto document = Kiln::JsonDocument::read(file);
  checkUpgrade(document.root());
  return document;
}

}  // namespace Host
