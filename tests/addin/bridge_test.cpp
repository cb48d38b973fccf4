#include "addintest.h"
#include "support/allocations.h"

#include <cstring>

#include <array>
#include <thread>

namespace {

using excelhost::Array;
using excelhost::ErrorValue;
using excelhost::Missing;
using excelhost::Text;
using excelhost::Value;
using testing::ElementsAre;
using testing::ElementsAreArray;

// A worksheet function, its arguments' count and the name of its counterpart in the workbook.
struct Function {
    const char* name;
    std::size_t arity;
    StdWString counterpart;
};

const Function functions[] = {
    {"NetOutputPrediction", 5, TEXT("NetOutputPredictionVBA")},
    {"NetOutputProbabilityOfPrediction", 5, TEXT("NetOutputProbabilityOfPredictionVBA")},
    {"NetOutputProbabilityOfCategory", 6, TEXT("NetOutputProbabilityOfCategoryVBA")},
};

XLOPER12* Call(const Function& function, std::span<XLOPER12> a) {
    const FARPROC entry = ExportOfThisProgram(function.name);
    using Five = LPXLOPER12(WINAPI*)(LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12);
    using Six = LPXLOPER12(WINAPI*)(LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12);
    void* const address = reinterpret_cast<void*>(entry);
    if (function.arity == 5) return reinterpret_cast<Five>(address)(&a[0], &a[1], &a[2], &a[3], &a[4]);
    return reinterpret_cast<Six>(address)(&a[0], &a[1], &a[2], &a[3], &a[4], &a[5]);
}

// What the host sees of one call of `function`: the brackets around it included.
std::vector<int> Bracketed(std::initializer_list<int> entries) {
    std::vector<int> bracketed;
    for (const int function : entries) {
        for (const int each : {xlEnableXLMsgs, function, xlDisableXLMsgs}) bracketed.push_back(each);
    }
    return bracketed;
}

class Bridge : public AddInTest {
  protected:
    void Answer(const StdWString& workbook, Value value) {
        for (const Function& function : functions) {
            host.SetFunction(workbook, function.counterpart, [value](auto) { return value; });
        }
    }
    // Texts of the targets that were called, in order.
    [[nodiscard]] std::vector<std::string> Targets() const {
        std::vector<std::string> targets;
        for (const excelhost::Entry& entry : host.Trace()) {
            if (entry.function == xlUDF) targets.push_back(entry.operands.at(0).text);
        }
        return targets;
    }

    std::array<XLOPER12, 6> arguments{};
};

TEST_F(Bridge, HandsEveryArgumentOnAsItCame) {
    static XCHAR text[] = {2, 'a', 'b'};
    const DWORD types[] = {xltypeMissing, xltypeNum, xltypeStr, xltypeSRef, xltypeErr, xltypeNil};
    for (std::size_t i = 0; i < 6; ++i) arguments[i].xltype = types[i];
    arguments[2].val.str = text;
    for (const Function& function : functions) {
        SCOPED_TRACE(function.name);
        std::vector<const XLOPER12*> seen;
        host.SetFunction(TEXT("Kestrolumen.XLA"), function.counterpart, [&](auto operands) {
            seen.assign(operands.begin(), operands.end());
            return 0.75;
        });
        const std::array<XLOPER12, 6> before = arguments;
        const XLOPER12* const result = Call(function, arguments);
        EXPECT_EQ(result->xltype, xltypeNum);
        EXPECT_EQ(result->val.num, 0.75);
        std::vector<const XLOPER12*> expected;
        for (std::size_t i = 0; i < function.arity; ++i) expected.push_back(&arguments[i]);
        EXPECT_EQ(seen, expected);
        EXPECT_EQ(std::memcmp(before.data(), arguments.data(), sizeof before), 0);
    }
}

TEST_F(Bridge, FirstTargetFound) {
    for (const Function& function : functions) {
        SCOPED_TRACE(function.name);
        Answer(TEXT("Kestrolumen.XLA"), 1.5);
        Call(function, arguments);  // leaves a result in the slot
        host.ClearTrace();
        EXPECT_EQ(Call(function, arguments)->val.num, 1.5);
        EXPECT_THAT(host.TracedFunctions(),
                    ElementsAreArray(Bracketed({xlfError, xlFree, xlUDF, xlfError, xlFree, xlFree})));
        const std::string target = "\"=Kestrolumen.XLA!" + std::string(function.name) + "VBA\"";
        EXPECT_THAT(Targets(), ElementsAre(target));
    }
}

TEST_F(Bridge, FirstTargetRefusedSecondFound) {
    for (const Function& function : functions) {
        SCOPED_TRACE(function.name);
        host.CloseWorkbook(TEXT("Kestrolumen.XLA"));
        Answer(TEXT("Kestrolumen.XLS"), Text(TEXT("from the second")));
        Call(function, arguments);
        host.ClearTrace();
        const XLOPER12* const result = Call(function, arguments);
        EXPECT_EQ(excelhost::ValueFrom(*result), Value(Text(TEXT("from the second"))));
        EXPECT_THAT(
            host.TracedFunctions(),
            ElementsAreArray(Bracketed({xlfError, xlFree, xlUDF, xlUDF, xlFree, xlfError, xlFree, xlFree})));
        EXPECT_THAT(Targets(), ElementsAre("\"=Kestrolumen.XLA!" + std::string(function.name) + "VBA\"",
                                           "\"=Kestrolumen.XLS!" + std::string(function.name) + "VBA\""));
    }
}

TEST_F(Bridge, BothTargetsRefused) {
    for (const Function& function : functions) {
        for (const int code : {xlretFailed, xlretUncalced, xlretAbort, 0x60}) {
            SCOPED_TRACE(std::string(function.name) + ", " + std::to_string(code));
            host.StopRefusing();
            host.Refuse(xlUDF, code);
            Call(function, arguments);
            host.ClearTrace();
            const XLOPER12* const result = Call(function, arguments);
            EXPECT_EQ(result->xltype, xltypeErr);
            EXPECT_EQ(result->val.err, xlerrValue);
            EXPECT_EQ(result->val.returnCode, code);
            EXPECT_THAT(host.TracedFunctions(),
                        ElementsAreArray(
                            Bracketed({xlfError, xlFree, xlUDF, xlUDF, xlFree, xlfError, xlFree, xlFree})));
            EXPECT_EQ(host.AlertsShown(), 0u);
            EXPECT_TRUE(host.MacroAlerts());
        }
    }
}

TEST_F(Bridge, AnErrorThatTheFunctionGaveIsAnAnswer) {
    for (const int number : {xlerrNull, xlerrDiv0, xlerrValue, xlerrRef, xlerrName, xlerrNum, xlerrNA}) {
        Answer(TEXT("Kestrolumen.XLA"), ErrorValue{number});
        Answer(TEXT("Kestrolumen.XLS"), 1.0);
        host.ClearTrace();
        EXPECT_EQ(excelhost::ValueFrom(*Call(functions[0], arguments)), Value(ErrorValue{number}));
        EXPECT_EQ(Targets().size(), 1u);
    }
}

TEST_F(Bridge, AlertsAreSwitchedByIntegers) {
    Answer(TEXT("Kestrolumen.XLA"), 1.0);
    Call(functions[0], arguments);
    std::vector<std::string> switches;
    for (const excelhost::Entry& entry : host.Trace()) {
        if (entry.function == xlUDF) {
            EXPECT_FALSE(entry.alerts);
            EXPECT_TRUE(entry.messages);
        }
        if (entry.function != xlfError) continue;
        ASSERT_EQ(entry.count, 1);
        EXPECT_EQ(entry.operands[0].type, xltypeInt);
        switches.push_back(entry.operands[0].text);
    }
    EXPECT_THAT(switches, ElementsAre("int 0", "int 1"));
}

TEST_F(Bridge, SwitchingThatExcelRefusesChangesNothing) {
    Answer(TEXT("Kestrolumen.XLA"), 3.0);
    host.Refuse(xlfError, xlretFailed);
    EXPECT_EQ(Call(functions[0], arguments)->val.num, 3.0);
}

TEST_F(Bridge, ResultsStayAliveUntilTheThreadsNextCall) {
    Array array{2, 2, {Text(TEXT("a")), 1.0, ErrorValue{xlerrNA}, Text(StdWString(32767, u'z'))}};
    Answer(TEXT("Kestrolumen.XLA"), array);
    const XLOPER12* const result = Call(functions[0], arguments);
    const auto account = host.GetAccount();
    EXPECT_EQ(account.allocated - account.freed, 1u);
    EXPECT_EQ(excelhost::ValueFrom(*result), Value(array));
    Answer(TEXT("Kestrolumen.XLA"), 1.0);
    Call(functions[0], arguments);
    EXPECT_EQ(host.GetAccount().Leaked(), 0u);
}

TEST_F(Bridge, CallsByTheHundredThousandLeaveNothing) {
    host.KeepTrace(false);
    int calls = 0;
    host.SetFunction(TEXT("Kestrolumen.XLS"), TEXT("NetOutputPredictionVBA"), [&](auto) -> Value {
        switch (++calls % 4) {
            case 0:
                return Text(TEXT("text"));
            case 1:
                return Array{1, 2, {Text(TEXT("a")), 2.0}};
            case 2:
                return ErrorValue{xlerrNum};
            default:
                return 0.5;
        }
    });
    for (int i = 0; i < 100000; ++i) Call(functions[0], arguments);
    EXPECT_EQ(calls, 100000);
    xlAutoClose();
    const auto account = host.GetAccount();
    EXPECT_EQ(account.Leaked(), 0u);
    EXPECT_EQ(account.freedTwice, 0u);
    EXPECT_EQ(account.results + account.failures, account.returned);
}

TEST_F(Bridge, ThreadsHaveResultsOfTheirOwn) {
    host.SetFunction(TEXT("Kestrolumen.XLA"), TEXT("NetOutputPredictionVBA"), [](auto operands) -> Value {
        return Text(StdWString(TEXT("answer ")) + static_cast<WCHAR>(TEXT('A') + operands[0]->val.w));
    });
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            std::array<XLOPER12, 5> own{};
            own[0].xltype = xltypeInt;
            own[0].val.w = i;
            const Text expected = StdWString(TEXT("answer ")) + static_cast<WCHAR>(TEXT('A') + i);
            for (int round = 0; round < 100; ++round) {
                if (excelhost::ValueFrom(*Call(functions[0], own)) == Value(expected)) ++right;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 800);
}

TEST_F(Bridge, WithoutAStoreTheCellShowsAValueError) {
    Answer(TEXT("Kestrolumen.XLA"), Text(TEXT("lost")));
    xlAutoClose();
    const XLOPER12* const result = Call(functions[0], arguments);
    EXPECT_EQ(result->xltype, xltypeErr);
    EXPECT_EQ(result->val.err, xlerrValue);
    EXPECT_EQ(host.GetAccount().Leaked(), 0u) << "the value went back at once";
}

// A host that allocates nothing, so that every allocation that fails is the add-in's.
struct FrugalHost {
    static inline std::array<int, 64> functions{};
    static inline std::size_t count = 0;
    static inline int lent = 0;
    static inline bool alerts = true;
    static inline int udfCode = xlretSuccess;

    static int PASCAL CallBack(int function, int, LPXLOPER12* operands, LPXLOPER12 result) {
        functions.at(count++) = function;
        if (function == xlfError) alerts = operands[0]->val.w != 0;
        if (function == xlFree) --lent;
        if (result == nullptr) return xlretSuccess;
        ++lent;
        result->xltype = xltypeBool;
        return function == xlUDF ? udfCode : xlretSuccess;
    }

    explicit FrugalHost(int code) {
        count = 0;
        udfCode = code;
        previous_ = std::exchange(Excel12EntryPoint, &CallBack);
    }
    ~FrugalHost() { Excel12EntryPoint = previous_; }
    FrugalHost(const FrugalHost&) = delete;
    FrugalHost& operator=(const FrugalHost&) = delete;

  private:
    EXCEL12PROC previous_;
};

TEST_F(Bridge, AnExceptionPassesOnWithNothingHeldAndAlertsOn) {
    for (const int code : {xlretSuccess, xlretFailed}) {
        SCOPED_TRACE(code);
        const FrugalHost frugal(code);
        static_cast<void>(StoreThreadResult(XXloperFromInt(1)));  // the thread's slot is there
        std::size_t faults = 0;
        std::size_t raised = 0;
        std::size_t alertsLeftOff = 0;
        const std::int64_t left = support::BlocksLeftBy([&] {
            raised = alertsLeftOff = 0;
            faults = support::FailEachAllocation(
                [&] {
                    FrugalHost::count = 0;
                    FrugalHost::alerts = true;
                    try {
                        Call(functions[0], arguments);
                    } catch (const std::bad_alloc&) {
                        ++raised;
                    }
                },
                [&] {
                    EXPECT_EQ(FrugalHost::lent, 0);
                    if (!FrugalHost::alerts) ++alertsLeftOff;
                });
            // The call that went through has left its result in the slot.
            static_cast<void>(StoreThreadResult(XXloperFromInt(1)));
        });
        EXPECT_EQ(left, 0);
        EXPECT_EQ(FrugalHost::lent, 0);
        EXPECT_EQ(raised, faults);
        // 5 handles of arguments; integer, record, handle; text, its units, record, handle; once more the
        // last four when refused; integer, record, handle. The narrow text's widening may take some more.
        EXPECT_GE(faults, code == xlretSuccess ? 15u : 19u);
        // The integer and the record of the very call that switches them on again.
        EXPECT_EQ(alertsLeftOff, 2u);
    }
}

}  // namespace
