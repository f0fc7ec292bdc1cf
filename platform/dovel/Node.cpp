#include "platform/dovel/Node.h"

namespace Dovel {

void Node::hasNotificationActiveIs(bool active) { nodeFlagSet(kNotificationActive, active); }

void Node::kilnDoZombieReactors(bool zombie) { nodeFlagSet(kZombie, zombie); }

void Node::lastUserGoneImpl() const noexcept {
  word_ += kDeleting;
  auto* self = const_cast<Node*>(this);
  self->lastUserGone();
  delete self;
}

}  // namespace Dovel
