#include "host/output/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace Host {

void prepareStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  for (int const descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    // The lowest free descriptor is this one. Nobody wants to know that messages can't be written.
    [[maybe_unused]] int const opened = open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);
  }
}

DescriptorBuffer::DescriptorBuffer(int descriptor) : descriptor_(descriptor) {
  setp(pending_.data(), pending_.data() + pending_.size());
}

std::string DescriptorBuffer::finish() {
  writePending();
  return error_ == 0 ? "" : std::generic_category().message(error_);
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type character) {
  if (!writePending()) return traits_type::eof();
  if (!traits_type::eq_int_type(character, traits_type::eof())) sputc(traits_type::to_char_type(character));
  return traits_type::not_eof(character);
}

int DescriptorBuffer::sync() { return writePending() ? 0 : -1; }

bool DescriptorBuffer::writePending() {
  for (char const* next = pbase(); next < pptr() && error_ == 0;) {
    auto const written = ::write(descriptor_, next, static_cast<std::size_t>(pptr() - next));
    if (written >= 0) {
      next += written;
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
  setp(pending_.data(), pending_.data() + pending_.size());
  return error_ == 0;
}

}  // namespace Host
