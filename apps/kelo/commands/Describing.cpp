#include "commands/Commands.hpp"
#include "documents/Documents.hpp"
#include "Help.hpp"
#include "Slip.hpp"

#include <algorithm>

namespace KeloHost {

namespace {

std::string describeCommand(const Command& kelo, const Arguments& arguments) {
    CommandPath path = {&kelo};
    for (const std::string& word : arguments.texts("COMMAND")) {
        const auto& known = path.back()->commands;
        const auto found = std::find_if(known.begin(), known.end(), [&](const Command& command) {
            return command.name == word;
        });
        if (found == known.end()) {
            throw unknownCommand(path, word);
        }
        path.push_back(&*found);
    }
    return helpText(path);
}

std::string generateDocument(const Command& kelo, const Arguments& arguments) {
    const std::string form = arguments.text("FORM");
    return form == "man"    ? manPage(kelo)
           : form == "bash" ? bashCompletion(kelo)
           : form == "zsh"  ? zshCompletion(kelo)
                            : fishCompletion(kelo);
}

} // namespace

std::vector<Command> describingCommands() {
    return {{.name = "help",
             .help = "Tell how a command is used",
             .parameters = {{.name = "COMMAND",
                             .help = "The words that name it; kelo itself without any",
                             .form = Parameter::Form::CommandName,
                             .isOptional = true}},
             .describe = describeCommand},
            // For the build, which installs what it prints.
            {.name = "generate",
             .help = "Print the manual, or what a shell completes command lines with",
             .parameters = {{.name = "FORM",
                             .help = "man, bash, zsh or fish",
                             .choices = {"man", "bash", "zsh", "fish"}}},
             .group = "",
             .describe = generateDocument}};
}

} // namespace KeloHost
