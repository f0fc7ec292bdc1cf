#pragma once

#include "platform/dovel/Ptr.h"
#include "platform/dovel/Publisher.h"
#include "platform/kiln/Attribute.h"

/// A pointer attribute whose object is watched: x(), and xIs(ptr), which moves the subscription and runs `CatchUp_`
/// once for the new object. `OnChange_` and `CatchUp_` (or nullptr) are members of the class, declared above; the
/// member x_ is a `Kiln::Watch` and takes the constructor's initialiser.
#define KILN_WATCHED(id_, Type_, name_, OnChange_, CatchUp_)                         \
 public:                                                                             \
  [[maybe_unused]] static constexpr ::Kiln::AttributeId name_##Id = id_;             \
  ::Dovel::Ptr<Type_> const& name_() const { return name_##_.get(); }                \
  void name_##Is(::Dovel::Ptr<Type_> const& object) { name_##_.notifierIs(object); } \
                                                                                     \
 private:                                                                            \
  ::Kiln::Watch<Type_, OnChange_, CatchUp_> name_##_{*this};                         \
  KILN_LINE(fixed<::Dovel::Ptr<Type_>, &KilnSelf::name_>(id_, #name_))

namespace Kiln {

class Sm;

/// A member of a state machine that watches: one object (`Watch`), or a family of objects (`NestedSms`).
class SmPart {
 public:
  SmPart(SmPart const&) = delete;
  SmPart& operator=(SmPart const&) = delete;

  virtual void partNotificationActiveIs(bool active) = 0;
  virtual void partZombieIs(bool zombie) = 0;
  /// The owner is about to be deleted: nothing that outlives it may reach it.
  virtual void partRelease() = 0;

 protected:
  explicit SmPart(Sm& owner);
  virtual ~SmPart();

  Sm& owner_;

 private:
  friend class Sm;
  SmPart* nextPart_ = nullptr;
};

/// Base of state machines: an object whose behaviour is a set of handlers that run when other objects change.
///
/// Notification is active from construction on; a class whose owner switches it on later says `Sm(Quiet{})`. Its parts
/// (`Watch`, `NestedSms`) register themselves here and may be destroyed before it, so that switching notification,
/// becoming a zombie and the order of deletion are written once: when the last reference is released, 1. notification
/// off, 2. zombie, 3. the parts let go of the owner, 4. the members are destroyed. Main thread only. A handler runs to
/// completion; it may write state that runs further handlers on its stack, and may release the machine's last
/// reference: the machine is deleted when the handler has returned.
class Sm : public Dovel::PublishingNode {
 public:
  void hasNotificationActiveIs(bool active) override;
  void kilnDoZombieReactors(bool zombie) override;

 protected:
  struct Quiet {};

  Sm() { nodeFlagSet(kNotificationActive, true); }
  explicit Sm(Quiet) {}
  void lastUserGone() override;

 private:
  friend class SmPart;
  SmPart* firstPart_ = nullptr;
};

/// Takes a watched pointer as it is: subscribes, and does not run the handler for the state that the object has.
struct SubscribeOnly {};

/// One object that a state machine watches.
///
/// `OnChange` is a member function of the owner that gets each change; `CatchUp`, if given, runs once whenever another
/// object is bound later by `notifierIs`, for the state that the object already has. A zombie's functions never run. An
/// exception that leaves either ends the process.
///
///   Kiln::Watch<State, &Self::stateDispatch, &Self::handleState> state_{*this};
template <class T, auto OnChange, auto CatchUp = nullptr>
class Watch final : private Dovel::Subscriber, private SmPart {
 public:
  template <class Owner>
  explicit Watch(Owner& owner) : Dovel::Subscriber(&dispatch<Owner>), SmPart(owner), catchUp_(&runCatchUp<Owner>) {}
  template <class Owner>
  Watch(Owner& owner, Dovel::Ptr<T> object, SubscribeOnly) : Watch(owner) {
    object_ = std::move(object);
    subscribedIs(owner_.hasNotificationActive());
  }
  ~Watch() override { subscribedIs(false); }

  Dovel::Ptr<T> const& get() const { return object_; }
  T* operator->() const { return object_.get(); }
  explicit operator bool() const { return bool(object_); }

  /// Watches `object` in place of the former one. Null only ends the former subscription.
  void notifierIs(Dovel::Ptr<T> const& object) {
    if (object == object_) return;
    subscribedIs(false);
    // Released last: its deletion may lead back here.
    Dovel::Ptr<T> const former = std::exchange(object_, object);
    subscribedIs(owner_.hasNotificationActive());
    if (object_ && !owner_.isZombie()) catchUp_(owner_);
  }

 private:
  template <class Owner>
  static void dispatch(Dovel::Subscriber& subscriber, Dovel::Change const& change) {
    auto& owner = static_cast<Owner&>(static_cast<Watch&>(subscriber).owner_);
    if (owner.isZombie()) return;
    Dovel::Ptr<Sm> const alive(&owner);
    (owner.*OnChange)(change);
  }
  template <class Owner>
  static void runCatchUp(Sm& owner) noexcept {
    if constexpr (!std::is_null_pointer_v<decltype(CatchUp)>) {
      Dovel::Ptr<Sm> const alive(&owner);
      (static_cast<Owner&>(owner).*CatchUp)();
    }
  }

  void subscribedIs(bool wanted) {
    if (!object_ || wanted == this->subscribed()) return;
    if (wanted) {
      object_->publisher()->subscriberAdd(*this);
    } else {
      object_->publisher()->subscriberRemove(*this);
    }
  }
  void partNotificationActiveIs(bool active) override { subscribedIs(active); }
  void partZombieIs(bool) override {}
  void partRelease() override { subscribedIs(false); }

  Dovel::Ptr<T> object_;
  void (*catchUp_)(Sm&) noexcept;
};

/// A nested reactor: a small object of its own that watches one object for a state machine.
///
/// A subclass keeps a pointer to its owner that is not counted, and overrides `onAttribute`.
class NotifieeConst : public Dovel::Node, private Dovel::Subscriber {
 public:
  Dovel::Ptr<Dovel::Node const> const& notifier() const { return notifier_; }
  /// Watches `notifier` in place of the former object, if this reactor is registered and active; null ends it.
  virtual void notifierIs(Dovel::Ptr<Dovel::Node const> const& notifier);
  /// Whether this reactor is subscribed while it is active and has a notifier.
  void isRegisteredNotifieeIs(bool registered);
  void hasNotificationActiveIs(bool active) override;

 protected:
  /// Watches nothing, and is not registered.
  explicit NotifieeConst(Dovel::AttributeSet interest = Dovel::kAllAttributes);
  /// Watches `notifier`, registered from the start. REQUIRES: not null.
  explicit NotifieeConst(Dovel::Ptr<Dovel::Node const> notifier, Dovel::AttributeSet interest = Dovel::kAllAttributes);
  ~NotifieeConst() override;
  /// Called for each change of an attribute of `interest`, and possibly of others, unless the reactor is a zombie.
  virtual void onAttribute(Dovel::Change const& change) = 0;

 private:
  static void dispatch(Dovel::Subscriber& subscriber, Dovel::Change const& change);
  void subscribe();
  void unsubscribe();

  Dovel::Ptr<Dovel::Node const> notifier_;
  bool registered_ = false;
};

/// The nested reactors of a state machine, by the key of what they watch.
///
/// `Nested` is a `NotifieeConst` with `key()` and `ownerClear()`. A reactor that is removed or replaced here, or whose
/// owner is deleted, handles nothing any more and has no pointer to the owner, even while others hold it.
template <class Key, class Nested>
class NestedSms final : private SmPart {
 public:
  using Map = EntityMap<Key, Nested, &Nested::key>;

  explicit NestedSms(Sm& owner) : SmPart(owner) {}
  ~NestedSms() override { delAll(); }

  Map const& all() const { return map_; }
  Dovel::Ptr<Nested> const& at(Key const& key) const { return map_.at(key); }
  /// The reactor is active, and a zombie, as the owner is.
  void add(Dovel::Ptr<Nested> const& nested) {
    adopt(*nested);
    auto const former = map_.assign(nested);
    if (former && former != nested) end(*former);
  }
  /// The reactor of `key`, otherwise the one that `make()` returns, which is added; true if it was made. REQUIRES:
  /// `make` adds and removes nothing here. The reference is valid until the next change.
  template <class Make>
  std::pair<Dovel::Ptr<Nested> const&, bool> findOrMake(Key const& key, Make const& make) {
    auto const found = map_.findOrMake(key, make);
    if (found.second) adopt(*found.first);
    return found;
  }
  /// The removed reactor of `key`; null if there was none.
  Dovel::Ptr<Nested> del(Key const& key) {
    auto const nested = map_.take(key);
    if (nested) end(*nested);
    return nested;
  }
  void delAll() {
    for (auto const& key : keysOf(map_)) del(key);
  }

 private:
  void adopt(Nested& nested) {
    if (!owner_.hasNotificationActive()) nested.hasNotificationActiveIs(false);
    if (owner_.isZombie()) nested.kilnDoZombieReactors(true);
  }
  static void end(Nested& nested) {
    nested.kilnDoZombieReactors(true);
    nested.ownerClear();
    nested.hasNotificationActiveIs(false);
  }
  void partNotificationActiveIs(bool active) override {
    forEachKey(map_, [active](Key const&, auto const& nested) { nested->hasNotificationActiveIs(active); });
  }
  void partZombieIs(bool zombie) override {
    forEachKey(map_, [zombie](Key const&, auto const& nested) { nested->kilnDoZombieReactors(zombie); });
  }
  void partRelease() override { delAll(); }

  Map map_;
};

}  // namespace Kiln
