#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace KilnSharedMem {

/// The layout of an entity in shared memory.
class MountInfo {
 public:
  enum class Layout : std::uint8_t { table, entity };

  Layout layout() const { return layout_; }
  std::uint32_t type() const { return type_; }
  /// The collections of a table that are wanted; empty for all.
  std::string const& collectionInfo() const { return collectionInfo_; }
  void collectionInfoIs(std::string info) { collectionInfo_ = std::move(info); }

 protected:
  MountInfo(Layout layout, std::uint32_t type) : layout_(layout), type_(type) {}

 private:
  Layout layout_;
  std::uint32_t type_;
  std::string collectionInfo_;
};

}  // namespace KilnSharedMem

namespace KilnBrisk {

/// A table in shared memory.
class MountInfo : public KilnSharedMem::MountInfo {
 public:
  explicit MountInfo(std::uint32_t type) : KilnSharedMem::MountInfo(Layout::table, type) {}
};

}  // namespace KilnBrisk

namespace KilnPelican {

/// An entity in shared memory.
class MountInfo : public KilnSharedMem::MountInfo {
 public:
  MountInfo() : KilnSharedMem::MountInfo(Layout::entity, 0) {}
};

}  // namespace KilnPelican
