#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace KeloBenchmark {

/// Which time of a benchmark counts: the processor's, or the clock's on the wall.
enum class Clock { Processor, Wall };

/// How fast `subject` is measured by `peer`: the peer's time over the subject's.
struct Ratio {
    std::string name;
    std::string subject;
    /// Another benchmark, or a time limit in seconds such as "0.1 s".
    std::string peer;
    /// The least the ratio may be; absent for a rung of a ladder, which is only shown.
    std::optional<double> bound = {};
    Clock clock = Clock::Processor;
};

/// Prints what Google Benchmark prints, for the medians alone, and keeps them.
class MedianReporter final : public benchmark::ConsoleReporter {
public:
    MedianReporter()
        : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override;

    /// Median time of a benchmark in seconds; absent when it did not run.
    std::optional<double> median(const std::string& benchmark, Clock clock) const;

private:
    struct Median {
        double processor = 0;
        double wall = 0;
    };
    std::map<std::string, Median> _medians;
};

/// Runs the registered benchmarks, then prints one line for each ratio whose two sides ran:
/// "ratio NAME VALUE BOUND ok", or "SHORT" for the last word; without a bound "ladder NAME VALUE".
/// Returns the exit code of `main`:
/// 1 when a ratio is short, 2 when the arguments are not understood.
int runWithRatios(int argc, char** argv, const std::vector<Ratio>& ratios);

} // namespace KeloBenchmark
