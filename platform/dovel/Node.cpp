#include "platform/dovel/Node.h"

#include <atomic>

namespace Dovel {

void Node::useIncShared() const noexcept { std::atomic_ref(word_).fetch_add(1, std::memory_order_relaxed); }

std::uint32_t Node::useDecShared() const noexcept {
  return std::atomic_ref(word_).fetch_sub(1, std::memory_order_acq_rel) - 1;
}

void Node::nodeFlagSet(std::uint32_t flag, bool on) const noexcept {
  if (ThreadControl::tsp_) {
    on ? std::atomic_ref(word_).fetch_or(flag) : std::atomic_ref(word_).fetch_and(~flag);
  } else {
    word_ = on ? (word_ | flag) : (word_ & ~flag);
  }
}

void Node::hasNotificationActiveIs(bool active) { nodeFlagSet(kNotificationActive, active); }

void Node::kilnDoZombieReactors(bool zombie) { nodeFlagSet(kZombie, zombie); }

void Node::lastUserGoneImpl() const noexcept {
  word_ += kDeleting;
  auto* self = const_cast<Node*>(this);
  self->lastUserGone();
  delete self;
}

}  // namespace Dovel
