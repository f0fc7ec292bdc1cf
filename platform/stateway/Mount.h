#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Stateway {

/// The result of a mounter's mounts.
enum class MountStatus : std::uint8_t { none = 0, success = 4 };

constexpr MountStatus mountSuccess() { return MountStatus::success; }
std::ostream& operator<<(std::ostream& out, MountStatus status);
void appendText(std::string& out, MountStatus status);

/// The flags of a mount in one word.
class AllMountFlags {
 public:
  static constexpr std::uint32_t read = 1;
  static constexpr std::uint32_t write = 2;
  static constexpr std::uint32_t immediate = 4;  ///< The children of a directory are mounted with it.

  std::uint32_t val() const { return val_; }
  void valIs(std::uint32_t val) { val_ = val; }

  friend bool operator==(AllMountFlags const&, AllMountFlags const&) = default;

 private:
  std::uint32_t val_ = read;
};

/// A request for the entity of a type at a path. A new one is for reading.
class Mount {
 public:
  Mount(std::string path, std::string typeName) : path_(std::move(path)), typeName_(std::move(typeName)) {}

  std::string const& path() const { return path_; }
  std::string const& typeName() const { return typeName_; }
  AllMountFlags const& flags() const { return flags_; }
  AllMountFlags& flags() { return flags_; }
  /// Adds the flags named by the letters of `mode`: r, w (which includes reading) and i.
  /// Throws `MountError` for any other letter.
  void handleFlags(std::string_view mode);
  /// The letters of the flags: "r", "w", "ri", "wi".
  std::string mode() const;

  friend bool operator==(Mount const&, Mount const&) = default;

 private:
  std::string path_;
  std::string typeName_;
  AllMountFlags flags_;
};

}  // namespace Stateway
