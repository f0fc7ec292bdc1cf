#include "host/output/OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Text.h"

namespace Host {

OutputFile::OutputFile(std::string const& name) : name_(name) {
  std::error_code error;
  // A link stays one.
  target_ = std::filesystem::weakly_canonical(name, error);
  if (error) fail(error.value());
  bool const usable = !std::filesystem::exists(target_, error) || std::filesystem::is_regular_file(target_, error);
  if (!usable) throw Kiln::InputError(name_, "", "what is no regular file", "expected a file that can be replaced");
  beside_ = target_.string() + '.' + Kiln::toText(static_cast<std::uint64_t>(getpid()));
  descriptor_ = open(beside_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor_ < 0) fail(errno);
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) {
    close(descriptor_);
    std::remove(beside_.c_str());
  }
}

void OutputFile::commit(std::string_view text) {
  write(text);
  // Else the name could reach the disk before the contents.
  if (fsync(descriptor_) != 0 || std::rename(beside_.c_str(), target_.c_str()) != 0) fail(errno);
  close(std::exchange(descriptor_, -1));
}

void OutputFile::write(std::string_view text) const {
  while (!text.empty()) {
    auto const written = ::write(descriptor_, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail(errno);
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

void OutputFile::fail(int error) const {
  throw Kiln::InputError(name_, "", "nothing that can be written (" + std::generic_category().message(error) + ")",
                         "expected a place for a file");
}

}  // namespace Host
