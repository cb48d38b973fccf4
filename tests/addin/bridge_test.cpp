// The worksheet functions: the roads that a call takes through Excel, and what is left when it is over.
#include "addintest.h"
#include "support/allocations.h"
#include "support/emptypool.h"

#include <array>
#include <span>

namespace {

using excelhost::Array;
using excelhost::ErrorValue;
using excelhost::Text;
using excelhost::Value;

// The worksheet functions and the counts of their arguments.
const std::pair<std::string, std::size_t> functions[] = {{"NetOutputPrediction", 5},
                                                         {"NetOutputProbabilityOfPrediction", 5},
                                                         {"NetOutputProbabilityOfCategory", 6}};

XLOPER12* Call(const std::string& function) {
    static std::array<XLOPER12, 6> a{};
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i].xltype = xltypeInt;
        a[i].val.w = static_cast<int>(i);
    }
    using Five = LPXLOPER12(WINAPI*)(LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12);
    using Six = LPXLOPER12(WINAPI*)(LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12);
    void* const address = reinterpret_cast<void*>(ExportOfThisProgram(function.c_str()));
    if (function != functions[2].first)
        return reinterpret_cast<Five>(address)(&a[0], &a[1], &a[2], &a[3], &a[4]);
    return reinterpret_cast<Six>(address)(&a[0], &a[1], &a[2], &a[3], &a[4], &a[5]);
}

class Bridge : public AddInTest {
  protected:
    void Answer(const WCHAR* workbook, Value value) {
        for (const auto& [name, arity] : functions)
            host.SetFunction(workbook, excelhost::Wide(name + "VBA"),
                             [value, count = arity](std::span<const XLOPER12* const> arguments) {
                                 EXPECT_EQ(arguments.size(), count);
                                 for (std::size_t i = 0; i < count; ++i)
                                     EXPECT_EQ(arguments[i]->val.w, static_cast<int>(i));
                                 return value;
                             });
    }
    // The entries of one call, without the switches of messages around each: function numbers, the targets
    // of xlUDF and the operands of xlfError.
    [[nodiscard]] std::string Entries() const {
        std::string entries;
        const auto trace = host.Trace();
        for (std::size_t i = 0; i + 2 < trace.size(); i += 3) {
            EXPECT_EQ(trace[i].function, xlEnableXLMsgs);
            EXPECT_EQ(trace[i + 2].function, xlDisableXLMsgs);
            const excelhost::Entry& entry = trace[i + 1];
            EXPECT_TRUE(entry.messages);
            EXPECT_TRUE(entry.function != xlUDF || !entry.alerts);
            entries += excelhost::FunctionName(entry.function) + " ";
            if (entry.function != xlFree) entries += entry.operands.at(0).text + " ";
        }
        return entries;
    }
};

TEST_F(Bridge, TakesOneRoadOfThree) {
    const std::string off = "xlfError int 0 xlFree ";
    const std::string on = "xlfError int 1 xlFree ";
    for (const auto& [name, arity] : functions) {
        const std::string first = "xlUDF \"=Kestrolumen.XLA!" + name + "VBA\" ";
        const std::string second = "xlUDF \"=Kestrolumen.XLS!" + name + "VBA\" ";
        const auto expectEntries = [&, name = name](const std::string& expected) {
            SCOPED_TRACE(name);
            Call(name);  // leaves a result in the slot, which goes last
            host.ClearTrace();
            const XLOPER12* const result = Call(name);
            EXPECT_EQ(Entries(), expected + "xlFree ");
            EXPECT_TRUE(host.MacroAlerts());
            return result;
        };
        Answer(TEXT("Kestrolumen.XLA"), 1.5);
        EXPECT_EQ(excelhost::ValueFrom(*expectEntries(off + first + on)), Value(1.5));
        host.CloseWorkbook(TEXT("Kestrolumen.XLA"));
        Answer(TEXT("Kestrolumen.XLS"), Text(TEXT("second")));
        EXPECT_EQ(excelhost::ValueFrom(*expectEntries(off + first + second + "xlFree " + on)),
                  Value(Text(TEXT("second"))));
        for (const int code : {xlretFailed, xlretUncalced, xlretAbort, 0x60}) {
            host.Refuse(xlUDF, code);
            const XLOPER12* const result = expectEntries(off + first + second + "xlFree " + on);
            EXPECT_EQ(excelhost::ValueFrom(*result), Value(ErrorValue{xlerrValue}));
            EXPECT_EQ(result->val.failure.returnCode, code);
            host.StopRefusing();
        }
        EXPECT_EQ(host.AlertsShown(), 0u);
    }
}

TEST_F(Bridge, AnErrorThatTheFunctionGaveIsAnAnswer) {
    Answer(TEXT("Kestrolumen.XLS"), 1.0);
    Answer(TEXT("Kestrolumen.XLA"), ErrorValue{xlerrNA});
    EXPECT_EQ(excelhost::ValueFrom(*Call(functions[0].first)), Value(ErrorValue{xlerrNA}));
    // Nor do switches matter that Excel refuses.
    host.Refuse(xlfError, xlretFailed);
    EXPECT_EQ(excelhost::ValueFrom(*Call(functions[0].first)), Value(ErrorValue{xlerrNA}));
}

TEST_F(Bridge, ResultsStayAliveUntilTheThreadsNextCallAndNeedAStore) {
    const Array array{2, 2, {Text(TEXT("a")), 1.0, ErrorValue{xlerrNA}, Text(StdWString(32767, u'z'))}};
    Answer(TEXT("Kestrolumen.XLA"), array);
    const XLOPER12* const result = Call(functions[0].first);
    EXPECT_EQ(host.GetAccount().Leaked(), 1u);
    EXPECT_EQ(excelhost::ValueFrom(*result), Value(array));
    Answer(TEXT("Kestrolumen.XLA"), 1.0);
    Call(functions[0].first);
    EXPECT_EQ(host.GetAccount().Leaked(), 0u);

    xlAutoClose();
    Answer(TEXT("Kestrolumen.XLA"), Text(TEXT("lost")));
    EXPECT_EQ(excelhost::ValueFrom(*Call(functions[0].first)), Value(ErrorValue{xlerrValue}));
    EXPECT_EQ(host.GetAccount().Leaked(), 0u) << "the value went back at once";
}

TEST_F(Bridge, CallsByTheHundredThousandLeaveNothing) {
    host.KeepTrace(false);
    int calls = 0;
    host.SetFunction(TEXT("Kestrolumen.XLS"), TEXT("NetOutputPredictionVBA"), [&](auto) -> Value {
        const Value values[] = {Text(TEXT("text")), Array{1, 2, {Text(TEXT("a")), 2.0}}, ErrorValue{}, 0.5};
        return values[++calls % 4];
    });
    for (int i = 0; i < 100000; ++i) Call(functions[0].first);
    EXPECT_EQ(calls, 100000);
    Answer(TEXT("Kestrolumen.XLS"), 1.0);
    Call(functions[0].first);
    const auto account = host.GetAccount();
    EXPECT_EQ(account.Leaked(), 0u);
    EXPECT_EQ(account.freedTwice, 0u);

    // The simulated host keeps blocks that were freed, for a while. Beside one that has none of its own the
    // add-in's can be counted: each of its calls ends with as many as it found.
    for (const int code : {xlretSuccess, xlretFailed}) {
        const FrugalHost frugal(code);
        Call(functions[0].first);
        const int lent = FrugalHost::lent;
        const std::int64_t before = support::LiveBlocks();
        for (int i = 0; i < 100000; ++i) Call(functions[0].first);
        EXPECT_EQ(support::LiveBlocks(), before);
        EXPECT_EQ(FrugalHost::lent, lent);
        static_cast<void>(StoreThreadResult(XXloperFromInt(1)));
    }
}

TEST_F(Bridge, AnExceptionPassesOnWithNothingHeldAndAlertsOn) {
    for (const int code : {xlretSuccess, xlretFailed}) {
        SCOPED_TRACE(code);
        const FrugalHost frugal(code);
        const support::EmptyPool pool;
        static_cast<void>(StoreThreadResult(XXloperFromInt(1)));  // the thread's slot is there
        FrugalHost::lent = 0;
        std::size_t faults = 0;
        const std::int64_t left = support::BlocksLeftBy([&] {
            faults = support::FailEachAllocation(
                [&] {
                    FrugalHost::alerts = true;
                    const auto failure = WhatLeaves([] { Call(functions[0].first); });
                    if (!failure) return;
                    EXPECT_EQ(failure->kind, FailureKind::OutOfMemory);
                    EXPECT_EQ(FrugalHost::lent, 0);
                    EXPECT_TRUE(FrugalHost::alerts);
                },
                [] {});
            // The call that went through has left its result in the slot.
            static_cast<void>(StoreThreadResult(XXloperFromInt(1)));
        });
        EXPECT_EQ(left, 0);
        EXPECT_EQ(FrugalHost::lent, 0);
        // The record and the handle of each target's answer, and nothing else.
        EXPECT_EQ(faults, code == xlretSuccess ? 2u : 4u);
    }
}

}  // namespace
