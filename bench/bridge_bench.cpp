// One worksheet call through the add-in, beside the same call written in plain C style and beside the host's
// own share of it. The host does next to nothing, so what is seen is the road itself.
#include "support/operation.h"

#include "addin/addin.h"
#include "addin/resultstore.h"
#include "excelvalues/xxloper.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace {

// Answers xlUDF with a number and everything else with success.
int PASCAL Host(int function, int, LPXLOPER12*, LPXLOPER12 result) {
    if (result != nullptr) {
        result->xltype = function == xlUDF ? xltypeNum : xltypeBool;
        result->val.num = 0.5;
    }
    return xlretSuccess;
}

// Not inlined, as a callback in another module can't be.
EXCEL12PROC volatile host = &Host;

struct Arguments {
    XLOPER12 records[5]{};
    std::vector<XLOPER12> cells;

    explicit Arguments(RW rows) : cells(static_cast<std::size_t>(rows)) {
        for (XLOPER12& cell : cells) cell.xltype = xltypeNum;
        for (XLOPER12& record : records) record.xltype = xltypeMissing;
        records[0].xltype = xltypeMulti;
        records[0].val.array.lparray = cells.data();
        records[0].val.array.rows = rows;
        records[0].val.array.columns = 1;
    }
};

// The plain version makes the same entries, and one block of memory, the record that Excel's answer goes into.
struct Plain {
    static int Enter(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
        return host(function, count, operands, result);
    }
    static void CallInto(LPXLOPER12 result, int function, int count, LPXLOPER12* operands) {
        std::memset(result, 0, sizeof *result);
        Enter(xlEnableXLMsgs, 0, nullptr, nullptr);
        const int code = Enter(function, count, operands, result);
        Enter(xlDisableXLMsgs, 0, nullptr, nullptr);
        if (code != 0) {
            result->xltype = xltypeErr;
            result->val.err = xlerrValue;
            result->val.failure.returnCode = code;
        }
    }
    static LPXLOPER12 Call(int function, int count, LPXLOPER12* operands) {
        auto* const result = static_cast<LPXLOPER12>(std::malloc(sizeof(XLOPER12)));
        CallInto(result, function, count, operands);
        return result;
    }
    static void GiveBack(LPXLOPER12 result) {
        Enter(xlEnableXLMsgs, 0, nullptr, nullptr);
        Enter(xlFree, 1, &result, nullptr);
        Enter(xlDisableXLMsgs, 0, nullptr, nullptr);
    }
    static void Release(LPXLOPER12 result) {
        GiveBack(result);
        std::free(result);
    }
    static void Switch(int on) {
        XLOPER12 operand{}, result;
        operand.xltype = xltypeInt;
        operand.val.w = on;
        LPXLOPER12 operands[] = {&operand};
        CallInto(&result, xlfError, 1, operands);
        GiveBack(&result);
    }

    LPXLOPER12 last = nullptr;

    LPXLOPER12 NetOutputPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                   LPXLOPER12 a5) {
        static XCHAR text[] = TEXT("\x27=Kestrolumen.XLA!NetOutputPredictionVBA");
        Switch(0);
        XLOPER12 target{};
        target.xltype = xltypeStr;
        target.val.str = text;
        LPXLOPER12 operands[] = {&target, a1, a2, a3, a4, a5};
        LPXLOPER12 const result = Call(xlUDF, 6, operands);
        Switch(1);
        LPXLOPER12 const previous = std::exchange(last, result);
        if (previous != nullptr) Release(previous);
        return result;
    }

    ~Plain() { std::free(last); }
};

// A one-cell call is 18 entries into the host: six calls, each between its two brackets.
void HostAlone(benchmark::State& state) {
    XLOPER12 result{};
    XLOPER12 operand{};
    LPXLOPER12 operands[] = {&operand};
    for (auto _ : state) {
        for (const int function : {xlfError, xlFree, xlUDF, xlfError, xlFree, xlFree}) {
            host(xlEnableXLMsgs, 0, nullptr, nullptr);
            host(function, 1, operands, function == xlFree ? nullptr : &result);
            host(xlDisableXLMsgs, 0, nullptr, nullptr);
        }
        benchmark::DoNotOptimize(result);
    }
}

template <RW Rows>
void CallPlain(benchmark::State& state) {
    Arguments arguments(Rows);
    auto* const a = arguments.records;
    Plain plain;
    bench::Measure(state, [&] {
        benchmark::DoNotOptimize(plain.NetOutputPrediction(&a[0], &a[1], &a[2], &a[3], &a[4]));
    });
}

template <RW Rows>
void CallOurs(benchmark::State& state) {
    Arguments arguments(Rows);
    auto* const a = arguments.records;
    Excel12EntryPoint = host;
    xlAutoOpen();
    const bench::Least least{1};  // the result's record
    bench::Measure(state, least,
                   [&] { benchmark::DoNotOptimize(NetOutputPrediction(&a[0], &a[1], &a[2], &a[3], &a[4])); });
    xlAutoClose();
}

BENCHMARK(CallOurs<1>)->Name("worksheet call/ours");
BENCHMARK(CallPlain<1>)->Name("worksheet call/plain C");
BENCHMARK(HostAlone)->Name("worksheet call/host's own share");

BENCHMARK(CallOurs<1000000>)->Name("worksheet call with 1,000,000 cells/ours");
BENCHMARK(CallOurs<1>)->Name("worksheet call with 1,000,000 cells/with one cell");

// One call of Excel's, and its result back to it.
void CallExcelOurs(benchmark::State& state) {
    Excel12EntryPoint = host;
    const XXloperPtr operand = XXloperFromInt(1);
    const bench::Least least{1};  // the result's record
    bench::Measure(state, least, [&] { benchmark::DoNotOptimize(CallExcel(xlUDF, operand)); });
}
void CallExcelPlain(benchmark::State& state) {
    XLOPER12 operand{};
    bench::Measure(state, [&] {
        LPXLOPER12 operands[] = {&operand};
        LPXLOPER12 const result = Plain::Call(xlUDF, 1, operands);
        benchmark::DoNotOptimize(result);
        Plain::Release(result);
    });
}
// The same in a counted handle of the standard library, as one would write it in C++.
struct GiveBack {
    void operator()(LPXLOPER12 result) const { Plain::Release(result); }
};
void CallExcelShared(benchmark::State& state) {
    XLOPER12 operand{};
    bench::Measure(state, [&] {
        LPXLOPER12 operands[] = {&operand};
        const std::shared_ptr<XLOPER12> result(Plain::Call(xlUDF, 1, operands), GiveBack());
        benchmark::DoNotOptimize(result);
    });
}
BENCHMARK(CallExcelOurs)->Name("CallExcel and release/ours");
BENCHMARK(CallExcelPlain)->Name("CallExcel and release/plain C");
BENCHMARK(CallExcelShared)->Name("CallExcel and release/std::shared_ptr");

void StoreOurs(benchmark::State& state) {
    Excel12EntryPoint = host;
    xlAutoOpen();
    const XXloperPtr values[] = {XXloperFromInt(1), XXloperFromInt(2)};
    std::size_t i = 0;
    bench::Measure(state, bench::Least{},
                   [&] { benchmark::DoNotOptimize(StoreThreadResult(values[++i % 2])); });
    xlAutoClose();
}
// The floor: a shared pointer exchanged in a thread's variable.
void StorePlain(benchmark::State& state) {
    static thread_local XXloperPtr slot;
    const XXloperPtr values[] = {XXloperFromInt(1), XXloperFromInt(2)};
    std::size_t i = 0;
    for (auto _ : state) {
        slot = values[++i % 2];
        benchmark::DoNotOptimize(slot.get());
    }
    slot.reset();
}
BENCHMARK(StoreOurs)->Name("keeping a result/ours");
BENCHMARK(StorePlain)->Name("keeping a result/thread_local shared_ptr");

}  // namespace
