#pragma once

#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>

#include "platform/asic/Index.h"
#include "platform/scree/Slab.h"

namespace Asic {

/// When a writer's response is first called.
enum class Report : std::uint8_t {
  later,   ///< By the host's loop, with the final state.
  atOnce,  ///< Before the write returns, with the state in the handle. By the loop too, for states that come later.
};

/// What is to be done when the chip has completed a write; default-constructed it holds nothing.
///
/// A pointer to a callable in the slab that its copies share: copying an entry copies a word. A call with the state of
/// the last call does nothing: the loop does not repeat what was reported at once. Make a new one for each
/// write. Main thread only.
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

  /// Calls the callable unless the last call was with `state` too. Does nothing if there is none. REQUIRES: this object
  /// outlives the call.
  void operator()(EntryState state) const {
    if (!body_ || body_->last == state) return;
    body_->last = state;
    body_->call(body_, state);
  }

 private:
  struct Body {
    void (*call)(Body*, EntryState);
    void (*destroy)(Body*);
    std::uint32_t uses = 1;
    std::optional<EntryState> last = {};  ///< What it was called with.
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
