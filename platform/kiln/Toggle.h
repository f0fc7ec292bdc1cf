#pragma once

#include <optional>
#include <string_view>

/// A named switch of the feature: member `toggleName` of the JSON object in `fileName`, a file in the directory that
/// the environment variable TESSEL_TOGGLE_DIR names.
///
/// `byDefault` if the variable, the file or the member is absent. A file that cannot be read as an object, or a member
/// that is not true or false, gives the default too, with a line on standard error. Reads the file at each call:
/// callers keep the value in a function-local static, so that a switch holds for the life of the process.
bool getToggleState(char const* fileName, char const* toggleName, bool byDefault);

namespace Kiln {

/// Gives a switch a value that goes before every file; nothing takes it away again. Works on reads that come after it.
void toggleOverrideIs(std::string_view toggleName, std::optional<bool> state);

}  // namespace Kiln
