#pragma once

// What the benchmark programs share: CPU time, the core count, and a
// reporter that keeps each benchmark's medians for the closing ratios.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace kinfolio::bench {

// CPU seconds of this process (RUSAGE_SELF), or of its finished children
// (RUSAGE_CHILDREN): on a shared machine the wall time of a parallel run
// depends on the neighbours, the work done does not.
inline double cpuSeconds(int who) {
    struct rusage usage {};
    ::getrusage(who, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

inline unsigned cores() {
    return std::max(1u, std::thread::hardware_concurrency());
}

// Keeps the median wall time of every benchmark run with repetitions, and
// the median of the named counter, by the run's full name.
class MedianReporter : public benchmark::ConsoleReporter {
public:
    explicit MedianReporter(std::string counter = "") : counter_(std::move(counter)) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            if (run.aggregate_name != "median") continue;
            medians[run.run_name.str()] = run.GetAdjustedRealTime();
            auto found = run.counters.find(counter_);
            if (found != run.counters.end()) counterMedians[run.run_name.str()] = found->second;
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // The median of the first benchmark whose name starts with `prefix`; 0
    // when none ran.
    double median(const std::string& prefix) const { return first(medians, prefix); }
    double counterMedian(const std::string& prefix) const { return first(counterMedians, prefix); }

    std::map<std::string, double> medians, counterMedians;

private:
    static double first(const std::map<std::string, double>& values, const std::string& prefix) {
        for (const auto& [name, value] : values)
            if (name.rfind(prefix, 0) == 0) return value;
        return 0;
    }
    std::string counter_;
};

}  // namespace kinfolio::bench
