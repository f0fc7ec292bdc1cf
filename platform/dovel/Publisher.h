#pragma once

#include <cstdint>

#include "platform/dovel/Node.h"

namespace Dovel {

/// What changed: an attribute by its id and, for a collection, the key of the element that was added, removed or
/// replaced.
struct Change {
  std::uint16_t id = 0;
  void const* key = nullptr;

  /// The key of a collection's change. REQUIRES: `id` is a collection with keys of type `K`.
  template <class K>
  K const& keyAs() const {
    return *static_cast<K const*>(key);
  }
};

/// A set of attribute ids, folded to 32 bits: contains what was put in, and ids that equal one of these modulo 32.
using AttributeSet = std::uint32_t;
constexpr AttributeSet kAllAttributes = ~AttributeSet{0};
template <class... Id>
constexpr AttributeSet attributes(Id... ids) {
  return (AttributeSet{0} | ... | (AttributeSet{1} << ids % 32));
}

/// One link between a publisher and the object that contains the subscriber.
class Subscriber {
 public:
  using Dispatch = void (*)(Subscriber&, Change const&);

  /// `dispatch` is called for every change of an attribute of `interest`, and may be called for others.
  explicit Subscriber(Dispatch dispatch, AttributeSet interest = kAllAttributes) noexcept
      : interest_(interest), dispatch_(dispatch) {}
  Subscriber(Subscriber const&) = delete;
  Subscriber& operator=(Subscriber const&) = delete;

  bool subscribed() const noexcept { return prev_ != nullptr; }

 protected:
  ~Subscriber() = default;

 private:
  friend class Publisher;

  Subscriber* next_ = nullptr;
  Subscriber* prev_ = nullptr;  ///< The first one's is the last: the list finds its end without a word of its own.
  AttributeSet interest_;
  Dispatch dispatch_;
};

/// The subscribers of one object.
///
/// The contract of a notification:
/// - synchronous, on the writer's stack, to completion, in order of subscription;
/// - a subscriber added during a publish does not see that change, one removed during it is not called any more;
/// - the publishing object stays alive until its publish returns;
/// - an exception that leaves a subscriber ends the process, with the last traces printed (see `Invariant.h`).
/// Subscribers may be added and removed and may cause further changes of the same object while they are called. Main
/// thread only.
class Publisher {
 public:
  Publisher() noexcept = default;
  Publisher(Publisher const&) = delete;
  Publisher& operator=(Publisher const&) = delete;
  ~Publisher();

  /// REQUIRES: `subscriber` has no subscription.
  void subscriberAdd(Subscriber& subscriber) noexcept;
  /// REQUIRES: `subscriber` is one of this publisher's.
  void subscriberRemove(Subscriber& subscriber) noexcept;

  /// Calls the subscribers that are interested in `change` of `owner`, the object that this publisher belongs to.
  void publishChange(Node const& owner, Change const& change) const noexcept {
    if (interest_ & attributes(change.id)) walk(owner, change);
  }
  bool empty() const noexcept { return first_ == nullptr; }

 private:
  /// A walk in progress. A removed subscriber is taken out of every walk that has not reached it yet.
  struct Walk {
    Subscriber* next;
    Subscriber* last;
    Walk* outer;
  };

  void walk(Node const& owner, Change const& change) const noexcept;

  Subscriber* first_ = nullptr;
  AttributeSet interest_ = 0;  ///< Of all subscribers since the list was last empty.
  inline static Walk* walks_ = nullptr;
};

/// A node that publishes its changes.
class PublishingNode : public Node {
 public:
  Publisher* publisher() const override { return &publisher_; }

 protected:
  void kilnChanged(std::uint16_t id, void const* key = nullptr) const noexcept {
    publisher_.publishChange(*this, Change{id, key});
  }

 private:
  [[no_unique_address]] mutable Publisher publisher_;  // Its padding serves the first attributes of a class.
};

}  // namespace Dovel
