#pragma once

#include <optional>
#include <string_view>

/// A named switch of the feature: member `toggleName` of the JSON object in `fileName`, a file in the directory that
/// the environment variable TESSEL_TOGGLE_DIR names.
///
/// `byDefault` if the variable, the file or the member is absent. A file that is not a JSON object, or a member that is
/// not true or false, results in the default too, with a line on standard error; an agent refuses such files before it
/// starts (`togglesCheck`). Reads the file at each call: callers keep the value in a function-local static, so that a
/// switch is constant for the life of the process.
bool getToggleState(char const* fileName, char const* toggleName, bool byDefault);

namespace Kiln {

/// Overrides a switch for all later reads, whatever the files say; nothing removes the override.
void toggleOverrideIs(std::string_view toggleName, std::optional<bool> state);

/// Throws `InputError` for the first toggle file (*.json in the directory above) that is not an object of true and
/// false.
void togglesCheck();

}  // namespace Kiln
