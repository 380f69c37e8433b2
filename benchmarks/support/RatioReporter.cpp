#include "benchmarks/support/RatioReporter.hpp"

#include <algorithm>
#include <iterator>

namespace KeloBenchmark {

namespace {

/// Prints the ratio's line; false when it is short of its bound.
bool judge(const Ratio& ratio, double value) {
    if (!ratio.bound) {
        std::printf("ladder %s %.2f\n", ratio.name.c_str(), value);
        return true;
    }
    const bool holds = value >= *ratio.bound;
    std::printf("ratio %s %.2f %.2f %s\n", ratio.name.c_str(), value, *ratio.bound,
                holds ? "ok" : "SHORT");
    return holds;
}

} // namespace

void MedianReporter::ReportRuns(const std::vector<Run>& runs) {
    std::vector<Run> shown;
    std::copy_if(runs.begin(), runs.end(), std::back_inserter(shown), [](const Run& run) {
        return run.error_occurred || run.repetitions <= 1 || run.aggregate_name == "median";
    });
    for (const Run& run : shown) {
        if (!run.error_occurred) {
            _medians[run.run_name.str()] = run.GetAdjustedCPUTime();
        }
    }
    ConsoleReporter::ReportRuns(shown);
}

std::optional<double> MedianReporter::median(const std::string& benchmark) const {
    const auto found = _medians.find(benchmark);
    return found == _medians.end() ? std::nullopt : std::optional(found->second);
}

int runWithRatios(int argc, char** argv, const std::vector<Ratio>& ratios) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    bool allHold = true;
    for (const Ratio& ratio : ratios) {
        const auto subject = reporter.median(ratio.subject);
        const auto peer = reporter.median(ratio.peer);
        if (subject && peer) {
            allHold = judge(ratio, *peer / *subject) && allHold;
        }
    }
    return allHold ? 0 : 1;
}

} // namespace KeloBenchmark
