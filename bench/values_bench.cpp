// Values: copies of arrays beside a copy of their bytes, arrays of doubles and strings beside blocks filled
// by hand.
#include "support/operation.h"

#include "excelvalues/xxloper.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
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
    for (auto _ : state) {
        auto made = make();
        benchmark::DoNotOptimize(made.get());
        state.PauseTiming();
        made.reset();
        state.ResumeTiming();
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
        benchmark::RegisterBenchmark(name, [make](benchmark::State& state) {
            Making(state, make);
        })->Unit(benchmark::kMillisecond);
    };
    add("XXloperFromDoubles 1000x1000/ours", [] { return XXloperFromDoubles(Side, Side, flat[0]); });
    add("XXloperFromDoubles 1000x1000/loop", [] { return FilledByHand(flat); });
    add("XXloperFromRectangularMatrix 1000x1000/ours",
        [] { return XXloperFromRectangularMatrix(Side, Side, matrix); });
    add("XXloperFromRectangularMatrix 1000x1000/loop", [] { return FilledByHand(matrix); });
}

// ---- Values one at a time, beside a counted record of the standard library's -------------------------------

struct Record : XLOPER12 {
    explicit Record(DWORD type) : XLOPER12{} { xltype = type; }
    ~Record() {
        if (xltype == xltypeStr) std::free(val.str);
    }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    XCHAR* TakeString(std::size_t length) {
        val.str = static_cast<XCHAR*>(std::malloc((length + 1) * sizeof(XCHAR)));
        val.str[0] = static_cast<XCHAR>(length);
        return val.str + 1;
    }
};

void StringByHand(const WCHAR* text) {
    const auto record = std::make_shared<Record>(xltypeStr);
    const std::size_t length = std::min(std::char_traits<WCHAR>::length(text), std::size_t{32767});
    std::memcpy(record->TakeString(length), text, length * sizeof(XCHAR));
    benchmark::DoNotOptimize(record);
}

void NarrowStringByHand(const char* text) {
    const auto record = std::make_shared<Record>(xltypeStr);
    const int length = static_cast<int>(std::strlen(text));
    const int units = MultiByteToWideChar(CP_ACP, 0, text, length, nullptr, 0);
    MultiByteToWideChar(CP_ACP, 0, text, length, record->TakeString(static_cast<std::size_t>(units)), units);
    benchmark::DoNotOptimize(record);
}

void NumberByHand() {
    const auto record = std::make_shared<Record>(xltypeNum);
    record->val.num = 1.5;
    benchmark::DoNotOptimize(record);
}

void RegisterPlainMakers() {
    using bench::Compare;
    using benchmark::DoNotOptimize;
    static const StdWString shortText(39, 'x'), longText(32767, 'x');
    static const std::string narrowText(39, 'x');
    static double number = 1.5;
    static VARIANT variant = [] {
        VARIANT v{};
        v.vt = VT_R8;
        v.dblVal = 1.5;
        return v;
    }();
    static const XXloperPtr string = XXloperFromString(shortText);
    Compare(
        "XXloperFromDouble", {1}, [] { DoNotOptimize(XXloperFromDouble(number)); }, "std::make_shared",
        NumberByHand);
    Compare(
        "XXloperFromInt", {1}, [] { DoNotOptimize(XXloperFromInt(static_cast<int>(number))); },
        "std::make_shared",
        [] {
            const auto record = std::make_shared<Record>(xltypeInt);
            record->val.w = static_cast<int>(number);
            DoNotOptimize(record);
        });
    Compare(
        "XXloperFromVariant, a double", {1}, [] { DoNotOptimize(XXloperFromVariant(variant)); },
        "std::make_shared", NumberByHand);
    Compare(
        "XXloperFromString, 39 units", {2}, [] { DoNotOptimize(XXloperFromString(shortText.c_str())); },
        "std::make_shared", [] { StringByHand(shortText.c_str()); });
    Compare(
        "XXloperFromString, 32767 units", {2}, [] { DoNotOptimize(XXloperFromString(longText.c_str())); },
        "std::make_shared", [] { StringByHand(longText.c_str()); });
    Compare(
        "XXloperFromString, 39 narrow units", {2},
        [] { DoNotOptimize(XXloperFromString(narrowText.c_str())); }, "MultiByteToWideChar",
        [] { NarrowStringByHand(narrowText.c_str()); });
    Compare(
        "XXloperCopy, a string", {2}, [] { DoNotOptimize(XXloperCopy(*string)); }, "std::make_shared",
        [] {
            const auto record = std::make_shared<Record>(xltypeStr);
            const auto length = static_cast<std::size_t>(string->val.str[0]);
            std::memcpy(record->TakeString(length), string->val.str + 1, length * sizeof(XCHAR));
            DoNotOptimize(record);
        });
    Compare(
        "XXloper::ToCStringW", {1}, [] { DoNotOptimize(string->ToCStringW()); }, "std::basic_string",
        [] { DoNotOptimize(StdWString(string->val.str + 1, static_cast<std::size_t>(string->val.str[0]))); });
}

const bool registered = (RegisterMakers(), RegisterPlainMakers(), true);

}  // namespace
