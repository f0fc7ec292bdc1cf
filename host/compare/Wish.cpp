#include "host/compare/Wish.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

namespace Host {

namespace {

using rapidjson::Value;
using Members = std::vector<std::pair<std::string_view, Value const*>>;

std::string textOf(Value const& value) {
  if (value.IsString()) return {value.GetString(), value.GetStringLength()};
  rapidjson::StringBuffer buffer;
  rapidjson::Writer writer(buffer);
  value.Accept(writer);
  return {buffer.GetString(), buffer.GetSize()};
}

/// Members by name; elements of an array by their text, which `texts` keeps.
Members membersOf(Value const* value, std::vector<std::string>& texts) {
  Members members;
  if (value && value->IsObject()) {
    members.reserve(value->MemberCount());
    for (auto const& member : value->GetObject())
      members.emplace_back(std::string_view(member.name.GetString(), member.name.GetStringLength()), &member.value);
  } else if (value && value->IsArray()) {
    texts.reserve(value->Size());
    for (auto const& element : value->GetArray()) members.emplace_back(texts.emplace_back(textOf(element)), &element);
  }
  auto const byName = [](auto const& a, auto const& b) { return a.first < b.first; };
  if (!std::is_sorted(members.begin(), members.end(), byName)) std::sort(members.begin(), members.end(), byName);
  return members;
}

/// Compares two values, one of which may be null for none, down to single values.
class Comparison {
 public:
  void entities(Value const* from, Value const* to) {
    pairwise(from, to, [this](std::string_view path, Value const* a, Value const* b) {
      kind_ = path;
      compare(a, b);
    });
  }
  std::vector<Change> take() {
    sortByValue(changes_);
    return std::move(changes_);
  }

 private:
  template <class Visit>
  static void pairwise(Value const* from, Value const* to, Visit const& visit) {
    std::vector<std::string> fromTexts, toTexts;
    auto const before = membersOf(from, fromTexts);
    auto const after = membersOf(to, toTexts);
    auto a = before.begin();
    auto b = after.begin();
    while (a != before.end() || b != after.end()) {
      if (b == after.end() || (a != before.end() && a->first < b->first)) {
        visit(a->first, a->second, nullptr), ++a;
      } else if (a == before.end() || b->first < a->first) {
        visit(b->first, nullptr, b->second), ++b;
      } else {
        visit(a->first, a->second, b->second), ++a, ++b;
      }
    }
  }

  void compare(Value const* from, Value const* to) {
    auto const has = [&](auto is) { return (!from || is(*from)) && (!to || is(*to)); };
    if (has([](Value const& value) { return value.IsObject(); })) {
      pairwise(from, to, [this](std::string_view name, Value const* a, Value const* b) {
        auto const length = key_.size();
        key_.append(length == 0 ? "" : "/").append(name);
        compare(a, b);
        key_.resize(length);
      });
    } else if (has([](Value const& value) { return value.IsArray(); })) {
      pairwise(from, to, [this](std::string_view, Value const* a, Value const* b) {
        if (!a || !b) add(a, b);
      });
    } else if (!from || !to || textOf(*from) != textOf(*to)) {
      add(from, to);
    }
  }

  void add(Value const* from, Value const* to) {
    Change change{!from ? Change::How::added : !to ? Change::How::removed : Change::How::changed, kind_, key_};
    auto& attribute = change.attributes.emplace_back();
    if (from) attribute.from = textOf(*from);
    if (to) attribute.to = textOf(*to);
    changes_.push_back(std::move(change));
  }

  std::string kind_;
  std::string key_;
  std::vector<Change> changes_;
};

}  // namespace

std::vector<Change> wishChanges(Stateway::StateDocument const& from, Stateway::StateDocument const& to) {
  Comparison comparison;
  for (auto const* store : {"stateway", "local", "shmem"}) {
    auto const before = from.root().find(store);
    auto const after = to.root().find(store);
    comparison.entities(before ? &before->value() : nullptr, after ? &after->value() : nullptr);
  }
  return comparison.take();
}

}  // namespace Host
