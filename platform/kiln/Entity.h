#pragma once

#include <string>

#include "platform/dovel/Publisher.h"
#include "platform/dovel/String.h"
#include "platform/kiln/Attribute.h"

namespace Kiln {

/// A piece of shared state: attributes that publish their changes.
///
/// An entity in a collection is named by its key; one that stands by itself is a `NamedEntity`.
/// A class describes itself once, in its header, with the macros of `Attribute.h`.
class Entity : public Dovel::PublishingNode {
  KILN_BASE_TYPE(Kiln::Entity)

 public:
  virtual Dovel::String name() const { return {}; }
};

class NamedEntity : public Entity {
  KILN_TYPE(Kiln::NamedEntity, Kiln::Entity)

 public:
  explicit NamedEntity(Dovel::String name = {}) : name_(std::move(name)) {}
  Dovel::String name() const override { return name_; }

 private:
  Dovel::String name_;
};

/// Counts its changes: who works something out from it can tell whether that still holds.
class RevisedEntity : public NamedEntity {
  KILN_TYPE(Kiln::RevisedEntity, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
  std::uint64_t revision() const { return revision_; }

 protected:
  void kilnChanged(std::uint16_t id, void const* key = nullptr) const noexcept {
    ++revision_;
    NamedEntity::kilnChanged(id, key);
  }

 private:
  mutable std::uint64_t revision_ = 0;
};

/// All attributes of `entity` as one JSON object.
void entityToJson(Entity const& entity, JsonOut& out);
/// Throws `InputError` unless `in` is an object that can be read into an entity of `type`.
void entityCheck(Type const& type, JsonIn const& in);
/// Makes `entity` what `in` says: attributes that `in` doesn't name become what they are in a new object.
/// REQUIRES: `in` passes `entityCheck`.
void entityFromJson(Entity& entity, JsonIn const& in);

}  // namespace Kiln
