#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiln/JsonIn.h"

// How the captures write what they have: arrays of objects with optional members. All throw Kiln::InputError for a
// value of another type. A member that is null counts as present: some producers write a flag that is set that way.

namespace Host::Import {

using Kiln::JsonDocument;
using Kiln::JsonIn;

/// The elements of an array of objects. Empty objects are left out: a filter leaves them in place of what it
/// suppressed.
std::vector<JsonIn> objects(JsonIn at);
inline bool has(JsonIn at, std::string_view key) { return at.find(key).has_value(); }
/// The member of that name; nothing where there is none.
std::optional<std::string> text(JsonIn at, std::string_view key);
/// The same for a word that numeric output prints as a number or as the text of one; nothing also where the member is
/// neither.
std::optional<std::string> word(JsonIn at, std::string_view key);
std::optional<std::uint32_t> number(JsonIn at, std::string_view key);
std::uint32_t numberIn(JsonIn at, std::uint32_t min, std::uint32_t max = std::numeric_limits<std::uint32_t>::max());
/// A number of 32 bits.
inline std::uint32_t number(JsonIn at) { return numberIn(at, 0); }
/// Whether the array of words under that name contains the word; false where the member is missing. Elements that are
/// no words are skipped.
bool hasFlag(JsonIn at, std::string_view key, std::string_view word);

}  // namespace Host::Import
