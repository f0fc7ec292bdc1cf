#include <algorithm>
#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/show/Columns.h"
#include "host/show/JsonReport.h"
#include "platform/kiln/Type.h"

namespace Host {

namespace {

std::string hexText(Kiln::AttributeId id) {
  constexpr char const* digits = "0123456789abcdef";
  std::string text;
  for (unsigned rest = id; rest != 0; rest >>= 4) text.insert(text.begin(), digits[rest & 0xf]);
  return "0x" + text;
}

std::string valueTypeText(Kiln::Attribute const& attribute) {
  auto const value = std::string(attribute.typeName());
  return attribute.keyTypeName ? std::string(attribute.keyTypeName()) + " to " + value : value;
}

void printType(std::ostream& out, Kiln::Type const& type) {
  out << type.name() << '\n';
  for (auto const* base = type.base(); base; base = base->base()) out << "  is a " << base->name() << '\n';
  if (type.constructible()) out << "  can be created by name\n";
  Columns columns({Columns::Align::right, Columns::Align::left, Columns::Align::left, Columns::Align::left});
  columns.row({"ID", "ATTRIBUTE", "TYPE", "WRITABLE"});
  for (auto const* attribute : type.attributes()) {
    columns.row({hexText(attribute->id), std::string(attribute->name), valueTypeText(*attribute),
                 attribute->writable ? "yes" : "no"});
  }
  if (!type.attributes().empty()) columns.print(out << '\n');
  for (auto const* one = &type; one; one = one->base()) {
    for (auto const& method : one->ownMethods()) out << "method " << method.name << "()\n";
  }
}

void writeType(JsonWriter& json, Kiln::Type const& type) {
  json.object();
  json.key("name").text(type.name());
  json.key("bases").array();
  for (auto const* base = type.base(); base; base = base->base()) json.text(base->name());
  json.arrayEnd();
  json.key("constructible").boolean(type.constructible());
  json.key("attributes").array();
  for (auto const* attribute : type.attributes()) {
    json.object();
    json.key("id").number(std::uint64_t{attribute->id});
    json.key("name").text(attribute->name);
    json.key("type").text(std::string_view(valueTypeText(*attribute)));
    json.key("writable").boolean(attribute->writable);
    json.objectEnd();
  }
  json.arrayEnd();
  json.objectEnd();
}

std::vector<Kiln::Type const*> sortedTypes() {
  auto types = Kiln::types();
  std::sort(types.begin(), types.end(), [](auto const* a, auto const* b) { return a->name() < b->name(); });
  return types;
}

}  // namespace

int typesCommand(std::string const& name, std::string const& plugin, bool json, std::ostream& out) {
  Plugin::Loader().load(plugin.empty() ? defaultPlugin() : std::filesystem::path(plugin));
  auto const* const named = name.empty() ? nullptr : Kiln::typeByName(name);
  if (json && (named || name.empty())) {
    writeObject(out, [&](JsonWriter& writer) {
      writer.key("format").text(std::string_view("tessel-types/1"));
      writer.key("types").array();
      for (auto const* type : named ? std::vector{named} : sortedTypes()) writeType(writer, *type);
      writer.arrayEnd();
    });
    return kGood;
  }
  if (name.empty()) {
    for (auto const* type : sortedTypes()) out << type->name() << '\n';
    return kGood;
  }
  if (!named)
    throw Kiln::InputError("NAME", "", "'" + name + "'", "expected a registered class: see tessel-agent types");
  printType(out, *named);
  return kGood;
}

}  // namespace Host
