#pragma once

#include <benchmark/benchmark.h>

#include <string>

namespace KeloBenchmark {

/// What a program that was run to its end took.
struct Spent {
    bool succeeded = false;
    double processorSeconds = 0;
};

/// Runs a command of the shell; its output goes nowhere.
Spent run(const std::string& command);

/// The processor's time that this process has taken, all threads together.
double processorSeconds();

/// The most memory that this process holds at once, from the object's making on.
class PeakMemory {
public:
    PeakMemory();
    long kilobytes() const;
};

/// Shows processor time per iteration, of whichever process, as the counter "cpu_s".
void reportProcessor(benchmark::State& state, double seconds);

} // namespace KeloBenchmark
