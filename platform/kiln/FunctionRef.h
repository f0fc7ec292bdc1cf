#pragma once

#include <type_traits>
#include <utility>

namespace Kiln {

/// A callable handed down for the time of one call; it owns and copies nothing.
template <class Signature>
class FunctionRef;

template <class Result, class... Args>
class FunctionRef<Result(Args...)> {
 public:
  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, FunctionRef>) FunctionRef(F&& f)
      : object_(const_cast<void*>(static_cast<void const*>(&f))), call_([](void* object, Args... args) -> Result {
          return (*static_cast<std::remove_reference_t<F>*>(object))(std::forward<Args>(args)...);
        }) {}
  Result operator()(Args... args) const { return call_(object_, std::forward<Args>(args)...); }

 private:
  void* object_;
  Result (*call_)(void*, Args...);
};

}  // namespace Kiln
