#pragma once

#include <functional>
#include <utility>

#include "platform/dovel/Publisher.h"

namespace Support {

/// Calls back for each change of a node, on the writer's stack, until one of the two ends. The call may end the watch.
class Watch final : public Dovel::Subscriber {
 public:
  using Heard = std::function<void(Dovel::Change const&)>;

  Watch(Dovel::Node const& node, Heard heard)
      : Subscriber([](Subscriber& self, Dovel::Change const& change) {
          auto const call = static_cast<Watch&>(self).heard_;
          call(change);
        }),
        publisher_(*node.publisher()),
        heard_(std::move(heard)) {
    publisher_.subscriberAdd(*this);
  }
  ~Watch() {
    if (subscribed()) publisher_.subscriberRemove(*this);
  }

 private:
  Dovel::Publisher& publisher_;
  Heard heard_;
};

}  // namespace Support
