#include "platform/kiln/Sm.h"

#include <utility>

namespace Kiln {

SmPart::SmPart(Sm& owner) : owner_(owner) {
  auto** link = &owner.firstPart_;
  while (*link) link = &(*link)->nextPart_;
  *link = this;
}

SmPart::~SmPart() {
  auto** link = &owner_.firstPart_;
  while (*link != this) link = &(*link)->nextPart_;
  *link = nextPart_;
}

void Sm::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  Dovel::PublishingNode::hasNotificationActiveIs(active);
  for (auto* part = firstPart_; part; part = part->nextPart_) part->partNotificationActiveIs(active);
}

void Sm::kilnDoZombieReactors(bool zombie) {
  if (zombie == isZombie()) return;
  for (auto* part = firstPart_; part; part = part->nextPart_) part->partZombieIs(zombie);
  Dovel::PublishingNode::kilnDoZombieReactors(zombie);
}

void Sm::lastUserGone() {
  hasNotificationActiveIs(false);
  kilnDoZombieReactors(true);
  for (auto* part = firstPart_; part; part = part->nextPart_) part->partRelease();
  Dovel::PublishingNode::lastUserGone();
}

NotifieeConst::NotifieeConst(Dovel::AttributeSet interest) : Dovel::Subscriber(&dispatch, interest) {
  nodeFlagSet(kNotificationActive, true);
}

NotifieeConst::NotifieeConst(Dovel::Ptr<Dovel::Node const> notifier, Dovel::AttributeSet interest)
    : Dovel::Subscriber(&dispatch, interest), notifier_(std::move(notifier)), registered_(true) {
  nodeFlagSet(kNotificationActive, true);
  notifier_->publisher()->subscriberAdd(*this);
}

void NotifieeConst::dispatch(Dovel::Subscriber& subscriber, Dovel::Change const& change) {
  auto& self = static_cast<NotifieeConst&>(subscriber);
  if (self.isZombie()) return;
  Dovel::Ptr<NotifieeConst> const alive(&self);
  self.onAttribute(change);
}

NotifieeConst::~NotifieeConst() { unsubscribe(); }

void NotifieeConst::notifierIs(Dovel::Ptr<Dovel::Node const> const& notifier) {
  if (notifier == notifier_) return;
  unsubscribe();
  // Released last: its deletion may lead back here.
  auto const former = std::exchange(notifier_, notifier);
  subscribe();
}

void NotifieeConst::isRegisteredNotifieeIs(bool registered) {
  registered_ = registered;
  if (registered) {
    subscribe();
  } else {
    unsubscribe();
  }
}

void NotifieeConst::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  Dovel::Node::hasNotificationActiveIs(active);
  if (active) {
    subscribe();
  } else {
    unsubscribe();
  }
}

void NotifieeConst::subscribe() {
  if (notifier_ && registered_ && hasNotificationActive() && !subscribed())
    notifier_->publisher()->subscriberAdd(*this);
}

void NotifieeConst::unsubscribe() {
  if (subscribed()) notifier_->publisher()->subscriberRemove(*this);
}

}  // namespace Kiln
