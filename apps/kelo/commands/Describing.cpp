#include "commands/Commands.hpp"
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

} // namespace

std::vector<Command> describingCommands() {
    return {{.name = "help",
             .help = "Tell how a command is used",
             .parameters = {{.name = "COMMAND",
                             .help = "The words that name it; kelo itself without any",
                             .form = Parameter::Form::CommandName,
                             .isOptional = true}},
             .describe = describeCommand}};
}

} // namespace KeloHost
