#include "excelvalues/xxloper.h"
#include "recordinghost.h"
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

namespace {

template <typename T>
T* Block(std::size_t bytes) {
    return static_cast<T*>(std::calloc(1, bytes));
}

// Fills a record as the add-in's makers would, with blocks of the malloc heap.
void FillString(XLOPER12& record) {
    record.xltype = xltypeStr;
    record.val.str = Block<XCHAR>(3 * sizeof(XCHAR));
    record.val.str[0] = 2;
}

void FillReference(XLOPER12& record) {
    record.xltype = xltypeRef;
    record.val.mref.lpmref = Block<XLMREF12>(4 + 2 * sizeof(XLREF12));
    record.val.mref.lpmref->count = 2;
}

// An array of two rows and one column: a reference and an array of one string.
void FillNestedArray(XLOPER12& record) {
    record.xltype = xltypeMulti;
    record.val.array.rows = 2;
    record.val.array.columns = 1;
    record.val.array.lparray = Block<XLOPER12>(2 * sizeof(XLOPER12));
    FillReference(record.val.array.lparray[0]);
    XLOPER12& inner = record.val.array.lparray[1];
    inner.xltype = xltypeMulti;
    inner.val.array.rows = 1;
    inner.val.array.columns = 1;
    inner.val.array.lparray = Block<XLOPER12>(sizeof(XLOPER12));
    FillString(inner.val.array.lparray[0]);
}

TEST(Value, DestructionFreesWhatTheTypeOwns) {
    struct Case {
        const char* name;
        void (*fill)(XLOPER12&);
        std::int64_t blocks;
    };
    const Case cases[] = {
        {"string", FillString, 1},
        {"reference", FillReference, 1},
        {"nested array", FillNestedArray, 4},
        {"null string", [](XLOPER12& record) { record.xltype = xltypeStr; }, 0},
        {"null reference", [](XLOPER12& record) { record.xltype = xltypeRef; }, 0},
        {"null array",
         [](XLOPER12& record) {
             record.xltype = xltypeMulti;
             record.val.array.rows = record.val.array.columns = 3;
         },
         0},
    };
    for (const Case& each : cases) {
        for (const DWORD flags : {DWORD{0}, xlbitXLFree, xlbitDLLFree, xlbitXLFree | xlbitDLLFree}) {
            SCOPED_TRACE(std::string(each.name) + ", flags " + std::to_string(flags));
            const std::int64_t before = support::LiveBlocks();
            {
                XXloper value;
                std::memset(static_cast<XLOPER12*>(&value), 0, sizeof(XLOPER12));
                each.fill(value);
                value.xltype |= flags;
                EXPECT_EQ(support::LiveBlocks(), before + each.blocks);
            }
            EXPECT_EQ(support::LiveBlocks(), before);
        }
    }
}

TEST(Value, DestructionOfOtherTypesFollowsNoPointer) {
    for (const DWORD type : {xltypeNum, xltypeBool, xltypeErr, xltypeFlow, xltypeMissing, xltypeNil,
                             xltypeSRef, xltypeInt, xltypeBigData, DWORD{0}}) {
        const std::int64_t before = support::LiveBlocks();
        int canary = 0;
        {
            XXloper value;
            value.val.bigdata.h.hdata = &canary;  // would crash if it were freed
            value.xltype = type | xlbitXLFree;
        }
        EXPECT_EQ(support::LiveBlocks(), before) << "type " << type;
    }
}

TEST(Value, ElementsAreCountedByRowsAndTheLowHalfOfColumns) {
    struct Case {
        RW rows;
        COL columns;
        std::uint64_t count;
    };
    for (const Case& each : {Case{2, 3, 6}, Case{2, 0x70003, 6}, Case{1048576, 16384, 17179869184},
                             Case{0, 5, 0}, Case{5, 0, 0}, Case{5, 0x10000, 0}, Case{-1, 2, 0},
                             Case{2, -1, 0}, Case{-2, -3, 0}, Case{2147483647, 32767, 70366596661249}}) {
        XLOPER12 array{};
        array.xltype = xltypeMulti;
        array.val.array.rows = each.rows;
        array.val.array.columns = each.columns;
        EXPECT_EQ(ElementCount(array), each.count) << each.rows << " x " << each.columns;
    }
}

TEST(Value, DefaultPolicyGivesEverythingBackWithTheLastReference) {
    const std::int64_t before = support::LiveBlocks();
    XXloperPtr value = XXloperFromString(TEXT("text"));
    XXloperPtr second = value;
    EXPECT_EQ(value.use_count(), 2);
    value.reset();
    EXPECT_EQ(second->ToCStringW(), CStringW(TEXT("text")));
    second.reset();
    EXPECT_EQ(support::LiveBlocks(), before);
}

TEST(Value, LentRecordsAreLeftAlone) {
    RecordingHost host;
    XCHAR text[] = {1, u'x'};
    XLOPER12 lent{};
    lent.xltype = xltypeStr;
    lent.val.str = text;
    XLOPER12 asLent;
    std::memcpy(&asLent, &lent, sizeof lent);
    {
        const XXloperPtr handle = XXloperLentByExcel(&lent);
        const XXloperPtr copy = handle;
        EXPECT_EQ(static_cast<const XLOPER12*>(copy.get()), &lent);
        EXPECT_EQ(copy->val.str, text);
    }
    EXPECT_EQ(std::memcmp(&asLent, &lent, sizeof lent), 0);
    EXPECT_TRUE(host.entries.empty());
}

TEST(Value, TextEndsAtTheFirstZeroUnit) {
    struct Case {
        std::basic_string<XCHAR> counted;
        StdWString text;
    };
    const Case cases[] = {
        {{0}, {}},
        {{3, u'a', u'b', u'c'}, TEXT("abc")},
        {{4, u'a', 0, u'b', u'c'}, TEXT("a")},
        {{2, 0, u'b'}, {}},
        {{2, 0xD83D, 0xDE00}, {WCHAR(0xD83D), WCHAR(0xDE00)}},
    };
    for (const Case& each : cases) {
        XLOPER12 record{};
        record.xltype = xltypeStr | xlbitXLFree;
        std::basic_string<XCHAR> counted = each.counted;
        record.val.str = counted.data();
        EXPECT_EQ(XXloperLentByExcel(&record)->ToCStringW(), CStringW(each.text.c_str()));
    }
    std::basic_string<XCHAR> longest(32768, u'z');
    longest[0] = 32767;
    XLOPER12 record{};
    record.xltype = xltypeStr;
    record.val.str = longest.data();
    EXPECT_EQ(XXloperLentByExcel(&record)->ToCStringW().GetLength(), 32767);
    record.val.str = nullptr;
    EXPECT_TRUE(XXloperLentByExcel(&record)->ToCStringW().IsEmpty());
}

TEST(Value, HandlesAreReleasedOnAnyThread) {
    const std::int64_t before = support::LiveBlocks();
    {
        const XXloperPtr shared = XXloperFromString("shared");
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([shared] {
                for (int round = 0; round < 1000; ++round) {
                    const XXloperPtr copy = shared;
                    ASSERT_EQ(copy->val.str[0], 6);
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(shared.use_count(), 1);
    }
    EXPECT_LE(support::LiveBlocks(), before + 4);  // a thread may leave a block of its runtime's
}

}  // namespace
