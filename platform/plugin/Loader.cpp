#include "platform/plugin/Loader.h"

#include <dlfcn.h>

namespace Plugin {

void Loader::load(std::filesystem::path const& file) {
  // A bare name would be looked for in the system's library directories.
  auto const path = std::filesystem::absolute(file);
  if (!dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    throw LoadError("plug-in " + file.string() + " cannot be loaded: " + dlerror());
  }
  files_.push_back(path);
}

Dovel::Ptr<Mounter> Loader::makeMounter(std::string_view typeName, std::string const& name) const {
  std::string const type(typeName);
  if (!Kiln::typeByName(typeName)) {
    std::string loaded = files_.empty() ? " (no plug-in is loaded)" : " by the plug-ins that are loaded:";
    for (auto const& file : files_) loaded.append(" ").append(file.string());
    throw LoadError("type " + type + " is not registered" + loaded);
  }
  auto const mounter = Dovel::cast<Mounter>(Kiln::newByTypeName(typeName, name));
  if (!mounter) throw LoadError("type " + type + " is not a mounter that can be created by name");
  return mounter;
}

}  // namespace Plugin
