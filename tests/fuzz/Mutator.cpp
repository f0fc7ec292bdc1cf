#include "tests/fuzz/Mutator.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <iterator>
#include <sstream>

namespace FuzzTest {

using rapidjson::Document;
using rapidjson::SizeType;
using rapidjson::Value;

namespace {

void collect(Value& from, std::vector<Value*>& all) {
  all.push_back(&from);
  if (from.IsObject()) {
    std::for_each(from.MemberBegin(), from.MemberEnd(), [&](auto& member) { collect(member.value, all); });
  } else if (from.IsArray()) {
    for (auto& element : from.GetArray()) collect(element, all);
  }
}

using Texts = std::vector<std::string>;

/// The texts between the blanks.
Texts split(std::string const& list) {
  std::istringstream stream(list);
  return {std::istream_iterator<std::string>(stream), {}};
}

// Texts at the edges of what each kind can be.
Texts const addresses = split(
    "0.0.0.0 239.1.1.1 239.1.1.2 224.0.0.5 ff05::9 10.255.0.1 10.255.0.2 10.255.0.3 10.255.0.4 10.1.1.0 127.0.0.1 "
    "224.0.0.1 255.255.255.255 10.0.0.256 :: "
    "::1 fd00::1 fd00::2 FD00::2 ff02::1 fe80::1 ::ffff:10.0.0.1 0.0.0.0/0 10.0.0.0/8 10.0.0.0/33 default");
Texts const macs = split(
    "00:00:00:00:00:00 01:00:5e:01:01:01 02:f1:00:00:00:01 02:00:00:00:00:02 02:00:00:00:00:03 01:00:5e:00:00:01 "
    "ff:ff:ff:ff:ff:ff "
    "02:F1:00:00:00:01");
Texts const numbersAsText = split("0 1 7 8 07 36 4094 4095 65536 2147483648 4294967295 -1");
Texts const names = [] {
  auto all = split(
      "Vlan0 Vlan10 Vlan101 Vlan4095 Vxlan1 Vxlan2 Ethernet1 Ethernet2 Ethernet11 up1 up2 lo br0 nextHopResolved "
      "nextHopUnresolved nextHopMcastTunnel port lag subPort stateway local shmem l3/vlanStatusDir "
      "bridging/l2Rib/floodOutput vxlan/version2/vtepStatusDir vxlan/multicast/tunnel/config "
      "vxlan/multicast/bumTunnel/config "
      "tesselVxlan/vxlanState ttl vxlan/config dead FAILED vlan bond bridge vxlan veth \xc3\xa9/~");
  all.insert(all.end(), {"", std::string("a\0b", 3), std::string(300, 'x')});
  return all;
}();

Texts const& kindOf(std::string const& text) {
  if (text.size() == 17 && text[2] == ':') return macs;
  if (text.find("::") != std::string::npos || text.find('.') != std::string::npos) return addresses;
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos ? numbersAsText : names;
}

Value textValue(std::string const& text, Document::AllocatorType& allocator) {
  return Value(text.c_str(), static_cast<SizeType>(text.size()), allocator);
}

std::string textOf(Value const& value) {
  return value.IsString() ? std::string(value.GetString(), value.GetStringLength()) : "";
}

}  // namespace

std::string Mutator::textLike(std::string const& former) {
  static std::vector<Texts const*> const kinds{&addresses, &macs, &numbersAsText, &names};
  return dice_.pick(dice_.oneIn(6) ? *dice_.pick(kinds) : kindOf(former));
}

Value Mutator::interesting(Value const& former, Document::AllocatorType& allocator) {
  static Texts const values = split(
      "null {} [] true false -1 1.5 0 1 2 3 7 8 36 63 64 255 256 4094 4095 4789 65535 65536 2147483647 2147483684 "
      "4294967295 4294967296 18446744073709551615");
  bool const alike = !dice_.oneIn(6);
  if (former.IsString() ? alike : dice_.oneIn(7))
    return textValue(textLike(former.IsString() ? textOf(former) : ""), allocator);
  if (alike && former.IsBool()) return Value(!former.GetBool());
  Document value(&allocator);
  value.Parse(dice_.pick(values).c_str());
  return Value(value, allocator);
}

void Mutator::changeObject(Value& object, Document::AllocatorType& allocator) {
  auto const some = [&] {
    return object.MemberBegin() + static_cast<std::ptrdiff_t>(dice_.below(object.MemberCount()));
  };
  auto const at = some();
  auto key = textValue(textLike(textOf(at->name)), allocator);
  auto const what = dice_.below(4);
  if (what == 0) return void(object.RemoveMember(at));
  if (what == 1) return void(at->value.Swap(some()->value));
  if (what == 2) return void(at->name = key);
  // A second member of the same value, rarely of the same name.
  if (dice_.oneIn(20)) key.CopyFrom(at->name, allocator);
  object.AddMember(key, Value(at->value, allocator), allocator);
}

void Mutator::changeArray(Value& array, Document::AllocatorType& allocator) {
  auto const some = [&]() -> Value& { return array[static_cast<SizeType>(dice_.below(array.Size()))]; };
  auto const what = dice_.below(3);
  if (what == 0) return void(array.Erase(&some()));
  if (what == 1) return void(array.PushBack(Value(some(), allocator), allocator));
  some().Swap(some());
}

void Mutator::change(Document& document, Document const& other) {
  auto& allocator = document.GetAllocator();
  std::vector<Value*> all;
  collect(document, all);
  auto& at = *dice_.pick(all);
  if (at.IsObject() && !at.ObjectEmpty() && !dice_.oneIn(8)) return changeObject(at, allocator);
  if (at.IsArray() && !at.Empty() && !dice_.oneIn(8)) return changeArray(at, allocator);
  if (dice_.oneIn(6)) {
    Document copy;
    copy.CopyFrom(other, copy.GetAllocator());
    std::vector<Value*> theirs;
    collect(copy, theirs);
    at.CopyFrom(*dice_.pick(theirs), allocator);
  } else if (dice_.oneIn(40)) {
    for (auto depth = dice_.below(80); depth != 0; --depth) {
      Value outer(rapidjson::kArrayType);
      outer.PushBack(Value(at, allocator), allocator);
      at = outer;
    }
  } else {
    at = Value(interesting(at, allocator));
  }
}

std::string Mutator::brokenText(std::string text) {
  auto const at = dice_.below(text.size());
  auto const what = dice_.below(4);
  if (what == 0) return text.substr(0, at);
  if (what == 1) return text.insert(at, std::string(1 + dice_.below(100'000), "[{\"\\0 "[dice_.below(6)]));
  if (what == 2) return text.erase(at, 1 + dice_.below(4));
  text[at] = static_cast<char>(dice_.below(256));
  return text;
}

std::string Mutator::mutated(std::string const& text, std::string const& other) {
  Document document, second;
  document.Parse(text.data(), text.size());
  second.Parse(other.data(), other.size());
  for (auto changes = dice_.below(3); changes != 0; --changes) change(document, second);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  document.Accept(writer);
  std::string result(buffer.GetString(), buffer.GetSize());
  return dice_.oneIn(25) ? brokenText(std::move(result)) : result;
}

}  // namespace FuzzTest
