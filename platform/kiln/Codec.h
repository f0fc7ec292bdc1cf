#pragma once

#include <string>
#include <string_view>

namespace Kiln {

class JsonOut;
class JsonIn;

/// How values of one type go to and from documents and command lines, for code that knows the type only by its name.
///
/// Immutable, one per type, alive as long as the program. A `void*` is a `T*` of the type that `codecOf<T>` was asked
/// for.
struct ValueCodec {
  /// As in "Meshal::IpGenAddr", "u16", "bool".
  std::string_view typeName;
  void* (*make)(void const* from);  ///< A new value: a copy of `from`, the default if that is null.
  void (*drop)(void* value);
  void (*toJson)(void const* value, JsonOut& out);
  /// Throws `Kiln::InputError` and then leaves the value unchanged. Members that the document leaves out have defaults.
  void (*fromJson)(void* value, JsonIn const& in);
  /// Appends.
  void (*toText)(void const* value, std::string& out);
  /// False unless the whole of `text` is a value; the value is then unchanged. Null for types whose text cannot be
  /// parsed.
  bool (*fromText)(std::string_view text, void* value);
};

/// The codec of `T`. Defined for each type once, by `KILN_VALUE_CODEC` in a source file (platform/kiln/Json.h).
template <class T>
ValueCodec const& codecOf();

}  // namespace Kiln

/// Announces the codec of a type, in the type's header at global scope.
#define KILN_DECLARE_CODEC(...) \
  template <>                   \
  ::Kiln::ValueCodec const& Kiln::codecOf<__VA_ARGS__>()
