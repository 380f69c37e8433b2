#pragma once

#include "documents/Documents.hpp"
#include "Help.hpp"

#include <string>
#include <vector>

// What the scripts of the shells have in common.
namespace KeloHost {

/// All commands that texts mention, kelo itself first.
std::vector<CommandPath> allPaths(const Command& kelo);
/// How a script reads a command line: word by word, each behind the command so far.
struct WordPatterns {
    /// "kelo timeline": a word that is a command, too, from here on.
    std::vector<std::string> commands;
    /// "kelo timeline --pages", "* --host": an option whose value is the next word. "*" stands for
    /// any command.
    std::vector<std::string> valueOptions;
};
WordPatterns wordPatterns(const Command& kelo);
/// "kelo timeline --pages", "* --host".
std::string optionPattern(const CommandPath& path, const Parameter& option);

/// Those of a command's parameters that are options, or those that are not.
std::vector<Parameter> parametersOf(const Command& command, bool options);
/// The names of a command's own commands, with blanks between them.
std::string commandNames(const Command& command);
/// The words that may stand for a value, of those that kelo knows; with blanks between them.
std::string choicesOf(const Parameter& parameter, const Command& kelo);
/// The names of a command's options.
std::vector<std::string> optionNames(const Command& command);
/// A text as one word of a shell.
std::string quotedWord(const std::string& text);

} // namespace KeloHost
