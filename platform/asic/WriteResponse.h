#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include "platform/asic/Index.h"
#include "platform/scree/Slab.h"

namespace Asic {

/// What is to be done when the chip has answered a write; default-constructed it holds nothing.
///
/// A pointer to a callable in the slab that its copies share: copying an entry copies a word. It runs once per state: a
/// call with a state that it has run for does nothing, so that who ran it at once with the state in the handle is not
/// called again by the loop with the same. Make a new one for each write. Main thread only.
class WriteResponseFn {
 public:
  WriteResponseFn() noexcept = default;
  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, WriteResponseFn> && std::is_invocable_v<F const&, EntryState>)
      WriteResponseFn(F&& callable)
      : body_(new Callable<std::remove_cvref_t<F>>(std::forward<F>(callable))) {}
  WriteResponseFn(WriteResponseFn const& other) noexcept : body_(other.body_) {
    if (body_) ++body_->uses;
  }
  WriteResponseFn(WriteResponseFn&& other) noexcept : body_(std::exchange(other.body_, nullptr)) {}
  ~WriteResponseFn() {
    if (body_ && --body_->uses == 0) body_->destroy(body_);
  }
  WriteResponseFn& operator=(WriteResponseFn other) noexcept {
    std::swap(body_, other.body_);
    return *this;
  }

  explicit operator bool() const noexcept { return body_ != nullptr; }

  /// Runs the callable unless it has run for `state`. Nothing happens where there is none.
  void operator()(EntryState state) const {
    auto const bit = static_cast<std::uint32_t>(1U << static_cast<unsigned>(state));
    if (!body_ || (body_->ran & bit)) return;
    body_->ran |= bit;
    auto const alive = *this;
    alive.body_->call(alive.body_, state);
  }

 private:
  struct Body {
    void (*call)(Body*, EntryState);
    void (*destroy)(Body*);
    std::uint32_t uses = 1;
    std::uint32_t ran = 0;  ///< A bit per state.
  };

  template <class F>
  struct Callable final : Body, Scree::SlabAllocated {
    template <class G>
    explicit Callable(G&& callable)
        : Body{[](Body* body, EntryState state) { static_cast<Callable*>(body)->function(state); },
               [](Body* body) { delete static_cast<Callable*>(body); }},
          function(std::forward<G>(callable)) {}
    F const function;
  };

  Body* body_ = nullptr;
};

}  // namespace Asic
