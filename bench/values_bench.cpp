// Values: copies of arrays beside a copy of their bytes, arrays of doubles and strings beside blocks filled
// by hand.
#include "excelvalues/xxloper.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr RW Side = 1000;

// An array of Side * Side records, those of every `period`th cell strings (0: none), as Excel lends it.
class LentArray {
  public:
    explicit LentArray(std::size_t period) : cells_(static_cast<std::size_t>(Side) * Side) {
        for (std::size_t i = 0; i < cells_.size(); ++i) {
            if (period != 0 && i % period == 0) {
                cells_[i].xltype = xltypeStr;
                cells_[i].val.str = text_;
            } else {
                cells_[i].xltype = xltypeNum;
                cells_[i].val.num = static_cast<double>(i);
            }
        }
        array_.xltype = xltypeMulti;
        array_.val.array.lparray = cells_.data();
        array_.val.array.rows = Side;
        array_.val.array.columns = Side;
    }

    [[nodiscard]] const XXloper& Value() const { return static_cast<const XXloper&>(array_); }
    [[nodiscard]] const std::vector<XLOPER12>& Cells() const { return cells_; }

  private:
    XCHAR text_[9] = {8, 'c', 'a', 't', 'e', 'g', 'o', 'r', 'y'};
    std::vector<XLOPER12> cells_;
    XLOPER12 array_{};
};

void* CopyOfBytes(const std::vector<XLOPER12>& cells) {
    const std::size_t bytes = cells.size() * sizeof(XLOPER12);
    return std::memcpy(std::malloc(bytes), cells.data(), bytes);
}

// The copying alone: what is copied goes while the clock stands.
void CopyNumbersOurs(benchmark::State& state) {
    const LentArray array(0);
    for (auto _ : state) {
        XXloperPtr copy = XXloperCopy(array.Value());
        benchmark::DoNotOptimize(copy);
        state.PauseTiming();
        copy.reset();
        state.ResumeTiming();
    }
}
void CopyNumbersBytes(benchmark::State& state) {
    const LentArray array(0);
    for (auto _ : state) {
        void* const block = CopyOfBytes(array.Cells());
        benchmark::DoNotOptimize(block);
        state.PauseTiming();
        std::free(block);
        state.ResumeTiming();
    }
}
BENCHMARK(CopyNumbersOurs)->Name("copy of 1000x1000 numbers/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(CopyNumbersBytes)->Name("copy of 1000x1000 numbers/memcpy")->Unit(benchmark::kMillisecond);

void CopyMixedOurs(benchmark::State& state) {
    const LentArray array(4);
    for (auto _ : state) benchmark::DoNotOptimize(XXloperCopy(array.Value()));
}
// The same by hand: one block, then one more for each string.
void CopyMixedByHand(benchmark::State& state) {
    const LentArray array(4);
    for (auto _ : state) {
        auto* const block = static_cast<XLOPER12*>(CopyOfBytes(array.Cells()));
        for (std::size_t i = 0; i < array.Cells().size(); ++i) {
            if (block[i].xltype != xltypeStr) continue;
            const std::size_t bytes = (block[i].val.str[0] + std::size_t{1}) * sizeof(XCHAR);
            block[i].val.str = static_cast<XCHAR*>(std::memcpy(std::malloc(bytes), block[i].val.str, bytes));
        }
        benchmark::DoNotOptimize(block);
        for (std::size_t i = 0; i < array.Cells().size(); ++i) {
            if (block[i].xltype == xltypeStr) std::free(block[i].val.str);
        }
        std::free(block);
    }
}
BENCHMARK(CopyMixedOurs)->Name("copy of 1000x1000 cells, 1 in 4 a text/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(CopyMixedByHand)
    ->Name("copy of 1000x1000 cells, 1 in 4 a text/by hand")
    ->Unit(benchmark::kMillisecond);

// Makers of arrays, the making alone: what is made goes untimed.
template <typename Make>
void Making(benchmark::State& state, Make make) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    for (auto _ : state) {
        const double start = now();
        auto made = make();
        benchmark::DoNotOptimize(made.get());
        state.SetIterationTime(now() - start);
    }
}

struct Free {
    void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<XLOPER12, Free>;

// A plain loop over doubles that stand row by row, into a block of its own.
template <typename Rows>
Block FilledByHand(const Rows& rows) {
    Block block(static_cast<XLOPER12*>(std::malloc(std::size_t{Side} * Side * sizeof(XLOPER12))));
    XLOPER12* next = block.get();
    for (const auto& row : rows) {
        for (const double x : row) {
            next->xltype = xltypeNum;
            next->val.num = x;
            ++next;
        }
    }
    return block;
}

void RegisterMakers() {
    static const std::vector<std::vector<double>> flat(1, std::vector<double>(std::size_t{Side} * Side, 1.5));
    static const std::vector<std::vector<double>> matrix(Side, std::vector<double>(Side, 1.5));
    const auto add = [](const char* name, auto make) {
        benchmark::RegisterBenchmark(name, [make](benchmark::State& state) { Making(state, make); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    };
    add("XXloperFromDoubles 1000x1000/ours", [] { return XXloperFromDoubles(Side, Side, flat[0]); });
    add("XXloperFromDoubles 1000x1000/loop", [] { return FilledByHand(flat); });
    add("XXloperFromRectangularMatrix 1000x1000/ours",
        [] { return XXloperFromRectangularMatrix(Side, Side, matrix); });
    add("XXloperFromRectangularMatrix 1000x1000/loop", [] { return FilledByHand(matrix); });
}

// A record and its text in two blocks, the length counted and the units copied, widened if need be.
template <typename Unit, std::size_t Length>
void StringByHand(benchmark::State& state) {
    const std::basic_string<Unit> text(Length, Unit('x'));
    for (auto _ : state) {
        auto* const record = static_cast<XLOPER12*>(std::malloc(sizeof(XLOPER12)));
        const Unit* const source = text.c_str();
        std::size_t length = 0;
        while (source[length] != 0) ++length;
        auto* const block = static_cast<XCHAR*>(std::malloc((length + 1) * sizeof(XCHAR)));
        block[0] = static_cast<XCHAR>(length);
        for (std::size_t i = 0; i < length; ++i) block[i + 1] = static_cast<XCHAR>(source[i]);
        record->xltype = xltypeStr;
        record->val.str = block;
        benchmark::DoNotOptimize(record);
        std::free(block);
        std::free(record);
    }
}
template <typename Unit, std::size_t Length>
void StringOurs(benchmark::State& state) {
    const std::basic_string<Unit> text(Length, Unit('x'));
    for (auto _ : state) benchmark::DoNotOptimize(XXloperFromString(text.c_str()));
}
BENCHMARK(StringOurs<WCHAR, 39>)->Name("string of 39 units/ours");
BENCHMARK(StringByHand<WCHAR, 39>)->Name("string of 39 units/by hand");
BENCHMARK(StringOurs<WCHAR, 32767>)->Name("string of 32767 units/ours");
BENCHMARK(StringByHand<WCHAR, 32767>)->Name("string of 32767 units/by hand");
BENCHMARK(StringOurs<char, 39>)->Name("string of 39 narrow units/ours");
BENCHMARK(StringByHand<char, 39>)->Name("string of 39 narrow units/by hand");

void NumberOurs(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(XXloperFromDouble(1.5));
}
void NumberByHand(benchmark::State& state) {
    for (auto _ : state) {
        auto* const record = static_cast<XLOPER12*>(std::malloc(sizeof(XLOPER12)));
        record->xltype = xltypeNum;
        record->val.num = 1.5;
        benchmark::DoNotOptimize(record);
        std::free(record);
    }
}
BENCHMARK(NumberOurs)->Name("number/ours");
BENCHMARK(NumberByHand)->Name("number/by hand");

const bool registered = (RegisterMakers(), true);

}  // namespace
