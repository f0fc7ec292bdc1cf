#include "platform/kiln/Entity.h"

#include "platform/kiln/Json.h"

namespace Kiln {

namespace {

std::string writableNames(Type const& type) {
  std::string names;
  for (auto const* attribute : type.attributes()) {
    if (attribute->writable) names.append(" ").append(attribute->name);
  }
  return names.empty() ? " nothing" : names;
}

bool holds(Entity const& entity, Attribute const& attribute, JsonIn const& in) {
  auto const present = jsonText([&](JsonOut out) { attribute.toJson(entity, out); });
  return JsonDocument::parse(present, in.source()).json() == in.value();
}

}  // namespace

void entityToJson(Entity const& entity, JsonOut& out) {
  out.object();
  for (auto const* attribute : entity.typeData().attributes()) {
    JsonOut place = out.member(attribute->name);
    attribute->toJson(entity, place);
  }
}

void entityCheck(Entity const& entity, JsonIn const& in) {
  auto const& type = entity.typeData();
  in.eachMember([&](std::string_view name, JsonIn const& value) {
    auto const* attribute = type.attribute(name);
    if (attribute && attribute->writable) return attribute->check(entity, value);
    if (attribute && holds(entity, *attribute, value)) return;
    std::string text = attribute ? "attribute that can't be written" : "unknown attribute";
    value.fail(text.append(" of ").append(type.name()).append(", expected one of").append(writableNames(type)));
  });
}

void entityFromJson(Entity& entity, JsonIn const& in) {
  for (auto const* attribute : entity.typeData().attributes()) {
    if (!attribute->writable) continue;
    if (auto const value = in.find(attribute->name)) {
      attribute->fromJson(entity, *value);
    } else {
      attribute->reset(entity);
    }
  }
}

}  // namespace Kiln
