#include "platform/kiln/Exceptions.h"

namespace Kiln {

void throwRangeException(char const* text) { throw RangeException(text); }

void throwMutatorArgNullPointerException(char const* what) {
  throw NullPointerException(std::string(what) + ": the argument is null");
}

void Impl::throwMutatorReinstantiating(char const* what) {
  throw ReinstantiationException(std::string(what) + ": is instantiated already");
}

}  // namespace Kiln
