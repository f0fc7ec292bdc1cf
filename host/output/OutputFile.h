#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Host {

/// A file that is written completely or not at all: its text is in a file beside it until `commit`, which replaces the
/// former one.
class OutputFile {
 public:
  /// Creates the file beside it. Throws `InputError`, with the file, if nothing can be written there.
  explicit OutputFile(std::string const& name);
  /// Removes what was not committed.
  ~OutputFile();
  OutputFile(OutputFile const&) = delete;
  OutputFile& operator=(OutputFile const&) = delete;

  /// Makes `text` the contents of the file. Throws `InputError` if that fails; then the former file is unchanged.
  /// REQUIRES: called once at most.
  void commit(std::string_view text);

 private:
  [[noreturn]] void fail(int error) const;
  void write(std::string_view text) const;

  std::string name_;
  std::filesystem::path target_;
  std::string beside_;
  int descriptor_ = -1;
};

}  // namespace Host
