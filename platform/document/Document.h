#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/dovel/Ptr.h"
#include "platform/kiln/JsonIn.h"

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

/// The state that an agent is wanted to have: {"stateway": {path: {attribute: value}}, "local": {…}, "shmem": {…}}.
///
/// Its members "format" and "notes" are no state; of them only the format is checked.
///
/// A document names the attributes that it decides about. Attributes that no document named keep their current value.
class StateDocument {
 public:
  static constexpr std::string_view format = "tessel-state/1";  ///< The value of the member "format", if there is one.
  static constexpr std::string_view notes = "notes";

  /// A document that names nothing.
  StateDocument() = default;
  explicit StateDocument(Kiln::JsonDocument json) : json_(std::move(json)) {}

  /// Both throw `Kiln::InputError` for what is no JSON.
  static StateDocument parse(std::string_view text, std::string source = "document") {
    return StateDocument(Kiln::JsonDocument::parse(text, std::move(source)));
  }
  static StateDocument read(std::string const& file) { return StateDocument(Kiln::JsonDocument::read(file)); }

  /// The file or directory that it was read from.
  std::string const& source() const { return json_.source(); }
  Kiln::JsonIn root() const { return json_.root(); }

 private:
  Kiln::JsonDocument json_;
};

/// Throws `Kiln::InputError`, with file, place and value, for the first thing in `document` that `stores` can't take:
/// an unknown member, a path that isn't mounted, an unknown attribute or one without a setter, a value of a wrong type
/// or out of its range. Changes nothing.
void check(StateDocument const& document, AgentStores const& stores);

/// Changes the state to what `next` says, where `previous` is the document that was applied before.
///
/// First the attributes that only `previous` named are reset to their initial values. Then the attributes of `next` are
/// written through the setters of their entities, in the order of the document's paths and of the attributes'
/// declaration; equal values are not written. REQUIRES: both pass `check`.
void apply(StateDocument const& previous, StateDocument const& next, AgentStores const& stores);

}  // namespace Stateway
