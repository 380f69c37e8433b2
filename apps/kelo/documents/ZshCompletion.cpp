#include "documents/Completion.hpp"

namespace KeloHost {

namespace {

std::string zshEscaped(const std::string& text, char special) {
    std::string escaped;
    for (const char c : text) {
        escaped += (c == special || c == '\\' ? "\\" : "") + std::string(1, c);
    }
    return escaped;
}

/// ":NAME:ACTION", what stands for a value and how it is completed.
std::string zshValue(const std::string& name, const Parameter& parameter, const Command& kelo) {
    const std::string choices = choicesOf(parameter, kelo);
    return ":" + zshEscaped(name, ':') + ":" +
           (parameter.form == Parameter::Form::File        ? "_files"
            : parameter.form == Parameter::Form::Directory ? "_files -/"
            : choices.empty()                              ? " "
                                                           : "(" + choices + ")");
}

/// What `_arguments` takes for the parameters of a command.
std::string zshSpecs(const Command& command, const Command& kelo) {
    std::string specs;
    const auto add = [&](const std::string& spec) { specs += " \\\n        " + quotedWord(spec); };
    for (const Parameter& option : parametersOf(command, true)) {
        const std::string text = "[" + zshEscaped(option.help, ']') + "]";
        add(option.takesValue()
                ? option.name + "=" + text + zshValue(option.valueName, option, kelo)
                : option.name + text);
        if (!option.shortName.empty()) {
            add(option.shortName + text);
        }
    }
    int number = 0;
    for (const Parameter& place : parametersOf(command, false)) {
        ++number;
        const std::string value = zshValue(place.name, place, kelo);
        add(place.isList() ? "*" + value
                           : std::to_string(number) + (place.isOptional ? ":" : "") + value);
    }
    return specs;
}

/// The function that completes behind the command; those of its commands that have some themselves
/// are other functions.
std::string zshFunction(const CommandPath& path) {
    const Command& kelo = *path.front();
    std::string names;
    std::string cases;
    for (const Command& one : path.back()->commands) {
        if (one.group.empty()) {
            continue;
        }
        names += "        " + quotedWord(one.name + ":" + one.help) + "\n";
        cases += "    (" + one.name + ") " +
                 (!one.commands.empty() ? "_kelo_" + one.name
                  : one.takesTheRest    ? "_message arguments"
                                        : "_arguments $_kelo_common" + zshSpecs(one, kelo)) +
                 " ;;\n";
    }
    return (path.size() == 1 ? "_kelo" : "_kelo_" + path.back()->name) +
           "() {\n"
           "    local curcontext=$curcontext state line\n"
           "    local -a names=(\n" +
           names +
           "    )\n"
           "    _arguments -C $_kelo_common '1:command:->command' '*::argument:->argument'\n"
           "    case $state in\n"
           "    (command) _describe command names; return ;;\n"
           "    (argument) ;;\n"
           "    (*) return ;;\n"
           "    esac\n"
           "    case $line[1] in\n" +
           cases + "    esac\n}\n";
}

} // namespace

std::string zshCompletion(const Command& kelo) {
    std::string functions;
    for (const CommandPath& path : allPaths(kelo)) {
        functions += path.back()->commands.empty() ? "" : zshFunction(path);
    }
    return "#compdef kelo\n# Completion of kelo for zsh.\ntypeset -ga _kelo_common=(" +
           zshSpecs({.name = "", .help = "", .parameters = kelo.parameters}, kelo) + ")\n" +
           functions + "_kelo \"$@\"\n";
}

} // namespace KeloHost
