#include "benchmarks/support/Process.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

namespace KeloBenchmark {

namespace {

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double processorSecondsOf(const rusage& usage) {
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

} // namespace

Spent run(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    Spent spent;
    if (posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) == 0) {
        int status = 0;
        rusage usage{};
        wait4(process, &status, 0, &usage);
        spent.succeeded = status == 0;
        spent.processorSeconds = processorSecondsOf(usage);
    }
    posix_spawn_file_actions_destroy(&actions);
    return spent;
}

double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return processorSecondsOf(usage);
}

PeakMemory::PeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

long PeakMemory::kilobytes() const {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:")) {
            return std::stol(line.substr(line.find_first_of("0123456789")));
        }
    }
    return 0;
}

void reportProcessor(benchmark::State& state, double seconds) {
    state.counters["cpu_s"] = benchmark::Counter(seconds, benchmark::Counter::kAvgIterations);
}

} // namespace KeloBenchmark
