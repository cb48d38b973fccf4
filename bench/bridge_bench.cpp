// One worksheet call through the add-in, beside the same call written in plain C style and beside the host's
// own share of it. The host does next to nothing, so what is seen is the road itself.
#include "addin/addin.h"
#include "addin/detail/resultstore.h"
#include "excelvalues/xxloper.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
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

// The plain version makes the same entries and the same allocations: a block for each handle, a record for
// each result, the target's text widened into a buffer and copied into a value.
struct Plain {
    static int Enter(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
        return host(function, count, operands, result);
    }
    static LPXLOPER12 Call(int function, int count, LPXLOPER12* operands) {
        auto* const result = static_cast<LPXLOPER12>(std::malloc(sizeof(XLOPER12)));
        std::memset(result, 0, sizeof *result);
        Enter(xlEnableXLMsgs, 0, nullptr, nullptr);
        const int code = Enter(function, count, operands, result);
        Enter(xlDisableXLMsgs, 0, nullptr, nullptr);
        if (code != 0) {
            result->xltype = xltypeErr;
            result->val.err = xlerrValue;
            result->val.returnCode = code;
        }
        return result;
    }
    static void Release(LPXLOPER12 result) {
        Enter(xlEnableXLMsgs, 0, nullptr, nullptr);
        Enter(xlFree, 1, &result, nullptr);
        Enter(xlDisableXLMsgs, 0, nullptr, nullptr);
        std::free(result);
    }
    static void Switch(int on) {
        auto* operand = static_cast<LPXLOPER12>(std::malloc(sizeof(XLOPER12)));
        operand->xltype = xltypeInt;
        operand->val.w = on;
        LPXLOPER12 const result = Call(xlfError, 1, &operand);
        void* const handle = std::malloc(24);
        benchmark::DoNotOptimize(handle);
        Release(result);
        std::free(handle);
        std::free(operand);
    }
    static LPXLOPER12 Text(const char* text) {
        const std::size_t length = std::strlen(text);
        auto* const wide = static_cast<XCHAR*>(std::malloc((length + 1) * sizeof(XCHAR)));
        for (std::size_t i = 0; i <= length; ++i) wide[i] = static_cast<unsigned char>(text[i]);
        std::size_t units = 0;
        while (units < 32767 && wide[units] != 0) ++units;
        auto* const record = static_cast<LPXLOPER12>(std::malloc(sizeof(XLOPER12)));
        record->xltype = xltypeStr;
        record->val.str = static_cast<XCHAR*>(std::malloc((units + 1) * sizeof(XCHAR)));
        record->val.str[0] = static_cast<XCHAR>(units);
        std::memcpy(record->val.str + 1, wide, units * sizeof(XCHAR));
        std::free(wide);
        return record;
    }

    LPXLOPER12 last = nullptr;
    void* lastHandle = nullptr;

    LPXLOPER12 NetOutputPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                   LPXLOPER12 a5) {
        void* handles[5];
        for (void*& handle : handles) handle = std::malloc(24);
        benchmark::DoNotOptimize(handles);
        Switch(0);
        LPXLOPER12 target = Text("=Kestrolumen.XLA!NetOutputPredictionVBA");
        LPXLOPER12 operands[] = {target, a1, a2, a3, a4, a5};
        LPXLOPER12 const result = Call(xlUDF, 6, operands);
        void* const handle = std::malloc(24);
        std::free(target->val.str);
        std::free(target);
        Switch(1);
        LPXLOPER12 const previous = std::exchange(last, result);
        void* const previousHandle = std::exchange(lastHandle, handle);
        if (previous != nullptr) Release(previous);
        std::free(previousHandle);
        for (void* each : handles) std::free(each);
        return result;
    }

    ~Plain() {
        std::free(last);
        std::free(lastHandle);
    }
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
    for (auto _ : state) {
        benchmark::DoNotOptimize(plain.NetOutputPrediction(&a[0], &a[1], &a[2], &a[3], &a[4]));
    }
}

template <RW Rows>
void CallOurs(benchmark::State& state) {
    Arguments arguments(Rows);
    auto* const a = arguments.records;
    Excel12EntryPoint = host;
    xlAutoOpen();
    for (auto _ : state) benchmark::DoNotOptimize(NetOutputPrediction(&a[0], &a[1], &a[2], &a[3], &a[4]));
    xlAutoClose();
}

BENCHMARK(CallOurs<1>)->Name("worksheet call/ours");
BENCHMARK(CallPlain<1>)->Name("worksheet call/plain C");
BENCHMARK(HostAlone)->Name("worksheet call/host's own share");

BENCHMARK(CallOurs<1000000>)->Name("worksheet call with 1,000,000 cells/ours");
BENCHMARK(CallOurs<1>)->Name("worksheet call with 1,000,000 cells/with one cell");

void StoreOurs(benchmark::State& state) {
    Excel12EntryPoint = host;
    xlAutoOpen();
    const XXloperPtr values[] = {XXloperFromInt(1), XXloperFromInt(2)};
    std::size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(StoreThreadResult(values[++i % 2]));
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
