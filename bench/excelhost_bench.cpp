// The simulated Excel at work: a call of an add-in's function beside the same call made by hand, and whole sheets with
// the memory that they take at most, a formula. The add-in is one function, linked in, so that all the rest is the
// host's.
#include "support/operation.h"

#include "excelhost/host.h"
#include "excelhost/sheet.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

namespace {

using excelhost::Host;
using excelhost::Sheet;
using excelhost::Value;

// Not inlined, as a function of another module can't be.
LPXLOPER12 PASCAL Doubled(LPXLOPER12 a) {
    static thread_local XLOPER12 result;
    result.xltype = xltypeNum;
    result.val.num = a->xltype == xltypeNum ? a->val.num * 2 : 0;
    return &result;
}
LPXLOPER12(PASCAL* volatile doubled)(LPXLOPER12) = &Doubled;

// A host that knows the function under the type text.
struct Equipped {
    Host host;

    explicit Equipped(excelhost::TextView typeText) {
        host.KeepTrace(false);
        host.AddModule(TEXT("bench.xll"), [](const char* name) {
            const bool known = std::strcmp(name, "Doubled") == 0;
            return known ? reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&Doubled)) : nullptr;
        });
        const Value operands[] = {excelhost::Text(TEXT("bench.xll")), excelhost::Text(TEXT("Doubled")),
                                  excelhost::Text(typeText)};
        excelhost::Blocks blocks;
        std::vector<XLOPER12> records;
        for (const Value& operand : operands) records.push_back(RecordFrom(operand, blocks));
        std::vector<LPXLOPER12> pointers;
        for (XLOPER12& record : records) pointers.push_back(&record);
        host.CallBack(xlfRegister, static_cast<int>(pointers.size()), pointers.data(), nullptr);
    }
};

void AddCalls() {
    bench::Compare(
        "call of a Q function", {0, 0, "what is lent lies between guard bytes and is compared afterwards"},
        [host = std::make_shared<Equipped>(TEXT("QQ")), argument = std::vector<Value>{1.5}] {
            benchmark::DoNotOptimize(host->host.Call(TEXT("Doubled"), argument));
        },
        "by hand",
        [] {
            XLOPER12 record{};
            record.xltype = xltypeNum;
            record.val.num = 1.5;
            benchmark::DoNotOptimize(doubled(&record)->val.num);
        });
}

// The sheet is read and calculated anew each time; `over_s` is what it takes beyond twice the time of the function's
// own calls, which must stay below 3 seconds for 100,000 formulas.
void MeasureSheet(benchmark::State& state, const std::string& csv, std::size_t formulas, std::size_t threads,
                  bool isCircle) {
    Equipped excel(TEXT("QQ$"));
    const auto calculate = [&] {
        Sheet sheet(csv);
        const excelhost::NamedSheet named{TEXT("[Book1.xlsx]Sheet1"), &sheet};
        try {
            benchmark::DoNotOptimize(CalculateSheets({&named, 1}, excel.host, 1, threads));
            if (isCircle) state.SkipWithError("the circle isn't found");
        } catch (const excelhost::SheetFaults&) {
            if (!isCircle) state.SkipWithError("the sheet has faults");
        }
    };
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    for (auto _ : state) calculate();
    const std::chrono::duration<double> whole = (Clock::now() - begin) / state.iterations();
    XLOPER12 record{};
    record.xltype = xltypeNum;
    const auto ownBegin = Clock::now();
    for (std::size_t i = 0; i < formulas; ++i) benchmark::DoNotOptimize(doubled(&record));
    const std::chrono::duration<double> own = Clock::now() - ownBegin;
    state.counters["over_s"] = whole.count() - 2 * own.count();
    state.counters["bytes_a_formula"] =
        static_cast<double>(bench::HeapUseOf(calculate).peak) / static_cast<double>(formulas);
}

// `formula` gives the text for a row, counted from 1.
template <class Formula>
void AddSheet(const std::string& name, std::size_t rows, Formula formula, std::size_t threads = 1,
              bool isCircle = false) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        std::string csv;
        for (std::size_t row = 1; row <= rows; ++row) csv += formula(row) + "\n";
        MeasureSheet(state, csv, rows, threads, isCircle);
    })->Unit(benchmark::kMillisecond);
}

void AddSheets() {
    const auto call = [](std::size_t row) {
        return std::to_string(row) + ",=Doubled(A" + std::to_string(row) + ")";
    };
    AddSheet("100,000 formulas through an add-in/1 thread", 100'000, call);
    AddSheet("100,000 formulas through an add-in/2 threads", 100'000, call, 2);
    const auto next = [](std::size_t row) { return "=A" + std::to_string(row + 1) + "+1"; };
    AddSheet("1,000,000 formulas/a chain", 1'000'000, next);
    AddSheet(
        "1,000,000 formulas/a circle", 1'000'000,
        [=](std::size_t row) { return row < 1'000'000 ? next(row) : std::string("=A1"); }, 1, true);
    AddSheet("20,000 formulas/a triangle of ranges", 20'000,
             [](std::size_t row) { return "=SUM(A" + std::to_string(row + 1) + ":A20001)"; });
}

const bool registered = (AddCalls(), AddSheets(), true);

}  // namespace
