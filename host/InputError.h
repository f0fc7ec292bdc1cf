#pragma once

#include <stdexcept>
#include <string>

namespace Host {

/// Input from outside that cannot be used: which file, where in it, what stands there and what was expected.
///
/// `what()` says all of it in one line, fit for an operator: "FILE: PLACE: found VALUE, expected EXPECTED".
/// The place is a JSON pointer, "line L, column C" for text that is no JSON, or empty where the file as a whole is
/// meant.
class InputError : public std::runtime_error {
 public:
  InputError(std::string file, std::string place, std::string value, std::string const& expected)
      : std::runtime_error(file + ": " + (place.empty() ? "" : place + ": ") + "found " + value + ", expected " +
                           expected),
        file_(std::move(file)),
        place_(std::move(place)),
        value_(std::move(value)) {}

  std::string const& file() const { return file_; }
  std::string const& place() const { return place_; }
  /// As it stands in the file; long values are cut.
  std::string const& value() const { return value_; }

 private:
  std::string file_;
  std::string place_;
  std::string value_;
};

}  // namespace Host
