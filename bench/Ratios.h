// SPDX-License-Identifier: Apache-2.0
// Ratios between the benchmarks of one run.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// A ratio to print: how many times the time of `slow` is that of `fast`, and what is wanted of it.
struct Ratio {
    std::string text;
    std::string slow, fast; ///< names of benchmarks
    std::string wanted;     ///< "at least 300", for the reader
};

/// Prints the usual table and keeps the median real time of each benchmark.
class MedianReporter : public benchmark::ConsoleReporter {
public:
    MedianReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.aggregate_name == "median") medians[nameOf(run)] = run.GetAdjustedRealTime();
    }

    /// Prints each ratio whose two benchmarks ran.
    void print(const std::vector<Ratio>& ratios) const {
        for (const Ratio& ratio : ratios) {
            const auto slow = medians.find(ratio.slow), fast = medians.find(ratio.fast);
            if (slow == medians.end() || fast == medians.end()) continue;
            std::printf("%-60s %8.2f   (%s)\n", ratio.text.c_str(), slow->second / fast->second,
                        ratio.wanted.c_str());
        }
    }

private:
    /// "function" or "function/argument/argument".
    static std::string nameOf(const Run& run) {
        return run.run_name.args.empty() ? run.run_name.function_name
                                         : run.run_name.function_name + "/" + run.run_name.args;
    }

    std::map<std::string, double> medians;
};

/// Runs all registered benchmarks and prints the ratios of their medians.
inline int run(int argc, char** argv, const std::vector<Ratio>& ratios) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print(ratios);
    return 0;
}

} // namespace bench
