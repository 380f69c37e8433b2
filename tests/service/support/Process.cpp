#include "support/Process.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace KeloServiceTest {
namespace {

std::string readToEnd(int descriptor) {
    std::string text;
    for (char next = 0; ::read(descriptor, &next, 1) == 1;) {
        text += next;
    }
    return text;
}

} // namespace

Process::Process(const std::vector<std::string>& arguments, const std::string& program) {
    int output[2];
    int errors[2];
    if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipes");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    std::string binary = program.empty() ? KELO_SERVICE_BINARY : program;
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers{binary.data()};
    for (std::string& argument : copies) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    const int failed =
        posix_spawn(&id_, binary.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    ::close(errors[1]);
    output_ = output[0];
    errors_ = errors[0];
    if (failed != 0) {
        throw std::runtime_error("cannot start " + binary);
    }
}

Process::~Process() {
    if (id_ > 0) {
        ::kill(id_, SIGKILL);
        ::waitpid(id_, nullptr, 0);
    }
    ::close(output_);
    ::close(errors_);
}

std::string Process::readLine() {
    std::string line;
    pollfd watched{output_, POLLIN, 0};
    char next = 0;
    while (::poll(&watched, 1, 10000) == 1 && ::read(output_, &next, 1) == 1) {
        line += next;
        if (next == '\n') {
            break;
        }
    }
    return line;
}

void Process::signal(int number) const {
    ::kill(id_, number);
}

Process::Outcome Process::wait() {
    Outcome outcome;
    outcome.output = readToEnd(output_);
    outcome.errors = readToEnd(errors_);
    int status = 0;
    ::waitpid(id_, &status, 0);
    id_ = -1;
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return outcome;
}

} // namespace KeloServiceTest
