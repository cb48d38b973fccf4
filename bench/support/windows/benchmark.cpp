#include "benchmark/benchmark.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>

namespace benchmark {

namespace {

std::vector<std::unique_ptr<Benchmark>>& Registered() {
    static std::vector<std::unique_ptr<Benchmark>> benchmarks;
    return benchmarks;
}

struct Options {
    std::string out;
    std::string filter;
    int repetitions = 1;
    double leastSeconds = 0.1;
} options;

// ASCII text without control characters.
std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char unit : text) {
        if (unit == '"' || unit == '\\') quoted += '\\';
        quoted += unit;
    }
    return quoted + '"';
}

// Blocks with holes between them, others before each measurement: what a block costs depends on its neighbours, and
// no benchmark shall be the one that is lucky each time.
class Heap {
  public:
    void Shuffle() {
        for (int i = 0; i < 64; ++i) {
            blocks_[random_() % blocks_.size()] = std::make_unique<char[]>(random_() % 256);
        }
    }

  private:
    std::mt19937 random_;
    std::array<std::unique_ptr<char[]>, 256> blocks_;
} heap;

std::string Number(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", number);
    return text;
}

std::string Entry(const std::string& name, int repetition, const State& state) {
    std::string text = "    {\"name\": " + Quoted(name) + ", \"run_name\": " + Quoted(name) +
                       ", \"run_type\": \"iteration\", \"repetition_index\": " + Number(repetition);
    if (!state.error.empty()) {
        return text + ", \"error_occurred\": true, \"error_message\": " + Quoted(state.error) + '}';
    }
    const std::string time = Number(state.Nanoseconds());
    text += ", \"iterations\": " + Number(static_cast<double>(state.iterations())) +
            ", \"real_time\": " + time + ", \"cpu_time\": " + time + ", \"time_unit\": \"ns\"";
    if (!state.label.empty()) text += ", \"label\": " + Quoted(state.label);
    for (const auto& [counter, value] : state.counters) text += ", " + Quoted(counter) + ": " + Number(value);
    return text + '}';
}

}  // namespace

double State::Now() {
    static const double period = [] {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        return 1.0 / static_cast<double>(frequency.QuadPart);
    }();
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return static_cast<double>(count.QuadPart) * period;
}

std::int64_t State::EndSlice() {
    constexpr double shortest = 0.0005;
    constexpr std::size_t fewest = 3;
    const double elapsed = Now() - start_;
    const double seconds = elapsed - paused_;
    iterations_ += slice_;
    spent_ += elapsed;
    // Slices that are too short to be told from the clock's own steps don't count.
    if (seconds < shortest && elapsed < 20 * shortest) {
        slice_ *= 2;
    } else {
        slices_.push_back(seconds / static_cast<double>(slice_));
    }
    if (spent_ >= leastSeconds_ && slices_.size() >= fewest) return 0;
    StartSlice();
    return slice_;
}

double State::Nanoseconds() const {
    std::vector<double> sorted = slices_;
    if (sorted.empty()) return 0;
    std::ranges::nth_element(sorted, sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2));
    return sorted[sorted.size() / 2] * 1e9;
}

Benchmark* RegisterBenchmark(const std::string& name, std::function<void(State&)> run) {
    Registered().push_back(std::make_unique<Benchmark>(Benchmark{name, std::move(run), {}}));
    return Registered().back().get();
}

void Initialize(int* argc, char** argv) {
    for (int i = 1; i < *argc; ++i) {
        const std::string argument = argv[i];
        const auto value = argument.substr(std::min(argument.find('='), argument.size() - 1) + 1);
        if (argument.starts_with("--benchmark_out=")) options.out = value;
        if (argument.starts_with("--benchmark_filter=")) options.filter = value;
        if (argument.starts_with("--benchmark_repetitions=")) options.repetitions = std::atoi(value.c_str());
        if (argument.starts_with("--benchmark_min_time=")) options.leastSeconds = std::atof(value.c_str());
    }
}

std::size_t RunSpecifiedBenchmarks() {
    std::string entries;
    std::size_t runs = 0;
    for (int repetition = 0; repetition < options.repetitions; ++repetition) {
        for (const auto& each : Registered()) {
            const bool plain = each->arguments.empty();
            for (const std::int64_t argument : plain ? std::vector<std::int64_t>{0} : each->arguments) {
                const std::string name = plain ? each->name : each->name + '/' + std::to_string(argument);
                if (name.find(options.filter) == std::string::npos) continue;
                heap.Shuffle();
                State state(options.leastSeconds, argument);
                each->run(state);
                entries += (runs++ == 0 ? "" : ",\n") + Entry(name, repetition, state);
            }
        }
    }
    const std::string text =
        "{\n  \"context\": {\"library\": \"bench/support/windows\"},\n  \"benchmarks\": [\n" + entries +
        "\n  ]\n}\n";
    if (options.out.empty()) {
        std::fputs(text.c_str(), stdout);
    } else {
        std::ofstream(options.out) << text;
    }
    return runs;
}

}  // namespace benchmark

// A program with a main of its own doesn't take this one from the library.
int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
