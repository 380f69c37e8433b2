#pragma once

#include "Command.hpp"
#include "CommandLine.hpp"

namespace KeloHost {

/// The options that every command has.
std::vector<Parameter> commonParameters();
/// What they were given.
Options commonOptions(const Arguments& arguments);

} // namespace KeloHost
