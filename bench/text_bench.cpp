// Formatting beside {fmt}.

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <fmt/xchar.h>

#include <string>

#include "text/text.h"

namespace {

constexpr int row = 1048576;
constexpr double value = 0.8414709848;
const StdWString heading = TEXT("Probability");

void FormatOurs(benchmark::State& state) {
    for (auto _ : state) {
        CStringW text = CStringWFormat(TEXT("%s, row %d: %.6f"), heading.c_str(), row, value);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(FormatOurs)->Name("CStringWFormat/ours");

void FormatFmt(benchmark::State& state) {
    const std::wstring wideHeading(heading.begin(), heading.end());
    for (auto _ : state) {
        std::wstring text = fmt::format(L"{}, row {}: {:.6f}", wideHeading, row, value);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(FormatFmt)->Name("CStringWFormat/fmt");

}  // namespace
