#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace kelvo::bench {

/// For main(): nine short repetitions of each benchmark, of which the median counts, where neither the benchmark nor
/// the command line says anything else. What is not the library's stays among the arguments.
inline void initialize(int& count, char** arguments) {
    // The library keeps the first of them.
    static std::vector<std::string> words{arguments[0], "--benchmark_repetitions=9",
                                          "--benchmark_report_aggregates_only=true",
                                          "--benchmark_min_time=0.05"};
    words.insert(words.end(), arguments + 1, arguments + count);
    static std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    int size = static_cast<int>(pointers.size());
    pointers.push_back(nullptr);
    benchmark::Initialize(&size, pointers.data());
    // It leaves no more than there were.
    for (count = 0; count < size; ++count)
        arguments[count] = pointers[static_cast<std::size_t>(count)];
}

/// Shows the measurements as they come and keeps their medians, so that a program can print the ratios
/// between its subject and its peers at the end of the same run.
class Comparison : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const bool isMedian = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (!isMedian && (run.run_type != Run::RT_Iteration || run.repetitions > 1))
                continue;
            const bool isOfClock = run.run_name.time_type.find("real_time") != std::string::npos ||
                                   run.run_name.time_type.find("manual_time") != std::string::npos;
            seconds_[run.run_name.function_name +
                     (run.run_name.args.empty() ? "" : "/" + run.run_name.args)] =
                (isOfClock ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime()) /
                benchmark::GetTimeUnitMultiplier(run.time_unit);
        }
    }

    /// The median time of one iteration, or 0 when that benchmark did not run: of the processor where the benchmark
    /// asks for nothing else, because a clock counts what else the machine does, else of the clock.
    double seconds(const std::string& name) const {
        const auto found = seconds_.find(name);
        return found == seconds_.end() ? 0 : found->second;
    }

    /// "label: 2.31" — how many times as long the subject takes as the peer; silent when either did not run.
    void printTimeRatio(const char* label, const std::string& subject, const std::string& peer) const {
        if (seconds(subject) > 0 && seconds(peer) > 0)
            std::printf("%-60s %8.2f\n", label, seconds(subject) / seconds(peer));
    }
    /// How many times as fast the subject is.
    void printSpeedRatio(const char* label, const std::string& subject, const std::string& peer) const {
        printTimeRatio(label, peer, subject);
    }

private:
    std::map<std::string, double> seconds_;
};

} // namespace kelvo::bench
