#pragma once

#include <rapidjson/document.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "platform/dovel/Ptr.h"

namespace KilnSharedMem {
class EntityManager;
}
namespace Local {
class EntityManager;
}

namespace Stateway {

class EntityManager;

/// The three kinds of stores of an agent. None is null.
struct AgentStores {
  Dovel::Ptr<EntityManager> stateway;
  Dovel::Ptr<Local::EntityManager> local;
  Dovel::Ptr<KilnSharedMem::EntityManager> shmem;
};

/// A text that is no JSON. `what()` tells line, column and what is wrong.
class DocumentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The state that an agent is wanted to have: {"stateway": {path: {attribute: value}}, "local": {…}, "shmem": {…}}.
///
/// A document names the attributes that it decides about. Those that no document named are whoever's they were.
class StateDocument {
 public:
  /// A document that names nothing.
  StateDocument() { json_.SetObject(); }
  explicit StateDocument(rapidjson::Document json) : json_(std::move(json)) {}

  /// Throws `DocumentError`.
  static StateDocument parse(std::string_view text);

  rapidjson::Document const& json() const { return json_; }

 private:
  rapidjson::Document json_;
};

/// Throws `Kiln::ValueError`, with place and value, for the first thing in `document` that `stores` can't take: an
/// unknown member, a path that isn't mounted, an unknown attribute or one without a setter, a value of a wrong type or
/// out of its range. Changes nothing.
void check(StateDocument const& document, AgentStores const& stores);

/// Makes the state what `next` says, where `previous` is the document that held before.
///
/// First what only `previous` named is put back to what it is in a new object. Then the attributes of `next` are
/// written through the setters of their entities, in the order of the document's paths and of the attributes'
/// declaration; what is equal is not written. REQUIRES: both pass `check`.
void apply(StateDocument const& previous, StateDocument const& next, AgentStores const& stores);

}  // namespace Stateway
