#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/plugin/Mounter.h"

namespace Plugin {

/// A plug-in that can't be loaded, or a mounter that can't be made. The text names the file or the type, and why.
class LoadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Brings plug-ins into the process and makes their mounters.
///
/// A plug-in has no entry function: loading it registers its classes. It stays until the process ends, since the type
/// registry holds on to what it describes.
class Loader {
 public:
  /// Throws `LoadError`. A file that is loaded already is not loaded again.
  void load(std::filesystem::path const& file);
  /// A mounter of the named class. Never null. Throws `LoadError` if no class of that name is registered, or if it is
  /// not a mounter that can be created by name.
  Dovel::Ptr<Mounter> makeMounter(std::string_view typeName, std::string const& name) const;
  std::vector<std::filesystem::path> const& files() const { return files_; }

 private:
  std::vector<std::filesystem::path> files_;
};

}  // namespace Plugin
