#include "Process.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace KeloAPI::testing {

Process::Process(std::vector<std::string> command) {
    int output[2];
    if (::pipe2(output, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for " + command.front());
    }
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    const int failure =
        posix_spawn(&_id, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    _output = output[0];
    if (failure != 0) {
        ::close(_output);
        throw std::runtime_error("cannot start " + command.front());
    }
}

Process::~Process() {
    if (_id > 0) {
        signal(SIGTERM);
        ::waitpid(_id, nullptr, 0);
    }
    ::close(_output);
}

std::string Process::readLine() const {
    std::string line;
    char next = 0;
    while (::read(_output, &next, 1) == 1 && next != '\n') {
        line += next;
    }
    return line;
}

void Process::signal(int number) const {
    ::kill(_id, number);
}

bool Process::hasEnded() const {
    siginfo_t ended{};
    ::waitid(P_PID, static_cast<id_t>(_id), &ended, WEXITED | WNOHANG | WNOWAIT);
    return ended.si_pid != 0;
}

int Process::wait(std::chrono::milliseconds limit) {
    pollfd end{static_cast<int>(::syscall(SYS_pidfd_open, _id, 0)), POLLIN, 0};
    const bool ended = ::poll(&end, 1, static_cast<int>(limit.count())) == 1;
    ::close(end.fd);
    if (!ended) {
        return stillRunning;
    }
    int status = 0;
    ::waitpid(_id, &status, 0);
    _id = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

} // namespace KeloAPI::testing
