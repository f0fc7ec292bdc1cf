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

/// A mutator was asked to make a second object of an attribute that holds one already.
class ReinstantiationException : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Input from outside that cannot be used: the file, the place in it, the value found there and what is wrong with it.
///
/// `what()` is one line for an operator: "FILE: PLACE: found VALUE, PROBLEM". Parts that are empty are left out.
class InputError : public std::runtime_error {
 public:
  InputError(std::string file, std::string place, std::string value, std::string problem);

  /// The file, the name of another source of input, or the name of an argument.
  std::string const& file() const { return file_; }
  /// A JSON pointer, or "line L, column C" in text that is no JSON. Empty for the input as a whole.
  std::string const& place() const { return place_; }
  /// As in the file; long values are cut.
  std::string const& value() const { return value_; }
  /// Usually "expected …".
  std::string const& problem() const { return problem_; }

 private:
  std::string file_;
  std::string place_;
  std::string value_;
  std::string problem_;
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
