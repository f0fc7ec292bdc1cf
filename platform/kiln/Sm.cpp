#include "platform/kiln/Sm.h"

namespace Kiln {

SmPart::SmPart(Sm& owner) {
  auto** link = &owner.firstPart_;
  while (*link) link = &(*link)->nextPart_;
  *link = this;
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

NotifieeConst::NotifieeConst()
    : Dovel::Subscriber([](Dovel::Subscriber& subscriber, Dovel::Change const& change) {
        // What the handler does may drop the reactor.
        Dovel::Ptr<NotifieeConst> const self(&static_cast<NotifieeConst&>(subscriber));
        if (!self->isZombie()) self->onAttribute(change);
      }) {
  nodeFlagSet(kNotificationActive, true);
}

NotifieeConst::~NotifieeConst() { unsubscribe(); }

void NotifieeConst::notifierIs(Dovel::Ptr<Dovel::Node const> const& notifier) {
  if (notifier == notifier_) return;
  unsubscribe();
  notifier_ = notifier;
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
