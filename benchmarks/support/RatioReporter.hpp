#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace KeloBenchmark {

/// How fast `subject` is measured by `peer`: the peer's time over the subject's.
struct Ratio {
    std::string name;
    std::string subject;
    std::string peer;
    /// The least the ratio may be; absent for a rung of a ladder, which is only shown.
    std::optional<double> bound = {};
};

/// Prints what Google Benchmark prints, for the medians alone, and keeps them.
class MedianReporter final : public benchmark::ConsoleReporter {
public:
    MedianReporter()
        : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override;

    /// Median processor time of a benchmark, in its own unit; absent when it did not run.
    std::optional<double> median(const std::string& benchmark) const;

private:
    std::map<std::string, double> _medians;
};

/// Runs the registered benchmarks, then prints one line for each ratio whose two sides ran:
/// "ratio NAME VALUE BOUND ok", or "SHORT" for the last word; without a bound "ladder NAME VALUE".
/// Returns the exit code of `main`:
/// 1 when a ratio is short, 2 when the arguments are not understood.
int runWithRatios(int argc, char** argv, const std::vector<Ratio>& ratios);

} // namespace KeloBenchmark
