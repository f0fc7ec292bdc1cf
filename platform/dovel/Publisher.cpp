#include "platform/dovel/Publisher.h"

#include "platform/dovel/Ptr.h"

namespace Dovel {

Publisher::~Publisher() {
  while (first_) subscriberRemove(*first_);
}

void Publisher::subscriberAdd(Subscriber& subscriber) noexcept {
  interest_ |= subscriber.interest_;
  if (!first_) {
    subscriber.prev_ = &subscriber;
    first_ = &subscriber;
    return;
  }
  subscriber.prev_ = first_->prev_;
  first_->prev_->next_ = &subscriber;
  first_->prev_ = &subscriber;
}

void Publisher::subscriberRemove(Subscriber& subscriber) noexcept {
  // A walk that was to call this subscriber next calls the one behind it; one that was to end with it ends before it.
  for (Walk* walk = walks_; walk; walk = walk->outer) {
    if (walk->next == &subscriber) walk->next = walk->last == &subscriber ? nullptr : subscriber.next_;
    if (walk->last == &subscriber) walk->last = subscriber.prev_;
  }
  if (&subscriber == first_) {
    first_ = subscriber.next_;
    if (first_) {
      first_->prev_ = subscriber.prev_;
    } else {
      interest_ = 0;
    }
  } else {
    subscriber.prev_->next_ = subscriber.next_;
    (subscriber.next_ ? subscriber.next_ : first_)->prev_ = subscriber.prev_;
  }
  subscriber.next_ = nullptr;
  subscriber.prev_ = nullptr;
}

// The one place that walks subscribers. `next` is read before the call and corrected by `subscriberRemove`; `last` is
// fixed at the start, so that a subscriber added during the walk does not see this change.
void Publisher::walk(Node const& owner, Change const& change) const noexcept {
  Ptr<Node const> const alive(&owner);
  // A list of one needs no walk: nothing that the call adds or removes can be called next.
  if (!first_->next_) return first_->dispatch_(*first_, change);
  Walk walk{first_, first_->prev_, walks_};
  walks_ = &walk;
  while (walk.next) {
    Subscriber& current = *walk.next;
    walk.next = walk.next == walk.last ? nullptr : current.next_;
    if (current.interest_ & attributes(change.id)) current.dispatch_(current, change);
  }
  walks_ = walk.outer;
}

}  // namespace Dovel
