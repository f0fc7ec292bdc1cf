#pragma once

#include <concepts>
#include <utility>

#include "platform/dovel/Ptr.h"

namespace Dovel {

/// Creates objects of a class from its constructor's arguments, which are listed at the constructor alone:
///
///   inline constexpr Dovel::Factory<UnderlayEcmpProgrammer> underlayEcmpProgrammerFactory;
template <class T>
struct Factory {
  template <class... Args>
  requires std::constructible_from<T, Args...> Ptr<T>
  operator()(Args&&... args) const { return make<T>(std::forward<Args>(args)...); }
};

}  // namespace Dovel
