#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/asic/EntryHandle.h"

namespace Asic {

/// Receives the fields of one entry in their order; parts of a merged entry and rows of a block as groups.
class FieldVisitor {
 public:
  virtual void number(std::string_view name, std::uint64_t value) = 0;
  /// A number that the table computes from what the entry refers to.
  virtual void computed(std::string_view name, std::uint64_t value) { number(name, value); }
  /// An address, a bitmap, an interface.
  virtual void text(std::string_view name, std::string value) = 0;
  /// `target` may be null; a don't-care handle has no record.
  virtual void handle(std::string_view name, EntryHandle::PtrConst const& target) = 0;
  virtual void groupBegin(std::string_view name) = 0;
  virtual void groupEnd() = 0;

 protected:
  ~FieldVisitor() = default;
};

class StoreBase;

/// One entry, for show. Valid during the call that it is passed to.
class EntryView {
 public:
  explicit EntryView(RecordBase const& record) : record_(record) {}

  std::string key() const;
  std::optional<Index> row() const;
  EntryState state() const;
  EntryHandle const& handle() const { return record_.weak(); }
  /// Whether the entry's key was removed while other entries still refer to it.
  bool removed() const;
  void fields(FieldVisitor& visitor) const;

 private:
  RecordBase const& record_;
};

}  // namespace Asic
