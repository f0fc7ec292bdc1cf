#include "platform/kiln/Exceptions.h"

#include <utility>

namespace Kiln {

namespace {

std::string inputMessage(std::string const& file, std::string const& place, std::string const& value,
                         std::string const& problem) {
  std::string text;
  for (auto const& part : {file, place}) {
    if (!part.empty()) text.append(part).append(": ");
  }
  if (!value.empty()) text.append("found ").append(value).append(", ");
  return text.append(problem);
}

}  // namespace

InputError::InputError(std::string file, std::string place, std::string value, std::string problem)
    : std::runtime_error(inputMessage(file, place, value, problem)),
      file_(std::move(file)),
      place_(std::move(place)),
      value_(std::move(value)),
      problem_(std::move(problem)) {}

void throwRangeException(char const* text) { throw RangeException(text); }

void throwMutatorArgNullPointerException(char const* what) {
  throw NullPointerException(std::string(what) + ": the argument is null");
}

void Impl::throwMutatorReinstantiating(char const* what) {
  throw ReinstantiationException(std::string(what) + ": is instantiated already");
}

}  // namespace Kiln
