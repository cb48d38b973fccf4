// Google Benchmark, as far as the programs of this folder use it, for Windows: its package holds no library
// that MinGW could link. The names and the results file are Google Benchmark's, so that one source serves both
// homes.
//
// What differs is the clock. Wine tells a thread's own time in ticks of 10 ms only, so time is taken by the
// performance counter: in many short slices, of which the median counts. A slice in which another process had
// the processor is then seldom the one that counts. And before each measurement the heap gets other holes.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace benchmark {

enum TimeUnit { kNanosecond, kMicrosecond, kMillisecond, kSecond };

// Keeps the compiler from leaving out what makes `value`.
template <typename T>
inline void DoNotOptimize(T&& value) {
    asm volatile("" : : "r,m"(&value) : "memory");
}
inline void ClobberMemory() {
    asm volatile("" : : : "memory");
}

// One measurement of one benchmark, which goes through it by a range-for.
class State {
  public:
    State(double leastSeconds, std::int64_t argument) noexcept
        : leastSeconds_(leastSeconds), argument_(argument) {}

    struct [[maybe_unused]] Value {};
    class Iterator {
      public:
        explicit Iterator(State* state) noexcept : state_(state), left_(state ? state->slice_ : 0) {}
        Value operator*() const noexcept { return {}; }
        Iterator& operator++() noexcept {
            --left_;
            return *this;
        }
        bool operator!=(const Iterator&) {
            if (left_ != 0) return true;
            left_ = state_->EndSlice();
            return left_ != 0;
        }

      private:
        State* state_;
        std::int64_t left_;
    };
    Iterator begin() {
        StartSlice();
        return Iterator(this);
    }
    Iterator end() noexcept { return Iterator(nullptr); }

    void PauseTiming() { paused_ -= Now(); }
    void ResumeTiming() { paused_ += Now(); }
    void SetBytesProcessed(std::int64_t) noexcept {}
    void SetLabel(const std::string& text) { label = text; }
    void SkipWithError(const char* text) { error = text; }
    [[nodiscard]] std::int64_t iterations() const noexcept { return iterations_; }
    [[nodiscard]] std::int64_t range(std::size_t = 0) const noexcept { return argument_; }

    // The median of the slices, in nanoseconds an iteration.
    [[nodiscard]] double Nanoseconds() const;

    std::map<std::string, double> counters;
    std::string label;
    std::string error;

  private:
    // Gives the iterations of the next slice, 0 when there were enough.
    std::int64_t EndSlice();
    void StartSlice() {
        paused_ = 0;
        start_ = Now();
    }
    static double Now();

    double leastSeconds_;
    std::int64_t argument_;
    std::int64_t slice_ = 1;
    std::int64_t iterations_ = 0;
    double start_ = 0;
    double paused_ = 0;
    double spent_ = 0;
    std::vector<double> slices_;  // seconds an iteration
};

// A benchmark and what was asked of it. Each `Arg` makes one of its own.
struct Benchmark {
    std::string name;
    std::function<void(State&)> run;
    std::vector<std::int64_t> arguments;

    Benchmark* Name(const std::string& text) { return name = text, this; }
    Benchmark* Arg(std::int64_t argument) { return arguments.push_back(argument), this; }
    Benchmark* Unit(TimeUnit) { return this; }
    Benchmark* Iterations(std::int64_t) { return this; }
    Benchmark* Repetitions(int) { return this; }
};

Benchmark* RegisterBenchmark(const std::string& name, std::function<void(State&)> run);

// Options: --benchmark_out, --benchmark_repetitions, --benchmark_min_time and --benchmark_filter (a part of the
// name). Repetitions of different benchmarks always take turns.
void Initialize(int* argc, char** argv);
std::size_t RunSpecifiedBenchmarks();
inline bool ReportUnrecognizedArguments(int, char**) {
    return false;
}
inline void Shutdown() {}

}  // namespace benchmark

#define BENCHMARK(...) BENCHMARK_REGISTERED(__COUNTER__, __VA_ARGS__)
#define BENCHMARK_REGISTERED(number, ...) BENCHMARK_NAMED(number, __VA_ARGS__)
#define BENCHMARK_NAMED(number, ...)                                           \
    [[maybe_unused]] static ::benchmark::Benchmark* const benchmark_##number = \
        ::benchmark::RegisterBenchmark(#__VA_ARGS__, __VA_ARGS__)
