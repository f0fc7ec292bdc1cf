#pragma once

#include <cstdint>

#include "platform/dovel/Node.h"

namespace Dovel {

/// What changed: an attribute by its id and, for a collection, the key of the element that came, went or was replaced.
struct Change {
  std::uint16_t id = 0;
  void const* key = nullptr;

  /// The key of a collection's change. REQUIRES: `id` is a collection with keys of type `K`.
  template <class K>
  K const& keyAs() const {
    return *static_cast<K const*>(key);
  }
};

/// One link between a publisher and the object that contains the subscriber.
class Subscriber {
 public:
  using Dispatch = void (*)(Subscriber&, Change const&);

  explicit Subscriber(Dispatch dispatch) noexcept : dispatch_(dispatch) {}
  Subscriber(Subscriber const&) = delete;
  Subscriber& operator=(Subscriber const&) = delete;

  bool subscribed() const noexcept { return prev_ != nullptr; }

 protected:
  ~Subscriber() = default;

 private:
  friend class Publisher;

  Subscriber* next_ = nullptr;
  Subscriber* prev_ = nullptr;  ///< The first one's is the last: the list finds its end without a word of its own.
  Dispatch dispatch_;
};

/// The subscribers of one object.
///
/// The contract of a notification:
/// - synchronous, on the writer's stack, to completion, in order of subscription;
/// - a subscriber that comes during a publish doesn't see that change, one that goes during it is not called any more;
/// - the publishing object stays alive until its publish returns;
/// - an exception that leaves a subscriber ends the process.
/// Subscribers may come, go and cause further changes of the same object while they are called. Main thread only.
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

  /// Tells all subscribers of `change` of `owner`, the object that this publisher belongs to.
  void publishChange(Node const& owner, Change const& change) const noexcept {
    if (first_) walk(owner, change);
  }
  bool empty() const noexcept { return first_ == nullptr; }

 private:
  /// A walk under way. A subscriber that goes is taken out of every walk that would still come to it.
  struct Walk {
    Subscriber* next;
    Subscriber* last;
    Walk* outer;
  };

  void walk(Node const& owner, Change const& change) const noexcept;

  Subscriber* first_ = nullptr;
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
  mutable Publisher publisher_;
};

}  // namespace Dovel
