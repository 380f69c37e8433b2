#include "documents/Completion.hpp"

namespace KeloHost {

namespace {

/// The cases of the script. They are tried on the command and what is behind it: the word before,
/// or the number of places that are filled.
struct BashCases {
    std::string values;
    std::string places;
    std::string options;
};

/// A pattern in which only a "*" is more than the text itself.
std::string bashPattern(const std::string& pattern) {
    const std::size_t star = pattern.find('*');
    if (star == std::string::npos) {
        return quotedWord(pattern);
    }
    return quotedWord(pattern.substr(0, star)) + "*" + quotedWord(pattern.substr(star + 1));
}

std::string bashPatterns(const std::vector<std::string>& patterns) {
    std::string written;
    for (const std::string& pattern : patterns) {
        written += (written.empty() ? "" : " | ") + bashPattern(pattern);
    }
    return written;
}

std::string bashCase(const std::string& pattern, const std::string& action) {
    return action.empty() ? "" : "        " + bashPattern(pattern) + ") " + action + " ;;\n";
}

/// How a value is completed; nothing where kelo does not know any.
std::string bashValue(const Parameter& parameter, const Command& kelo) {
    const std::string choices = choicesOf(parameter, kelo);
    return parameter.form == Parameter::Form::File        ? "files=-f"
           : parameter.form == Parameter::Form::Directory ? "files=-d"
           : choices.empty()                              ? ""
                                                          : "words=" + quotedWord(choices);
}

void addCases(BashCases& cases, const CommandPath& path) {
    const Command& command = *path.back();
    const std::string name = nameOf(path);
    for (const Parameter& option : parametersOf(command, true)) {
        if (option.takesValue()) {
            cases.values += bashCase(optionPattern(path, option), bashValue(option, *path.front()));
        }
    }
    const auto names = optionNames(command);
    if (path.size() > 1 && !names.empty()) {
        cases.options += bashCase(name, "words=" + quotedWord(joined(names, " ")));
    }
    if (!command.commands.empty()) {
        cases.places += bashCase(name + " 0", "words=" + quotedWord(commandNames(command)));
    }
    if (command.takesTheRest) {
        cases.values += bashCase(name + " *", "return");
    }
    int number = 0;
    for (const Parameter& place : parametersOf(command, false)) {
        cases.places += bashCase(name + " " + (place.isList() ? "*" : std::to_string(number++)),
                                 bashValue(place, *path.front()));
    }
}

} // namespace

std::string bashCompletion(const Command& kelo) {
    BashCases cases;
    for (const CommandPath& path : allPaths(kelo)) {
        addCases(cases, path);
    }
    const WordPatterns patterns = wordPatterns(kelo);
    return R"(# Completion of kelo for bash.
_kelo() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    # bash takes --name=value for three words.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    local command=kelo place=0 words= files= i
    for ((i = 1; i < COMP_CWORD; i++)); do
        case "$command ${COMP_WORDS[i]}" in
        )" +
           bashPatterns(patterns.commands) +
           R"()
            command+=" ${COMP_WORDS[i]}" place=0 ;;
        )" +
           bashPatterns(patterns.valueOptions) +
           R"()
            [[ ${COMP_WORDS[i + 1]} == = ]] && ((i++))
            ((i++)) ;;
        *' -'*) ;;
        *) ((place++)) ;;
        esac
    done
    case "$command $before" in
)" + cases.values +
           "        # Of other values, kelo does not know any.\n        " +
           bashPatterns(patterns.valueOptions) + R"() return ;;
    *)
        if [[ $word == -* ]]; then
        case "$command" in
)" + cases.options +
           R"(        esac
        words+=' )" +
           joined(optionNames(kelo), " ") + R"('
        else
        case "$command $place" in
)" + cases.places +
           R"(        esac
        fi
        ;;
    esac
    if [[ $files ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen "$files" -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}
complete -F _kelo kelo
)";
}

} // namespace KeloHost
