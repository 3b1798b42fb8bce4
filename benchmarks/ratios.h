#pragma once

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <utility>
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

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// What is measured: this process's use of the processor, that of the processes that it started and
/// waited for, or real time.
enum class TimeOf { processor, children, real };

inline double microseconds(TimeOf kind) {
    if (kind == TimeOf::children) {
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e6 +
               static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
    }
    timespec time{};
    clock_gettime(kind == TimeOf::real ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// In each turn every contender runs so many times, one contender after the other, so that whatever
/// else the machine does falls on all of them. Of each contender the microseconds that a run took,
/// turn by turn.
inline std::vector<std::vector<double>> timesInTurns(
    TimeOf kind, int turns, int runs, const std::vector<std::function<void()>>& contenders) {
    std::vector<std::vector<double>> times(contenders.size());
    for (int turn = 0; turn < turns; ++turn) {
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            const double begin = microseconds(kind);
            for (int run = 0; run < runs; ++run)
                contenders[i]();
            times[i].push_back((microseconds(kind) - begin) / runs);
        }
    }
    return times;
}

/// The median of the turns' ratios.
inline double medianRatio(const std::vector<double>& times, const std::vector<double>& baseline) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < times.size(); ++i)
        ratios.push_back(times[i] / baseline[i]);
    return median(std::move(ratios));
}

inline void printRatio(const std::string& name, double ratio, double goal) {
    std::printf("ratio %s %.2f (goal <= %.2f)\n", name.c_str(), ratio, goal);
}

}  // namespace tavrolin::benchmarks
