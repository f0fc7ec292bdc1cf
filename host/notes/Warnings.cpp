#include "host/notes/Warnings.h"

namespace Host {

std::string Warning::text() const {
  auto text = file + ": ";
  if (!entry.empty()) text += entry + ", ";
  text += ignored;
  return consequence.empty() ? text : text + "; " + consequence;
}

void Warnings::add(Warning warning) {
  if (seen_.insert(warning).second) all_.push_back(std::move(warning));
}

void Warnings::add(std::string_view kind, Kiln::JsonIn at, std::string ignored, std::string consequence) {
  add({std::string(kind), at.source(), at.path() + ": found " + at.shown(), std::move(ignored),
       std::move(consequence)});
}

}  // namespace Host
