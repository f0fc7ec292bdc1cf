#include "platform/stateway/Mount.h"

#include <ostream>

#include "platform/stateway/Backend.h"

namespace Stateway {

namespace {

std::string_view name(MountStatus status) { return status == MountStatus::success ? "mountSuccess" : "mountNone"; }

}  // namespace

std::ostream& operator<<(std::ostream& out, MountStatus status) { return out << name(status); }
void appendText(std::string& out, MountStatus status) { out.append(name(status)); }

void Mount::handleFlags(std::string_view mode) {
  auto flags = flags_.val();
  for (char const letter : mode) {
    switch (letter) {
      case 'r':
        flags |= AllMountFlags::read;
        break;
      case 'w':
        flags |= AllMountFlags::read | AllMountFlags::write;
        break;
      case 'i':
        flags |= AllMountFlags::immediate;
        break;
      default:
        throw MountError(path_, typeName_, path_ + ": unknown mount mode " + std::string(mode));
    }
  }
  flags_.valIs(flags);
}

std::string Mount::mode() const {
  std::string mode;
  if (flags_.val() & AllMountFlags::write) {
    mode = "w";
  } else if (flags_.val() & AllMountFlags::read) {
    mode = "r";
  }
  if (flags_.val() & AllMountFlags::immediate) mode += 'i';
  return mode;
}

}  // namespace Stateway
