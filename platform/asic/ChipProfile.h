#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/asic/Feature.h"

namespace Asic {

/// The size of one table of a chip.
struct TableSize {
  std::uint32_t rows = 0;  ///< 0: the chip doesn't have the table.
  std::uint32_t base = 0;  ///< The chip's number of the first row; not 0 for parts of merged tables only.
};

/// One type of chip: rows by table, and features by type.
///
/// Built by the loader or by a test; not changed once a chip uses it.
class ChipProfile final : public Dovel::Node {
  KILN_BASE_TYPE(Asic::ChipProfile)

 public:
  explicit ChipProfile(std::string name) : name_(std::move(name)) {}

  std::string const& name() const { return name_; }
  std::string const& description() const { return description_; }
  void descriptionIs(std::string const& text) { description_ = text; }
  /// Whether the system profile has room for VXLAN at all.
  bool profileSupportsVxlan() const { return profileSupportsVxlan_; }
  void profileSupportsVxlanIs(bool supports) { profileSupportsVxlan_ = supports; }
  /// Whether the chip is one of those that the feature's own tests run on.
  bool isTestChip() const { return isTestChip_; }
  void isTestChipIs(bool is) { isTestChip_ = is; }

  /// The size of a table by its name without namespace; no rows for a table that the chip doesn't have.
  TableSize table(std::string_view table) const;
  /// Sets the size of a table. One with rows adds its `Util` feature; so does a merged table whose parts all have rows.
  void tableIs(std::string_view table, TableSize size);
  std::map<std::string, TableSize, std::less<>> const& tables() const { return tables_; }

  /// The feature of that type, null if the chip doesn't have it.
  Dovel::Ptr<Feature const> feature(Kiln::Type const& type) const;
  template <class T>
  Dovel::Ptr<T const> feature() const {
    auto const found = feature(T::kilnType());
    return Dovel::Ptr<T const>(static_cast<T const*>(found.get()));
  }
  /// Adds a feature under its own type.
  void featureIs(Dovel::Ptr<Feature const> const& feature);
  /// Features by the name of their type.
  std::map<std::string_view, Dovel::Ptr<Feature const>> const& features() const { return features_; }

 private:
  std::string name_;
  std::string description_;
  bool profileSupportsVxlan_ = true;
  bool isTestChip_ = false;
  std::map<std::string, TableSize, std::less<>> tables_;
  std::map<std::string_view, Dovel::Ptr<Feature const>> features_;
};

}  // namespace Asic
