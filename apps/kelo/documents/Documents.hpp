#pragma once

#include "Command.hpp"

#include <string>

// What is installed beside kelo, made of the same description as the help texts. `kelo generate`
// prints them.
namespace KeloHost {

/// One page for all commands, so that a search in it finds every option.
std::string manPage(const Command& kelo);

// Scripts by which a shell completes command lines.
std::string bashCompletion(const Command& kelo);
std::string zshCompletion(const Command& kelo);
std::string fishCompletion(const Command& kelo);

} // namespace KeloHost
