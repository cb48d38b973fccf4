#include "excelvalues/xxloper.h"
#include "recordinghost.h"
#include "support/allocations.h"

#include <gmock/gmock.h>

#include <utility>

namespace {

using testing::ElementsAre;

// CallExcel with as many handles as there are indices, or with as many plain pointers.
template <std::size_t>
using HandleAt = XXloperPtr;
template <std::size_t>
using PointerAt = const XXloper*;

template <template <std::size_t> typename Operand, std::size_t... I>
constexpr bool IsCallable(std::index_sequence<I...>) {
    return requires(Operand<I>... operands) {
        CallExcel(1, operands...);
    };
}
template <std::size_t Count>
constexpr bool TakesHandles = IsCallable<HandleAt>(std::make_index_sequence<Count>());
template <std::size_t Count>
constexpr bool TakesPointers = IsCallable<PointerAt>(std::make_index_sequence<Count>());

static_assert(TakesHandles<0> && TakesHandles<1> && TakesHandles<2> && TakesHandles<3> && TakesHandles<4> &&
              TakesHandles<5> && TakesHandles<6> && TakesHandles<7> && TakesHandles<8> && TakesHandles<9> &&
              TakesHandles<30>);
static_assert(!TakesHandles<10> && !TakesHandles<29> && !TakesHandles<31>);
static_assert(TakesPointers<1> && TakesPointers<2> && !TakesPointers<3> && !TakesPointers<30>);

template <typename First, typename Second>
constexpr bool TakesPair = requires(First first, Second second) {
    CallExcel(1, first, second);
};
static_assert(TakesPair<XXloperPtr, XXloperPtr> && TakesPair<const XXloper*, XXloper*>);
static_assert(!TakesPair<XXloperPtr, const XXloper*> && !TakesPair<const XXloper*, XXloperPtr>);

template <std::size_t... I>
XXloperPtr CallWith(const std::vector<XXloperPtr>& operands, std::index_sequence<I...>) {
    return CallExcel(7, operands[I]...);
}

template <std::size_t Count>
void ExpectOperandsInOrder() {
    SCOPED_TRACE(Count);
    RecordingHost host;
    std::vector<XXloperPtr> operands;
    std::vector<const XLOPER12*> records;
    for (std::size_t i = 0; i < Count; ++i) {
        operands.push_back(XXloperFromInt(static_cast<int>(i)));
        records.push_back(operands.back().get());
    }
    const XXloperPtr result = CallWith(operands, std::make_index_sequence<Count>());
    ASSERT_EQ(host.Functions(), (std::vector<int>{xlEnableXLMsgs, 7, xlDisableXLMsgs}));
    const RecordingHost::Entry& call = host.entries[1];
    EXPECT_EQ(call.count, static_cast<int>(Count));
    EXPECT_EQ(call.operands, records);
    EXPECT_EQ(call.hasOperandArray, Count != 0);
    EXPECT_EQ(call.result, result.get());
    EXPECT_EQ(call.resultTypeOnEntry, 0u);
    EXPECT_EQ(call.resultCodeOnEntry, 0);
    for (const std::size_t bracket : {0U, 2U}) {
        EXPECT_EQ(host.entries[bracket].count, 0);
        EXPECT_EQ(host.entries[bracket].result, nullptr);
        EXPECT_FALSE(host.entries[bracket].hasOperandArray);
    }
    for (const XXloperPtr& operand : operands) EXPECT_EQ(operand.use_count(), 1);
}

TEST(CallExcel, PassesOperandsInOrderAndTakesNoReference) {
    [&]<std::size_t... Count>(std::index_sequence<Count...>) {
        (ExpectOperandsInOrder<Count>(), ...);
    }
    (std::index_sequence<0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 30>());
}

TEST(CallExcel, PlainPointersAreTheSameCall) {
    RecordingHost host;
    const XXloper one(1.0);
    const XXloper two(2.0);
    CallExcel(9, &one);
    CallExcel(9, &one, &two);
    EXPECT_THAT(host.entries[1].operands, ElementsAre(&one));
    EXPECT_THAT(host.entries[7].operands, ElementsAre(&one, &two));
}

TEST(CallExcel, AnArrayOfOperandsHasNoLimitOfItsOwn) {
    RecordingHost host;
    XXloper value(1.0);
    std::vector<LPXLOPER12> operands(300, &value);
    CallExcelWithOperands(5, 300, operands.data());
    EXPECT_EQ(host.entries[1].count, 300);
}

TEST(CallExcel, ReleaseHandsTheVeryRecordBackOnce) {
    RecordingHost host;
    XXloperPtr result = CallExcel(5);
    const XLOPER12* const record = result.get();
    XXloperPtr second = result;
    host.entries.clear();
    result.reset();
    EXPECT_TRUE(host.entries.empty());
    second.reset();
    ASSERT_THAT(host.Functions(), ElementsAre(xlEnableXLMsgs, xlFree, xlDisableXLMsgs));
    EXPECT_THAT(host.entries[1].operands, ElementsAre(record));
    EXPECT_EQ(host.entries[1].result, nullptr);
}

TEST(CallExcel, ValueTellsTheOutcome) {
    struct Case {
        const char* name;
        std::function<int(const RecordingHost::Entry&, XLOPER12*)> answer;
        DWORD type;
        int error;
        int returnCode;
    };
    const auto failing = [](int code) {
        return [code](const RecordingHost::Entry&, XLOPER12* result) {
            result->xltype = xltypeStr;  // a failed call's leftovers
            result->val.str = nullptr;
            return code;
        };
    };
    const Case cases[] = {
        {"error of Excel's",
         [](const RecordingHost::Entry&, XLOPER12* result) {
             result->xltype = xltypeErr | xlbitXLFree;
             result->val.err = xlerrNA;
             return 0;
         },
         xltypeErr, xlerrNA, 0},
        {"aborted", failing(xlretAbort), xltypeErr, xlerrValue, xlretAbort},
        {"uncalculated", failing(xlretUncalced), xltypeErr, xlerrValue, xlretUncalced},
        {"several bits", failing(0x60), xltypeErr, xlerrValue, 0x60},
        {"negative", failing(-1), xltypeErr, xlerrValue, -1},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        RecordingHost host;
        host.answer = each.answer;
        const XXloperPtr result = CallExcel(xlUDF);
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(TypeOf(*result), each.type);
        EXPECT_EQ(result->val.err, each.error);
        EXPECT_EQ(result->val.returnCode, each.returnCode);
    }
}

TEST(CallExcel, FailedCallsGoThroughFreeLikeAnyOther) {
    RecordingHost host;
    host.answer = [](const RecordingHost::Entry&, XLOPER12*) { return xlretFailed; };
    host.entries.reserve(8);
    const std::int64_t before = support::LiveBlocks();
    CallExcel(xlUDF).reset();
    EXPECT_THAT(host.Functions(),
                ElementsAre(xlEnableXLMsgs, xlUDF, xlDisableXLMsgs, xlEnableXLMsgs, xlFree, xlDisableXLMsgs));
    host.entries.clear();
    EXPECT_EQ(support::LiveBlocks(), before);
}

TEST(CallExcel, WithoutExcelEveryCallFails) {
    ASSERT_EQ(Excel12EntryPoint, nullptr);
    EXPECT_EQ(Excel12(xlFree, nullptr, 0), xlretFailed);
    const XXloperPtr result = CallExcel(xlUDF, XXloperFromInt(1));
    EXPECT_EQ(result->xltype, xltypeErr);
    EXPECT_EQ(result->val.err, xlerrValue);
    EXPECT_EQ(result->val.returnCode, xlretFailed);
}

TEST(CallExcel, WithoutMemoryForTheRecordExcelIsNotCalled) {
    RecordingHost host;
    const support::AllocationFault fault(1);
    EXPECT_THROW(CallExcel(5), std::bad_alloc);
    EXPECT_TRUE(host.entries.empty());
}

TEST(CallExcel, WithoutMemoryForTheHandleExcelGetsItsResultBack) {
    RecordingHost host;
    // The next allocation but that of the recording's for this entry is the handle's.
    std::unique_ptr<support::AllocationFault> fault;
    host.entries.reserve(8);
    host.answer = [&](const RecordingHost::Entry&, XLOPER12* result) {
        result->xltype = xltypeNum;
        fault = std::make_unique<support::AllocationFault>(1);
        return 0;
    };
    const std::int64_t left = support::BlocksLeftBy([&] {
        host.entries.clear();
        EXPECT_THROW(CallExcel(5), std::bad_alloc);
        fault.reset();
    });
    EXPECT_THAT(host.Functions(),
                ElementsAre(xlEnableXLMsgs, 5, xlDisableXLMsgs, xlEnableXLMsgs, xlFree, xlDisableXLMsgs));
    EXPECT_EQ(left, 0);
}

TEST(Excel12, PassesEverythingThrough) {
    RecordingHost host;
    host.answer = [](const RecordingHost::Entry&, XLOPER12* result) {
        result->xltype = xltypeInt;
        return xlretUncalced;
    };
    XLOPER12 result{};
    XXloper one(1.0);
    XXloper two(2.0);
    EXPECT_EQ(Excel12(42, &result, 2, &one, &two), xlretUncalced);
    ASSERT_EQ(host.Functions(), std::vector<int>{42});
    EXPECT_THAT(host.entries[0].operands, ElementsAre(&one, &two));
    EXPECT_EQ(host.entries[0].result, &result);
    EXPECT_EQ(result.xltype, xltypeInt);
}

template <std::size_t... I>
int Excel12With(int count, XLOPER12* operand, std::index_sequence<I...>) {
    return Excel12(42, operand, count, (static_cast<void>(I), operand)...);
}

TEST(Excel12, TakesUpTo255Operands) {
    RecordingHost host;
    XXloper operand(1.0);
    const auto many = std::make_index_sequence<256>();
    EXPECT_EQ(Excel12With(256, &operand, many), xlretInvCount);
    EXPECT_EQ(Excel12With(-1, &operand, many), xlretInvCount);
    EXPECT_TRUE(host.entries.empty());
    EXPECT_EQ(Excel12With(255, &operand, many), xlretSuccess);
    ASSERT_EQ(host.entries.size(), 1u);
    EXPECT_EQ(host.entries[0].operands, std::vector<const XLOPER12*>(255, &operand));
}

}  // namespace
