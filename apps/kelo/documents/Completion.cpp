#include "documents/Completion.hpp"

#include <algorithm>
#include <iterator>

namespace KeloHost {

std::vector<CommandPath> allPaths(const Command& kelo) {
    const CommandPath start = {&kelo};
    std::vector<CommandPath> paths = {start};
    forEachCommand(start, [&](const CommandPath& path) { paths.push_back(path); });
    return paths;
}

WordPatterns wordPatterns(const Command& kelo) {
    WordPatterns patterns;
    for (const CommandPath& path : allPaths(kelo)) {
        if (path.size() > 1) {
            patterns.commands.push_back(nameOf(path));
        }
        for (const Parameter& option : parametersOf(*path.back(), true)) {
            if (option.takesValue()) {
                patterns.valueOptions.push_back(optionPattern(path, option));
            }
        }
    }
    return patterns;
}

std::string optionPattern(const CommandPath& path, const Parameter& option) {
    return (path.size() == 1 ? "*" : nameOf(path)) + " " + option.name;
}

std::vector<std::string> optionNames(const Command& command) {
    std::vector<std::string> names;
    for (const Parameter& option : parametersOf(command, true)) {
        names.push_back(option.name);
        if (!option.shortName.empty()) {
            names.push_back(option.shortName);
        }
    }
    return names;
}

std::vector<Parameter> parametersOf(const Command& command, bool options) {
    std::vector<Parameter> some;
    std::copy_if(command.parameters.begin(), command.parameters.end(), std::back_inserter(some),
                 [&](const Parameter& parameter) { return parameter.isOption() == options; });
    return some;
}

std::string commandNames(const Command& command) {
    std::vector<std::string> names;
    for (const Command& one : command.commands) {
        if (!one.group.empty()) {
            names.push_back(one.name);
        }
    }
    return joined(names, " ");
}

std::string choicesOf(const Parameter& parameter, const Command& kelo) {
    return parameter.form == Parameter::Form::CommandName ? commandNames(kelo)
                                                          : joined(parameter.choices, " ");
}

std::string quotedWord(const std::string& text) {
    std::string word = "'";
    for (const char c : text) {
        word += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return word + "'";
}

} // namespace KeloHost
