#include "benchmarks/support/RatioReporter.hpp"

#include <algorithm>
#include <iterator>

namespace KeloBenchmark {

namespace {

/// The limit that a text such as "0.1 s" names.
std::optional<double> seconds(const std::string& text) {
    if (!text.ends_with(" s")) {
        return std::nullopt;
    }
    return std::stod(text);
}

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
            const double unit = benchmark::GetTimeUnitMultiplier(run.time_unit);
            _medians[run.run_name.str()] = {run.GetAdjustedCPUTime() / unit,
                                            run.GetAdjustedRealTime() / unit};
        }
    }
    ConsoleReporter::ReportRuns(shown);
}

std::optional<double> MedianReporter::median(const std::string& benchmark, Clock clock) const {
    const auto found = _medians.find(benchmark);
    if (found == _medians.end()) {
        return std::nullopt;
    }
    return clock == Clock::Wall ? found->second.wall : found->second.processor;
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
        const auto subject = reporter.median(ratio.subject, ratio.clock);
        const auto limit = seconds(ratio.peer);
        const auto peer = limit ? limit : reporter.median(ratio.peer, ratio.clock);
        if (subject && peer) {
            allHold = judge(ratio, *peer / *subject) && allHold;
        }
    }
    return allHold ? 0 : 1;
}

} // namespace KeloBenchmark
