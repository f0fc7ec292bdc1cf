#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/import/Choices.h"
#include "platform/document/Document.h"

namespace Host {

/// What the reports of `run` say of their form, as member "format".
inline constexpr std::string_view kReportFormat = "tessel-report/1";

/// Reads state documents and directories of captures, in order; a directory replaces the files that it has in common
/// with those before it, "-" is a document on standard input, and a report that was printed with its state is the
/// document that it shows. Without any, returns the built-in leaf. Each document is the state of the switch from then
/// on. `choices` are about captures. Throws `InputError` for the first that can't be read.
std::vector<Stateway::StateDocument> readInputs(std::vector<std::string> const& paths, Choices& choices);

}  // namespace Host
