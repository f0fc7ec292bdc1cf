#pragma once

#include <stdexcept>
#include <string>

namespace Kiln {

/// A value outside the range of its type. `what()` is exactly the text that the type declares.
class RangeException : public std::out_of_range {
 public:
  using std::out_of_range::out_of_range;
};

/// A mutator was handed null where it needs an object.
class NullPointerException : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

/// A mutator was called to make a second object of an attribute that holds one already.
class ReinstantiationException : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// A document holds a value that its place does not accept.
///
/// `what()` says what was expected, `path()` is the place of the value as a JSON pointer ("" is the whole document),
/// and `value()` is the text of the value, cut to 80 characters.
class ValueError : public std::runtime_error {
 public:
  ValueError(std::string path, std::string value, std::string const& expected)
      : std::runtime_error(expected), path_(std::move(path)), value_(std::move(value)) {}

  std::string const& path() const { return path_; }
  std::string const& value() const { return value_; }

 private:
  std::string path_;
  std::string value_;
};

/// Throws `RangeException` with exactly `text`.
[[noreturn]] void throwRangeException(char const* text);

/// Throws `NullPointerException`; `what` names the mutator, as in "Vane::HwTunnelConfig::entryIs".
[[noreturn]] void throwMutatorArgNullPointerException(char const* what);

namespace Impl {
/// Throws `ReinstantiationException`; `what` names the attribute.
[[noreturn]] void throwMutatorReinstantiating(char const* what);
}  // namespace Impl

}  // namespace Kiln
