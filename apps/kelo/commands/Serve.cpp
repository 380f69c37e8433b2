#include "commands/Commands.hpp"
#include "Failure.hpp"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <filesystem>

namespace KeloHost {

namespace {

constexpr const char* program = "kelo-service";

std::string besideThisProgram() {
    std::error_code error;
    return (std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / program)
        .string();
}

/// Becomes the service; the arguments are its own.
[[noreturn]] void serve(std::vector<std::string>& arguments) {
    std::string name = program;
    std::vector<char*> words = {name.data()};
    for (std::string& argument : arguments) {
        words.push_back(argument.data());
    }
    words.push_back(nullptr);
    execv(besideThisProgram().c_str(), words.data());
    execvp(program, words.data());
    throw Failure(ExitCode::Failed, "kelo-service is neither beside kelo nor in PATH");
}

} // namespace

Command addServe(CLI::App& app) {
    auto* command = app.add_subcommand(
        "serve", "Run kelo-service, the local stand-in of the service, with the arguments given");
    // Whatever follows, --help included, is for kelo-service.
    command->fallthrough(false);
    command->set_help_flag();
    command->prefix_command();
    const auto arguments = std::make_shared<std::vector<std::string>>();
    command->callback([command, arguments] { *arguments = command->remaining(); });
    return {command, [arguments](const std::shared_ptr<Host>&) { serve(*arguments); }};
}

} // namespace KeloHost
