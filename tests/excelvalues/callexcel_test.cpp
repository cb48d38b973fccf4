// Calls into Excel: what goes through the callback, in which order, and who gives results back.
#include "excelvalues/xxloper.h"
#include "support/allocations.h"
#include "support/emptypool.h"

#include <gmock/gmock.h>

#include <functional>
#include <utility>

namespace {

using testing::ElementsAre;

// The least that can stand in Excel's place: it notes each entry as it came, and answers as it is told to.
class CallExcelTest : public testing::Test {
  protected:
    struct Entry {
        int function;
        bool hasOperandArray;
        std::vector<const XLOPER12*> operands;
        const XLOPER12* result;
    };

    CallExcelTest() {
        entries.clear();
        entries.reserve(8);
        answer = [](XLOPER12*) { return xlretSuccess; };
        Excel12EntryPoint = &CallBack;
    }
    ~CallExcelTest() override { Excel12EntryPoint = nullptr; }

    static int PASCAL CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
        entries.push_back({function, operands != nullptr, {operands, operands + count}, result});
        const bool plain = function == xlFree || function == xlEnableXLMsgs || function == xlDisableXLMsgs;
        return plain ? xlretSuccess : answer(result);
    }

    static std::vector<int> Functions() {
        std::vector<int> functions;
        for (const Entry& entry : entries) functions.push_back(entry.function);
        return functions;
    }

    template <std::size_t... I>
    static void ExpectOperandsInOrder(std::index_sequence<I...>) {
        entries.clear();
        const std::vector<XXloperPtr> operands = {XXloperFromInt(static_cast<int>(I))...};
        const XXloperPtr result = CallExcel(7, operands[I]...);
        ASSERT_THAT(Functions(), ElementsAre(xlEnableXLMsgs, 7, xlDisableXLMsgs));
        EXPECT_EQ(entries[1].operands, (std::vector<const XLOPER12*>{operands[I].get()...}));
        EXPECT_EQ(entries[1].hasOperandArray, !operands.empty());
        EXPECT_EQ(entries[1].result, result.get());
        for (const XXloperPtr& operand : operands) EXPECT_EQ(operand.use_count(), 1);
        for (const Entry& bracket : {entries[0], entries[2]}) {
            EXPECT_TRUE(bracket.operands.empty());
            EXPECT_EQ(bracket.result, nullptr);
            EXPECT_FALSE(bracket.hasOperandArray);
        }
    }

    template <std::size_t... I>
    static int Excel12With(int count, XLOPER12* result, XLOPER12* operand, std::index_sequence<I...>) {
        return Excel12(42, result, count, (static_cast<void>(I), operand)...);
    }

    static inline std::vector<Entry> entries;
    // The return code of what is no xlFree and no switch of messages; fills its result.
    static inline std::function<int(XLOPER12* result)> answer;
};

// Excel reads through each operand: what is no value doesn't compile.
template <class... Operands>
concept IsCall = requires(const Operands&... operands) {
    CallExcel(42, operands...);
};
static_assert(IsCall<> && IsCall<XXloperPtr, XXloperPtr> && IsCall<XXloper*> &&
              IsCall<const XXloper*, XXloper*>);
static_assert(!IsCall<std::nullptr_t> && !IsCall<XXloper*, std::nullptr_t> && !IsCall<int> &&
              !IsCall<XXloper>);

TEST_F(CallExcelTest, PassesOperandsInOrderAndTakesNoReference) {
    answer = [](XLOPER12* result) {
        EXPECT_EQ(result->xltype, 0u);
        EXPECT_EQ(result->val.failure.returnCode, 0);
        return xlretSuccess;
    };
    [&]<std::size_t... Count>(std::index_sequence<Count...>) {
        (ExpectOperandsInOrder(std::make_index_sequence<Count>()), ...);
    }
    (std::index_sequence<0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 30>());
}

TEST_F(CallExcelTest, ValueTellsTheOutcomeAndGoesBackWhateverItIs) {
    const struct {
        int returnCode;
        DWORD type;  // what Excel leaves in the record, with xlerrNA
        int error;   // and what the value says
    } cases[] = {
        {xlretSuccess, xltypeErr | xlbitXLFree, xlerrNA},  // an error of Excel's
        {xlretAbort, xltypeStr, xlerrValue},
        {0x60, xltypeNil, xlerrValue},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.returnCode);
        answer = [&](XLOPER12* result) {
            result->xltype = each.type;
            result->val.err = xlerrNA;
            return each.returnCode;
        };
        const XLOPER12* record = nullptr;
        const std::int64_t left = support::BlocksLeftBy([&] {
            entries.clear();
            XXloperPtr result = CallExcel(xlUDF);
            EXPECT_EQ(TypeOf(*result), xltypeErr);
            EXPECT_EQ(result->val.err, each.error);
            EXPECT_EQ(result->val.failure.returnCode, each.returnCode);
            record = result.get();
            const XXloperPtr second = std::move(result);
        });
        EXPECT_EQ(entries.at(4).operands, std::vector<const XLOPER12*>{record})
            << "the very record goes back";
        EXPECT_EQ(left, 0);
        EXPECT_THAT(Functions(), ElementsAre(xlEnableXLMsgs, xlUDF, xlDisableXLMsgs, xlEnableXLMsgs, xlFree,
                                             xlDisableXLMsgs));
    }
}

TEST_F(CallExcelTest, TheCallForItsEffectAndTheLentHandleAskForNoMemory) {
    for (const int code : {xlretSuccess, xlretFailed}) {
        entries.clear();
        answer = [&](XLOPER12* result) {
            EXPECT_EQ(result->xltype, 0u);
            result->xltype = xltypeStr;
            return code;
        };
        XLOPER12 record{};
        const std::size_t before = support::Allocations();
        {
            const LentXXloper lent(&record);
            const XXloperPtr copy = lent.Handle();
            CallExcelForEffect(7, *copy);
        }
        EXPECT_EQ(support::Allocations() - before, 2u) << "the trace's own, two lists of one operand";
        EXPECT_THAT(Functions(),
                    ElementsAre(xlEnableXLMsgs, 7, xlDisableXLMsgs, xlEnableXLMsgs, xlFree, xlDisableXLMsgs));
        EXPECT_EQ(entries[1].operands, std::vector<const XLOPER12*>{&record});
        EXPECT_EQ(entries[4].operands, std::vector<const XLOPER12*>{entries[1].result});
    }
}

TEST_F(CallExcelTest, WithoutMemoryNoCallIsMadeOrExcelGetsItsResultBack) {
    const support::EmptyPool pool;
    {
        const support::AllocationFault fault(1);  // the record's
        EXPECT_THROW(static_cast<void>(CallExcel(5)), std::bad_alloc);
    }
    EXPECT_TRUE(entries.empty());

    std::unique_ptr<support::AllocationFault> fault;
    answer = [&](XLOPER12* result) {
        result->xltype = xltypeNum;
        fault = std::make_unique<support::AllocationFault>(1);  // the handle's
        return xlretSuccess;
    };
    const std::int64_t left = support::BlocksLeftBy([&] {
        entries.clear();
        EXPECT_THROW(static_cast<void>(CallExcel(5)), std::bad_alloc);
        fault.reset();
    });
    EXPECT_THAT(Functions(),
                ElementsAre(xlEnableXLMsgs, 5, xlDisableXLMsgs, xlEnableXLMsgs, xlFree, xlDisableXLMsgs));
    EXPECT_EQ(left, 0);
}

TEST_F(CallExcelTest, TheVariadicCallPassesUpTo255OperandsThrough) {
    answer = [](XLOPER12*) { return xlretUncalced; };
    XLOPER12 result{};
    XXloper operand(1.0);
    static_cast<void>(CallExcel(9, &operand, &operand));
    EXPECT_THAT(entries[1].operands, ElementsAre(&operand, &operand)) << "the call of plain pointers";
    entries.clear();
    const auto many = std::make_index_sequence<256>();
    EXPECT_EQ(Excel12With(256, &result, &operand, many), xlretInvCount);
    EXPECT_EQ(Excel12With(-1, &result, &operand, many), xlretInvCount);
    EXPECT_TRUE(entries.empty());
    EXPECT_EQ(Excel12With(255, &result, &operand, many), xlretUncalced);
    ASSERT_THAT(Functions(), ElementsAre(42));
    EXPECT_EQ(entries[0].operands, std::vector<const XLOPER12*>(255, &operand));
    EXPECT_EQ(entries[0].result, &result);
    Excel12EntryPoint = nullptr;
    for (const int count : {0, 1}) EXPECT_EQ(Excel12With(count, &result, &operand, many), xlretFailed);
}

// Both sides of every test read them from one header, and so agree on wrong ones as well.
TEST(CallExcel, FunctionsHaveTheirPublishedNumbers) {
    const std::pair<int, int> numbers[] = {{xlfError, 84}, {xlfRegister, 149},  {xlfUnregister, 201},
                                           {xlUDF, 255},   {xlSpecial, 0x4000}, {xlFree, 0x4000}};
    for (const auto& [ours, published] : numbers) EXPECT_EQ(ours, published);
}

}  // namespace
