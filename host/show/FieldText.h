#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/asic/FieldVisitor.h"

namespace Host {

/// The fields of an entry as "name=value name=value": parts prefix their fields, what is 0, empty or null is left out.
class FieldText final : public Asic::FieldVisitor {
 public:
  enum class Handles { shown, leftOut };

  explicit FieldText(Handles handles) : handles_(handles) {}

  void number(std::string_view name, std::uint64_t value) override;
  void text(std::string_view name, std::string value) override;
  void handle(std::string_view name, Asic::EntryHandle::PtrConst const& target) override;
  void groupBegin(std::string_view name) override;
  void groupEnd() override;

  std::string take() { return std::move(text_); }

 private:
  void add(std::string_view name, std::string_view value);

  Handles handles_;
  std::vector<std::size_t> groups_;  ///< Where each open group's name begins in `prefix_`.
  std::string prefix_;
  std::string text_;
};

/// "written", "waits for a row", …; "removed" for an entry that no longer exists.
std::string_view stateText(Asic::EntryState state);
/// The name of an entry: its key's text, "default" for a key without a value.
std::string nameOf(std::string_view key);
/// "row 7", or "no row".
std::string rowText(std::optional<Asic::Index> row);

}  // namespace Host
