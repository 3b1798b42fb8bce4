#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace tavrolin::benchmarks {

/// One goal: `name` takes at most `goal` times what `baseline` takes in the same run.
struct Ratio {
    const char* name;
    const char* baseline;
    double goal;
};

/// Prints what Google Benchmark prints and keeps the processor time of every repetition.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                times_[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void print(const std::vector<Ratio>& ratios) {
        for (const auto& [name, baseline, goal] : ratios) {
            if (!times_.contains(name) || !times_.contains(baseline)) continue;  // filtered out
            std::printf("ratio %s %.3f (goal <= %.2f)\n", name, median(name) / median(baseline),
                        goal);
        }
    }

private:
    double median(const std::string& name) {
        std::vector<double>& times = times_[name];
        std::ranges::sort(times);
        return times[times.size() / 2];
    }

    std::map<std::string, std::vector<double>> times_;
};

/// Runs every benchmark of the program five times and prints the ratios of the medians.
inline int runWithRatios(int argc, char** argv, const std::vector<Ratio>& ratios) {
    std::vector<char*> arguments(argv, argv + argc);
    std::string repeat = "--benchmark_repetitions=5";
    std::string mix = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, {repeat.data(), mix.data()});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print(ratios);
    return 0;
}

}  // namespace tavrolin::benchmarks
