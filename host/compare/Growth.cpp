#include "host/compare/Growth.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/agent/World.h"
#include "platform/meshal/IpGenAddr.h"

namespace Host {

namespace {

using rapidjson::Value;

constexpr unsigned kLastVlan = 4094;
constexpr unsigned kLastVni = 16'777'214;

Value* find(Value& object, std::string_view name) {
  if (!object.IsObject()) return nullptr;
  Value const key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
  return object.HasMember(key) ? &object[key] : nullptr;
}

/// Calls `visit(member)` for each. The library's iterators over members that may change can't be compared in C++20.
template <class Visit>
void eachMember(Value& object, Visit visit) {
  auto member = object.MemberBegin();
  for (auto left = object.MemberCount(); left != 0; --left, ++member) visit(*member);
}

template <class... Names>
Value* find(Value& object, std::string_view name, Names... names) {
  auto* const inner = find(object, name);
  return inner ? find(*inner, names...) : nullptr;
}

std::string freshAddress(bool ipv6, std::size_t number) {
  if (ipv6) return fmt::format("fd64::{:x}:{:x}", number >> 16, number & 0xffff);
  return fmt::format("100.{}.{}.{}", 64 + (number >> 16), number >> 8 & 0xff, number & 0xff);
}

class Grower {
 public:
  explicit Grower(Stateway::StateDocument const& document) : source_(document.source()) {
    json_.CopyFrom(document.root().value(), json_.GetAllocator());
  }

  bool grow(Grown what, std::size_t count) {
    switch (what) {
      case Grown::vteps:
        return vteps(count);
      case Grown::nextHops:
        return nextHops(count);
      case Grown::vnis:
        break;
    }
    return vnis(count);
  }
  Stateway::StateDocument take() {
    return Stateway::StateDocument(Kiln::JsonDocument(std::move(json_), std::move(source_)));
  }

 private:
  Value text(std::string const& value) {
    return {value.c_str(), static_cast<rapidjson::SizeType>(value.size()), json_.GetAllocator()};
  }
  Value copy(Value const& value) { return {value, json_.GetAllocator()}; }

  /// The last address among the names of an object's members; empty if there is none.
  static std::string lastVtep(Value const* members) {
    std::string last;
    Meshal::IpGenAddr lastAddress, address;
    if (!members || !members->IsObject()) return last;
    for (auto const& member : members->GetObject()) {
      if (!Kiln::readText(std::string_view(member.name.GetString()), address)) continue;
      if (last.empty() || lastAddress < address) last = member.name.GetString(), lastAddress = address;
    }
    return last;
  }
  std::string lastVtep() {
    auto const unicast = lastVtep(find(json_, "stateway", wantedTunnelsPath(Vane::vxlanTunnel_), "tunnel"));
    return unicast.empty() ? lastVtep(find(json_, "stateway", kVtepStatusPath, "vtepAdjacency")) : unicast;
  }

  bool vteps(std::size_t count) {
    auto const model = lastVtep();
    if (model.empty()) return false;
    for (auto const* store : {"stateway", "shmem"}) {
      if (auto* const paths = find(json_, store)) repeat(*paths, model, count);
    }
    return true;
  }
  void repeat(Value& value, std::string const& model, std::size_t count) {
    bool const ipv6 = model.find(':') != model.npos;
    if (value.IsObject()) {
      eachMember(value, [&](auto& member) { repeat(member.value, model, count); });
      auto const* const stated = find(value, model);
      if (!stated) return;
      auto const original = copy(*stated);
      for (std::size_t i = 1; i <= count; ++i)
        value.AddMember(text(freshAddress(ipv6, i)), copy(original), json_.GetAllocator());
    } else if (value.IsArray()) {
      for (auto& element : value.GetArray()) repeat(element, model, count);
      auto const isModel = [&](Value const& element) { return element.IsString() && model == element.GetString(); };
      if (std::none_of(value.Begin(), value.End(), isModel)) return;
      for (std::size_t i = 1; i <= count; ++i) value.PushBack(text(freshAddress(ipv6, i)), json_.GetAllocator());
    }
  }

  bool nextHops(std::size_t count) {
    auto const vtep = lastVtep();
    auto const* tunnel = find(json_, "stateway", wantedTunnelsPath(Vane::vxlanTunnel_), "tunnel", vtep, "adjId");
    if (!tunnel) tunnel = find(json_, "stateway", kVtepStatusPath, "vtepAdjacency", vtep);
    if (vtep.empty() || !tunnel || !tunnel->IsUint()) return false;
    auto const adjacency = Kiln::toText(tunnel->GetUint());
    bool any = false;
    for (auto const& [type, name] : kTunnelTypes) {
      auto* const hops = find(json_, "stateway", wantedTunnelsPath(type), "adjacency", adjacency, "nextHops");
      if (!hops || !hops->IsArray() || hops->Empty()) continue;
      any = true;
      auto const model = copy((*hops)[hops->Size() - 1]);
      for (std::size_t i = 1; i <= count; ++i) hops->PushBack(nextHop(model, i), json_.GetAllocator());
    }
    return any;
  }
  Value nextHop(Value const& model, std::size_t number) {
    auto hop = copy(model);
    auto* const address = find(hop, "addr");
    bool const ipv6 =
        address && address->IsString() && std::string_view(address->GetString()).find(':') != std::string_view::npos;
    for (auto const& [name, value] :
         {std::pair("addr", freshAddress(ipv6, number)),
          {"ethAddr", fmt::format("02:fe:{:02x}:{:02x}:{:02x}:{:02x}", number >> 24 & 0xff, number >> 16 & 0xff,
                                  number >> 8 & 0xff, number & 0xff)}}) {
      if (auto* const member = find(hop, name)) *member = text(value);
    }
    return hop;
  }

  bool vnis(std::size_t count) {
    auto* const map = find(json_, "stateway", kVniConfigPath, "vlanVniMap");
    if (!map || !map->IsObject() || map->MemberCount() == 0) return false;
    std::vector<bool> used(kLastVlan + 1);
    auto* model = &*map->MemberBegin();
    eachMember(*map, [&](Value::Member& mapping) {
      used[find(mapping.value, "vlanId")->GetUint()] = true;
      if (find(mapping.value, "vni")->GetUint() > find(model->value, "vni")->GetUint()) model = &mapping;
    });
    std::string const key = model->name.GetString();
    auto const beforeVlan = key.substr(0, key.rfind(':') + 1);
    auto const original = copy(model->value);
    auto vni = find(model->value, "vni")->GetUint();
    for (unsigned vlan = 2; vlan <= kLastVlan && count != 0 && vni < kLastVni; ++vlan) {
      if (used[vlan]) continue;
      auto mapping = copy(original);
      find(mapping, "vlanId")->SetUint(vlan);
      find(mapping, "vni")->SetUint(++vni);
      map->AddMember(text(beforeVlan + Kiln::toText(vlan)), mapping, json_.GetAllocator());
      --count;
    }
    return count == 0;
  }

  rapidjson::Document json_;
  std::string source_;
};

}  // namespace

std::optional<Stateway::StateDocument> grown(Stateway::StateDocument const& document, Grown what, std::size_t count) {
  Grower grower(document);
  if (!grower.grow(what, count)) return std::nullopt;
  return grower.take();
}

Stateway::StateDocument copyOf(Stateway::StateDocument const& document) { return Grower(document).take(); }

}  // namespace Host
