#pragma once

#include "Failure.hpp"
#include "Help.hpp"

#include <string>
#include <vector>

// What kelo says to a command line that cannot be used: what is wrong, what may be meant, and how
// the command is used.
namespace KeloHost {

/// "; did you mean ...?" with the known word that is nearest; empty where none is near.
std::string didYouMean(const std::string& word, const std::vector<std::string>& known);
/// A command line that goes wrong at the path's last command.
Failure unusable(const CommandPath& path, const std::string& problem);
/// A word where the name of a command has to stand.
Failure unknownCommand(const CommandPath& path, const std::string& word);
/// A word that the command has no place for.
Failure unexpected(const CommandPath& path, const std::string& word);

} // namespace KeloHost
