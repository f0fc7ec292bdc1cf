#pragma once

#include <array>
#include <streambuf>
#include <string>

namespace Host {

/// Prepares the process for output that may fail: a closed pipe is an error of a write and no signal, and a standard
/// stream that is closed is replaced, so that no file gets its descriptor; writes to the output then fail.
void prepareStandardStreams();

/// The buffer of a stream to a descriptor that keeps the first error of a write.
class DescriptorBuffer final : public std::streambuf {
 public:
  /// REQUIRES: the descriptor stays open for the life of this object.
  explicit DescriptorBuffer(int descriptor);

  /// Writes what is pending. Returns what the system said of the first write that failed; empty: all is written.
  std::string finish();

 private:
  int_type overflow(int_type character) override;
  int sync() override;
  bool writePending();

  int descriptor_;
  int error_ = 0;
  std::array<char, 1 << 16> pending_;
};

}  // namespace Host
