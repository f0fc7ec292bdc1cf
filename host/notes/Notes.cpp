#include "host/notes/Notes.h"

#include <array>

#include "platform/kiln/Json.h"

namespace Host {

namespace {

using Kiln::JsonIn;
using rapidjson::Value;
using Allocator = rapidjson::Document::AllocatorType;

constexpr std::array kWarningMembers{std::pair("kind", &Warning::kind), std::pair("file", &Warning::file),
                                     std::pair("entry", &Warning::entry), std::pair("ignored", &Warning::ignored),
                                     std::pair("consequence", &Warning::consequence)};

void refuseOthers(JsonIn const& in, std::initializer_list<std::string_view> known) {
  in.eachMember([&](std::string_view name, JsonIn const& value) {
    for (auto const each : known) {
      if (name == each) return;
    }
    std::string all;
    for (auto const each : known) all += ' ' + std::string(each);
    value.fail("unknown member, expected one of" + all);
  });
}

Meshal::IpGenAddr addressOf(std::string_view text, JsonIn const& in) {
  Meshal::IpGenAddr address;
  if (!Kiln::readText(text, address)) in.fail("expected an IPv4 or IPv6 address in the name of the member");
  return address;
}

Warning warningOf(JsonIn const& in) {
  Warning warning;
  refuseOthers(in, {"kind", "file", "entry", "ignored", "consequence"});
  for (auto const& [name, member] : kWarningMembers) {
    if (auto const value = in.find(name)) warning.*member = value->text();
  }
  return warning;
}

/// "10.1.1.0%up1"
std::pair<Meshal::IpGenAddr, std::string> neighbourOf(std::string_view text, JsonIn const& in) {
  auto const split = text.find('%');
  if (split == text.npos) in.fail("expected the name of the member to be ADDRESS%INTERFACE");
  return {addressOf(text.substr(0, split), in), std::string(text.substr(split + 1))};
}

std::optional<unsigned> numberIn(JsonIn const& in, std::string_view name) {
  auto const value = in.find(name);
  return value ? std::optional(static_cast<unsigned>(value->unsignedNumber(0, UINT32_MAX))) : std::nullopt;
}

Notes::Vni vniOf(JsonIn const& in) {
  refuseOthers(in, {"device", "mtu", "vlan", "missingRouters"});
  auto const device = in.find("device");
  Notes::Vni vni{device ? std::string(device->text()) : "", numberIn(in, "mtu"), numberIn(in, "vlan")};
  if (auto const routers = in.find("missingRouters")) {
    routers->eachMember(
        [&](std::string_view router, JsonIn const& why) { vni.missingRouters[addressOf(router, why)] = why.text(); });
  }
  return vni;
}

void put(Value& into, std::string const& key, Value value, Allocator& allocator) {
  into.AddMember(Value(key.c_str(), allocator), value, allocator);
}

Value textValue(std::string const& text, Allocator& allocator) { return Value(text.c_str(), allocator); }

Value warningsValue(std::vector<Warning> const& warnings, Allocator& allocator) {
  Value list(rapidjson::kArrayType);
  for (auto const& warning : warnings) {
    Value entry(rapidjson::kObjectType);
    for (auto const& [name, member] : kWarningMembers) {
      put(entry, name, textValue(warning.*member, allocator), allocator);
    }
    list.PushBack(entry, allocator);
  }
  return list;
}

Value reasonsValue(std::map<Meshal::IpGenAddr, std::string> const& reasons, Allocator& allocator) {
  Value map(rapidjson::kObjectType);
  for (auto const& [address, why] : reasons) put(map, Kiln::toText(address), textValue(why, allocator), allocator);
  return map;
}

Value vnisValue(std::map<unsigned, Notes::Vni> const& vnis, Allocator& allocator) {
  Value map(rapidjson::kObjectType);
  for (auto const& [number, vni] : vnis) {
    Value entry(rapidjson::kObjectType);
    put(entry, "device", textValue(vni.device, allocator), allocator);
    if (vni.mtu) put(entry, "mtu", Value(*vni.mtu), allocator);
    if (vni.vlan) put(entry, "vlan", Value(*vni.vlan), allocator);
    if (!vni.missingRouters.empty())
      put(entry, "missingRouters", reasonsValue(vni.missingRouters, allocator), allocator);
    put(map, std::to_string(number), std::move(entry), allocator);
  }
  return map;
}

}  // namespace

Notes notesOf(Stateway::StateDocument const& document) {
  Notes notes;
  auto const in = document.root().find("notes");
  if (!in) return notes;
  refuseOthers(*in, {"host", "warnings", "unreachable", "unresolved", "vnis"});
  if (auto const host = in->find("host")) notes.host = host->text();
  if (auto const list = in->find("warnings")) {
    list->eachElement([&](JsonIn const& each) { notes.warnings.push_back(warningOf(each)); });
  }
  auto const eachIn = [&](std::string_view name, auto visit) {
    if (auto const members = in->find(name)) members->eachMember(visit);
  };
  eachIn("unreachable",
         [&](std::string_view vtep, JsonIn const& why) { notes.unreachable[addressOf(vtep, why)] = why.text(); });
  eachIn("unresolved", [&](std::string_view neighbour, JsonIn const& why) {
    notes.unresolved[neighbourOf(neighbour, why)] = why.text();
  });
  eachIn("vnis", [&](std::string_view text, JsonIn const& vni) {
    auto const number = Kiln::fromText<std::uint32_t>(text);
    if (!number) vni.fail("expected the name of the member to be a VNI");
    notes.vnis[*number] = vniOf(vni);
  });
  return notes;
}

Value notesValue(Notes const& notes, Allocator& allocator) {
  Value value(rapidjson::kObjectType);
  if (!notes.host.empty()) put(value, "host", textValue(notes.host, allocator), allocator);
  if (!notes.warnings.empty()) put(value, "warnings", warningsValue(notes.warnings, allocator), allocator);
  if (!notes.unreachable.empty()) put(value, "unreachable", reasonsValue(notes.unreachable, allocator), allocator);
  Value unresolved(rapidjson::kObjectType);
  for (auto const& [neighbour, why] : notes.unresolved) {
    put(unresolved, Kiln::toText(neighbour.first) + '%' + neighbour.second, textValue(why, allocator), allocator);
  }
  if (!notes.unresolved.empty()) put(value, "unresolved", std::move(unresolved), allocator);
  if (!notes.vnis.empty()) put(value, "vnis", vnisValue(notes.vnis, allocator), allocator);
  return value;
}

void writeWarnings(Kiln::JsonWriter& json, std::vector<Warning> const& warnings) {
  json.key("warnings").array();
  for (auto const& warning : warnings) {
    json.object();
    for (auto const& [name, member] : kWarningMembers) json.key(name).text(std::string_view(warning.*member));
    json.objectEnd();
  }
  json.arrayEnd();
}

}  // namespace Host
