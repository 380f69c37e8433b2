#include "documents/Completion.hpp"

namespace KeloHost {

namespace {

std::string fishPatterns(const std::vector<std::string>& patterns) {
    std::string words;
    for (const std::string& pattern : patterns) {
        words += " " + quotedWord(pattern);
    }
    return words;
}

/// True behind the command, at `place` where that is given.
std::string fishCondition(const CommandPath& path, const std::string& place = "") {
    return " -n " + quotedWord("__kelo_at \"" + nameOf(path) + "\" " + place);
}

/// How an option's value is completed.
std::string fishValue(const Parameter& option, const Command& kelo) {
    const std::string choices = choicesOf(option, kelo);
    return !option.takesValue()                        ? ""
           : option.form == Parameter::Form::File      ? " -r -F"
           : option.form == Parameter::Form::Directory ? " -x -a '(__fish_complete_directories)'"
           : choices.empty()                           ? " -x"
                                                       : " -x -a " + quotedWord(choices);
}

/// A line for each thing that may stand behind the command.
std::string fishLines(const CommandPath& path) {
    const Command& kelo = *path.front();
    std::string lines;
    const auto add = [&](const std::string& what) { lines += "complete -c kelo" + what + "\n"; };
    for (const Command& one : path.back()->commands) {
        if (!one.group.empty()) {
            add(fishCondition(path, "0") + " -a " + one.name + " -d " + quotedWord(one.help));
        }
    }
    // Options of kelo itself may stand anywhere.
    const std::string condition = path.size() == 1 ? "" : fishCondition(path);
    for (const Parameter& option : parametersOf(*path.back(), true)) {
        add(condition + " -l " + option.name.substr(2) +
            (option.shortName.empty() ? "" : " -s " + option.shortName.substr(1)) +
            fishValue(option, kelo) + " -d " + quotedWord(option.help));
    }
    int number = 0;
    for (const Parameter& place : parametersOf(*path.back(), false)) {
        const std::string where =
            fishCondition(path, place.isList() ? "" : std::to_string(number++));
        const std::string choices = choicesOf(place, kelo);
        if (place.form == Parameter::Form::File) {
            add(where + " -F");
        } else if (!choices.empty()) {
            add(where + " -a " + quotedWord(choices));
        }
    }
    return lines;
}

} // namespace

std::string fishCompletion(const Command& kelo) {
    const WordPatterns patterns = wordPatterns(kelo);
    std::string text = R"(# Completion of kelo for fish.
function __kelo_at -d 'Whether the words are of this command, and fill so many of its places'
    set -l command kelo
    set -l place 0
    set -l isValue no
    for word in (commandline -opc)[2..]
        if test $isValue = yes
            set isValue no
            continue
        end
        switch "$command $word"
            case)" + fishPatterns(patterns.commands) +
                       R"(
                set command "$command $word"
                set place 0
            case)" + fishPatterns(patterns.valueOptions) +
                       R"(
                set isValue yes
            case '* -*'
            case '*'
                set place (math $place + 1)
        end
    end
    test "$command" = $argv[1]; and test (count $argv) = 1 -o $place = "$argv[2]"
end
complete -c kelo -f
)";
    for (const CommandPath& path : allPaths(kelo)) {
        text += fishLines(path);
    }
    return text;
}

} // namespace KeloHost
