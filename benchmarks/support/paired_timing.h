/// Times a subject and a floor in turns within one benchmark, so that their ratio holds on a noisy machine.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace benchmarks {

/// CPU seconds of the calling thread.
inline double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <class Action>
double TimeOf(Action action) {
    const double start = ThreadSeconds();
    action();
    return ThreadSeconds() - start;
}

inline double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

/// Runs `floor` and `subject` (each returns the CPU seconds of what is to be measured) once per iteration.
/// Reports the subject's throughput over `bytes`, and as "x_floor" the median of its times over that of the
/// floor's.
template <class Floor, class Subject>
void RunPaired(benchmark::State& state, std::size_t bytes, Floor floor, Subject subject) {
    std::vector<double> floorTimes;
    std::vector<double> subjectTimes;
    floor();
    subject();
    for (auto _ : state) {
        floorTimes.push_back(floor());
        subjectTimes.push_back(subject());
        state.SetIterationTime(subjectTimes.back());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
    state.counters["x_floor"] = Median(subjectTimes) / Median(floorTimes);
}

}  // namespace benchmarks
