// Benchmarks come in pairs named "<case>/ours" and "<case>/peer" (or
// "<case>/baseline"). This console reporter prints the usual lines and, at the
// end, one line per case with our time divided by the peer's (below 1: ours is
// faster) and our throughput where the case counts bytes; with
// --benchmark_repetitions, of the medians.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

class BaselineRatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            // With repetitions, the median stands for the case (it comes after
            // the repetitions and replaces them).
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.error_occurred || (run.run_type != Run::RT_Iteration && !median)) {
                continue;
            }
            std::string name = run.run_name.str();
            // A fixed iteration count shows as a last "/iterations:N" part.
            if (const size_t fixed = name.rfind("/iterations:"); fixed != std::string::npos) {
                name.erase(fixed);
            }
            const size_t slash = name.rfind('/');
            if (slash == std::string::npos) {
                continue;
            }
            Pair& pair = pairs_[name.substr(0, slash)];
            const std::string side = name.substr(slash + 1);
            if (side == "ours") {
                pair.ours = run.GetAdjustedRealTime();
                const auto bytes = run.counters.find("bytes_per_second");
                pair.oursBytesPerSecond = bytes == run.counters.end() ? 0 : bytes->second.value;
            } else if (side == "peer" || side == "baseline") {
                pair.baseline = run.GetAdjustedRealTime();
            }
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-52s %10s %12s\n", "case", "ours/peer", "ours GB/s");
        for (const auto& [name, pair] : pairs_) {
            if (pair.ours <= 0 || pair.baseline <= 0) {
                continue;
            }
            std::printf("%-52s %9.2fx", name.c_str(), pair.ours / pair.baseline);
            if (pair.oursBytesPerSecond > 0) {
                std::printf(" %12.2f", pair.oursBytesPerSecond / 1e9);
            }
            std::printf("\n");
        }
    }

private:
    struct Pair {
        double ours = 0;
        double baseline = 0;
        double oursBytesPerSecond = 0;
    };
    std::map<std::string, Pair> pairs_;
};

// The body of a benchmark program's main(): runs the selected benchmarks and
// ends with the table of ratios.
inline int runWithBaselineRatios(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    BaselineRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
