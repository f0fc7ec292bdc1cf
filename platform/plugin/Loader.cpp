#include "platform/plugin/Loader.h"

#include <dlfcn.h>

namespace Plugin {

namespace {

/// Why the classes that a plug-in brought are not its own; "" if they are.
std::string clash(std::size_t typesBefore, std::size_t refusedBefore) {
  auto const& refused = Kiln::typesRefused();
  if (refused.size() > refusedBefore) return "its class " + refused[refusedBefore] + " is registered already";
  if (Kiln::types().size() == typesBefore) return "it registers no class that is not registered already";
  return "";
}

}  // namespace

void Loader::load(std::filesystem::path const& file) {
  // A bare name would be looked up in the system's library directories.
  auto const path = std::filesystem::absolute(file);
  bool const present = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
  auto const types = Kiln::types().size();
  auto const refused = Kiln::typesRefused().size();
  if (!present && !dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    throw LoadError("plug-in " + file.string() + " cannot be loaded: " + dlerror());
  }
  auto const why = present ? "" : clash(types, refused);
  if (!why.empty()) throw LoadError("plug-in " + file.string() + " cannot be used: " + why);
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
