#include "commands/Commands.hpp"

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

} // namespace

void serve(const HostPointer& /*host*/, const Arguments& arguments) {
    // This program becomes the service; the arguments are its own.
    std::vector<std::string> texts = arguments.texts("rest");
    texts.insert(texts.begin(), program);
    std::vector<char*> words;
    for (std::string& text : texts) {
        words.push_back(text.data());
    }
    words.push_back(nullptr);
    execv(besideThisProgram().c_str(), words.data());
    execvp(program, words.data());
    throw Failure(ExitCode::Failed, "kelo-service is neither beside kelo nor in PATH");
}

} // namespace KeloHost
