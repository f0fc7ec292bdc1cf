#pragma once

#include <string>

#include "platform/meshal/IpGenAddr.h"

namespace Host {

/// What the command line names. Each throws `InputError` for a text that can't be it.
Meshal::IpGenAddr vtepOperand(std::string const& text);
/// `name` names the operand in the error.
std::uint32_t numberOperand(char const* name, std::string const& text, std::uint32_t min, std::uint32_t max);

}  // namespace Host
