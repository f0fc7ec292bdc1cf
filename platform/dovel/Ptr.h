#pragma once

#include <concepts>
#include <cstddef>
#include <utility>

namespace Dovel {

/// Owning pointer to a `Node`; null is allowed. `Ptr<T const>` is the read-only form.
///
/// Pointers to one object may live on several threads as `Node` says; one pointer object belongs to one thread.
template <class T>
class Ptr {
 public:
  using element_type = T;

  constexpr Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {}
  Ptr(T* object) noexcept : object_(object) { inc(); }
  Ptr(Ptr const& other) noexcept : object_(other.object_) { inc(); }
  Ptr(Ptr&& other) noexcept : object_(other.release()) {}
  template <class U>
  requires(!std::same_as<U, T> && std::convertible_to<U*, T*>) Ptr(Ptr<U> const& other)
  noexcept : object_(other.get()) { inc(); }
  template <class U>
  requires(!std::same_as<U, T> && std::convertible_to<U*, T*>) Ptr(Ptr<U>&& other)
  noexcept : object_(other.release()) {}
  constexpr ~Ptr() { dec(); }

  /// Takes over a reference that the caller holds.
  static Ptr adopt(T* object) noexcept {
    Ptr pointer;
    pointer.object_ = object;
    return pointer;
  }

  Ptr& operator=(Ptr const& other) noexcept {
    Ptr(other).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    Ptr(std::move(other)).swap(*this);
    return *this;
  }

  T* get() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  T* operator->() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  // By hand: every class would instantiate `std::swap` and `std::exchange` with their conditions.
  void swap(Ptr& other) noexcept {
    auto* const mine = object_;
    object_ = other.object_;
    other.object_ = mine;
  }
  /// Hands the reference over to the caller, who has to release it.
  T* release() noexcept {
    auto* const object = object_;
    object_ = nullptr;
    return object;
  }

  friend bool operator==(Ptr const& a, Ptr const& b) noexcept { return a.object_ == b.object_; }
  friend bool operator==(Ptr const& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

 private:
  void inc() const noexcept {
    if (object_) object_->useInc();
  }
  constexpr void dec() const noexcept {
    if (object_) object_->useDec();
  }

  T* object_ = nullptr;
};

/// Creates a `T`. Nodes are created by this function only: it takes over the creator's reference.
template <class T, class... Args>
Ptr<T> make(Args&&... args) {
  return Ptr<T>::adopt(new T(std::forward<Args>(args)...));
}

/// `pointer` as a `T`, null if its object is of another class.
template <class T, class U>
Ptr<T> cast(Ptr<U> const& pointer) {
  return Ptr<T>(dynamic_cast<T*>(pointer.get()));
}

}  // namespace Dovel
