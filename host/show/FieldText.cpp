#include "host/show/FieldText.h"

#include <algorithm>
#include <cctype>

#include "platform/asic/Entry.h"
#include "platform/kiln/Text.h"

namespace Host {

void FieldText::add(std::string_view name, std::string_view value) {
  if (!text_.empty()) text_ += ' ';
  text_.append(prefix_).append(name).append("=").append(value);
}

void FieldText::number(std::string_view name, std::uint64_t value) {
  if (value != 0) add(name, Kiln::toText(value));
}

void FieldText::text(std::string_view name, std::string value) {
  if (!value.empty()) add(name, value);
}

void FieldText::handle(std::string_view name, Asic::EntryHandle::PtrConst const& target) {
  if (!target || handles_ == Handles::leftOut) return;
  std::string value;
  Asic::appendHandleText(value, target);
  add(name, value);
}

void FieldText::groupBegin(std::string_view name) {
  groups_.push_back(prefix_.size());
  prefix_.append(name).append(".");
}

void FieldText::groupEnd() {
  prefix_.resize(groups_.back());
  groups_.pop_back();
}

std::string_view stateText(Asic::EntryState state) {
  switch (state) {
    case Asic::EntryState::none:
      return "removed";
    case Asic::EntryState::inProgress:
      return "in progress";
    case Asic::EntryState::written:
      return "written";
    case Asic::EntryState::failed:
      return "failed";
    case Asic::EntryState::full:
      return "waits for a row";
  }
  return "unknown";
}

std::string nameOf(std::string_view key) {
  bool const hasValue = std::any_of(key.begin(), key.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
  return hasValue ? std::string(key) : "default";
}

std::string rowText(std::optional<Asic::Index> row) { return row ? "row " + Kiln::toText(row->value()) : "no row"; }

}  // namespace Host
