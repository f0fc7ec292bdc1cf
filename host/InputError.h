#pragma once

#include <stdexcept>
#include <string>

#include "platform/kiln/Exceptions.h"

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

  /// What a value of a document can't be, in the codec's words: "FILE: PLACE: found VALUE, WHAT".
  static InputError ofValue(std::string const& file, Kiln::ValueError const& error) {
    auto const place = error.path().empty() ? "" : error.path() + ": ";
    return {file, error.path(), error.value(), file + ": " + place + "found " + error.value() + ", " + error.what(), 0};
  }
  /// What is wrong with a text that is no JSON; `what` tells line and column.
  static InputError ofText(std::string const& file, std::string const& what) {
    return {file, "", "", file + ": " + what, 0};
  }

  std::string const& file() const { return file_; }
  std::string const& place() const { return place_; }
  /// As it stands in the file; long values are cut.
  std::string const& value() const { return value_; }

 private:
  InputError(std::string file, std::string place, std::string value, std::string const& whole, int)
      : std::runtime_error(whole), file_(std::move(file)), place_(std::move(place)), value_(std::move(value)) {}

  std::string file_;
  std::string place_;
  std::string value_;
};

}  // namespace Host
