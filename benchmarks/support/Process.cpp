#include "benchmarks/support/Process.hpp"

#include <sys/resource.h>

#include <cstdlib>
#include <fstream>

namespace KeloBenchmark {

namespace {

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double processorSecondsOf(int who) {
    rusage usage{};
    getrusage(who, &usage);
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

} // namespace

Spent run(const std::string& command) {
    const double before = processorSecondsOf(RUSAGE_CHILDREN);
    const bool succeeded = std::system((command + " >/dev/null").c_str()) == 0;
    return {succeeded, processorSecondsOf(RUSAGE_CHILDREN) - before};
}

double processorSeconds() {
    return processorSecondsOf(RUSAGE_SELF);
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
