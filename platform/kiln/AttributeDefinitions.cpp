#include "platform/kiln/AttributeDefinitions.h"

#include <algorithm>
#include <deque>
#include <set>

#include "platform/kiln/Json.h"

namespace Kiln {

namespace {

/// A value of the type of a codec.
class AnyValue {
 public:
  /// A copy of `from`, the default if that is null.
  explicit AnyValue(ValueCodec const& codec, void const* from = nullptr) : codec_(codec), value_(codec.make(from)) {}
  /// Throws `InputError`.
  AnyValue(ValueCodec const& codec, JsonIn const& in) : AnyValue(codec) { codec.fromJson(value_, in); }
  ~AnyValue() { codec_.drop(value_); }
  AnyValue(AnyValue const&) = delete;
  AnyValue& operator=(AnyValue const&) = delete;

  void* get() const { return value_; }

 private:
  ValueCodec const& codec_;
  void* value_;
};

std::string textOf(ValueCodec const& codec, void const* value) {
  std::string text;
  codec.toText(value, text);
  return text;
}

/// Calls `visit(key, member)` for each member of the JSON object `in`. Throws `InputError` for a key of another type.
template <class Visit>
void eachKeyed(ValueCodec const& keys, JsonIn const& in, Visit const& visit) {
  in.eachMember([&](std::string_view text, JsonIn const& member) {
    AnyValue const key(keys);
    if (!keys.fromText || !keys.fromText(text, key.get())) {
      member.fail(std::string("expected a key that is a ").append(keys.typeName));
    }
    visit(key.get(), member);
  });
}

/// As `eachKeyed`. Refuses a key that is there a second time in another text.
template <class Check>
void checkKeyed(ValueCodec const& keys, JsonIn const& in, Check const& check) {
  std::set<std::string> known;
  eachKeyed(keys, in, [&](void const* key, JsonIn const& member) {
    if (!known.insert(textOf(keys, key)).second) {
      member.fail("expected each key once: an earlier member has this one in another text");
    }
    check(key, member);
  });
}

Entity const* entityAt(void const* object) { return static_cast<Entity const*>(object); }

Dovel::Ptr<Entity> presentOrNew(AttributeAccess const& access, Dovel::Node const& owner) {
  if (auto const* const present = entityAt(access.get(owner))) return const_cast<Entity*>(present);
  auto const made = access.type().make({});
  return static_cast<Entity*>(made.get());
}

}  // namespace

void Attribute::oneToJson(void const* value, JsonOut& out) const {
  if (access->codec) return access->codec().toJson(value, out);
  if (!value) return out.null();
  access->areEntities ? entityToJson(*entityAt(value), out) : out.text(typeName());
}

// The members are in the order of their keys' text.
void Attribute::membersToJson(Dovel::Node const& owner, JsonOut& out) const {
  std::vector<std::pair<std::string, void const*>> members;
  access->forEach(
      owner, [&](void const* key, void const* value) { members.emplace_back(textOf(access->keyCodec(), key), value); });
  std::sort(members.begin(), members.end());
  out.object();
  for (auto const& [key, value] : members) {
    JsonOut place = out.member(key);
    oneToJson(value, place);
  }
}

void Attribute::toJson(Dovel::Node const& owner, JsonOut& out) const {
  if (access->toJson) return access->toJson(owner, out);
  if (access->forEach) return membersToJson(owner, out);
  oneToJson(access->get(owner), out);
}

void Attribute::check(Dovel::Node const& owner, JsonIn const& in) const {
  switch (kind) {
    case AttributeKind::value:
      return void(AnyValue(access->codec(), in));
    case AttributeKind::pointer:
      if (!in.isNull()) entityCheck(*presentOrNew(*access, owner), in);
      return;
    case AttributeKind::collection:
      return checkKeyed(access->keyCodec(), in,
                        [&](void const*, JsonIn const& member) { AnyValue(access->codec(), member); });
    case AttributeKind::entityCollection:
      return checkKeyed(access->keyCodec(), in, [&](void const* key, JsonIn const& member) {
        entityCheck(*access->presentOrNew(owner, key), member);
      });
  }
}

void Attribute::fromJson(Dovel::Node& owner, JsonIn const& in) const {
  switch (kind) {
    case AttributeKind::value:
      return access->set(owner, nullptr, AnyValue(access->codec(), in).get());
    case AttributeKind::pointer:
      return objectFromJson(owner, in);
    case AttributeKind::collection:
      dropOthers(owner, in);
      return eachKeyed(access->keyCodec(), in, [&](void const* key, JsonIn const& member) {
        access->set(owner, key, AnyValue(access->codec(), member).get());
      });
    case AttributeKind::entityCollection:
      dropOthers(owner, in);
      return eachKeyed(access->keyCodec(), in, [&](void const* key, JsonIn const& member) {
        entityFromJson(*access->findOrCreate(owner, key), member);
      });
  }
}

void Attribute::objectFromJson(Dovel::Node& owner, JsonIn const& in) const {
  if (in.isNull()) return access->set(owner, nullptr, nullptr);
  access->set(owner, nullptr, presentOrNew(*access, owner).get());
  entityFromJson(*presentOrNew(*access, owner), in);
}

void Attribute::dropOthers(Dovel::Node& owner, JsonIn const& in) const {
  auto const& keys = access->keyCodec();
  std::set<std::string> named;
  eachKeyed(keys, in, [&](void const* key, JsonIn const&) { named.insert(textOf(keys, key)); });
  dropUnless(owner, [&](void const* key) { return named.contains(textOf(keys, key)); });
}

void Attribute::reset(Dovel::Node& owner) const {
  if (access->reset) return access->reset(owner);
  dropUnless(owner, [](void const*) { return false; });
}

void Attribute::dropUnless(Dovel::Node& owner, FunctionRef<bool(void const* key)> isWanted) const {
  std::deque<AnyValue> unwanted;
  access->forEach(owner, [&](void const* key, void const*) {
    if (!isWanted(key)) unwanted.emplace_back(access->keyCodec(), key);
  });
  for (auto const& key : unwanted) access->del(owner, key.get());
}

void Description::add(Attribute const& attribute) { members_.attributes.push_back(attribute); }

void Description::add(Method const& method) { members_.methods.push_back(method); }

void Impl::nullToJson(Dovel::Node const&, JsonOut& out) { out.null(); }

}  // namespace Kiln
