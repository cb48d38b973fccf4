#include "excelvalues/xxloper.h"
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <deque>

namespace {

// Records as Excel lends them: nothing in them belongs to the add-in, least of all on its heap.
class Lender {
  public:
    XLOPER12 String(const StdWString& text, DWORD flags = 0) {
        auto& counted = texts_.emplace_back(1, static_cast<XCHAR>(text.size()));
        counted += text;
        XLOPER12 record = Blank(xltypeStr | flags);
        record.val.str = counted.data();
        return record;
    }

    XLOPER12 Reference(WORD count) {
        auto& block = references_.emplace_back(4 + count * sizeof(XLREF12));
        for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::byte>(i * 7);
        XLOPER12 record = Blank(xltypeRef);
        record.val.mref.lpmref = reinterpret_cast<XLMREF12*>(block.data());
        record.val.mref.lpmref->count = count;
        record.val.mref.idSheet = 77;
        return record;
    }

    XLOPER12 Array(RW rows, COL columns, std::vector<XLOPER12> elements) {
        XLOPER12 record = Blank(xltypeMulti);
        record.val.array.lparray = arrays_.emplace_back(std::move(elements)).data();
        record.val.array.rows = rows;
        record.val.array.columns = columns;
        return record;
    }

    static XLOPER12 Blank(DWORD type) {
        XLOPER12 record;
        std::memset(&record, 0xA5, sizeof record);
        record.xltype = type;
        return record;
    }

  private:
    std::deque<std::basic_string<XCHAR>> texts_;
    std::deque<std::vector<std::byte>> references_;
    std::deque<std::vector<XLOPER12>> arrays_;
};

const XXloper& Viewed(const XLOPER12& record) {
    return static_cast<const XXloper&>(record);
}

// Equal in content, with no buffer shared.
void ExpectDeepCopy(const XLOPER12& copy, const XLOPER12& source) {
    ASSERT_EQ(copy.xltype, source.xltype);
    switch (TypeOf(source)) {
        case xltypeStr:
            ASSERT_NE(copy.val.str, source.val.str);
            EXPECT_EQ(std::memcmp(copy.val.str, source.val.str, (source.val.str[0] + 1u) * 2), 0);
            break;
        case xltypeRef:
            ASSERT_NE(copy.val.mref.lpmref, source.val.mref.lpmref);
            EXPECT_EQ(copy.val.mref.idSheet, source.val.mref.idSheet);
            EXPECT_EQ(std::memcmp(copy.val.mref.lpmref, source.val.mref.lpmref,
                                  source.val.mref.lpmref->count * 16u + 4),
                      0);
            break;
        case xltypeMulti:
            ASSERT_NE(copy.val.array.lparray, source.val.array.lparray);
            EXPECT_EQ(copy.val.array.rows, source.val.array.rows);
            EXPECT_EQ(copy.val.array.columns, source.val.array.columns);
            for (std::uint64_t i = 0; i < ElementCount(source); ++i) {
                ExpectDeepCopy(copy.val.array.lparray[i], source.val.array.lparray[i]);
            }
            break;
        default:
            EXPECT_EQ(std::memcmp(&copy, &source, sizeof source), 0);
    }
}

// An array with every kind of element, arrays of arrays among them.
XLOPER12 Everything(Lender& lender) {
    XLOPER12 number = Lender::Blank(xltypeNum | xlbitXLFree);
    number.val.num = -0.0;
    const XLOPER12 strings =
        lender.Array(2, 3,
                     {lender.String(TEXT("a")), lender.String(TEXT("")), lender.String(TEXT("ccc")), number,
                      lender.String(StdWString(32767, u'w')), Lender::Blank(xltypeNil)});
    const XLOPER12 deeper = lender.Array(1, 2, {strings, lender.Reference(3)});
    return lender.Array(4, 2,
                        {number, deeper, lender.String(TEXT("flagged"), xlbitXLFree), lender.Reference(0),
                         Lender::Blank(xltypeErr), Lender::Blank(xltypeBool),
                         lender.Array(0, 5, std::vector<XLOPER12>(1)), Lender::Blank(xltypeMissing)});
}

TEST(Copy, IsDeepForEveryType) {
    Lender lender;
    std::vector<XLOPER12> sources;
    for (const DWORD type : {xltypeNum, xltypeBool, xltypeErr, xltypeFlow, xltypeMissing, xltypeNil,
                             xltypeSRef, xltypeInt, xltypeBigData, DWORD{0}, DWORD{0xABC}}) {
        sources.push_back(Lender::Blank(type));
        sources.push_back(Lender::Blank(type | xlbitXLFree | xlbitDLLFree));
    }
    sources.push_back(lender.String(TEXT("text"), xlbitXLFree));
    sources.push_back(lender.String(StdWString(TEXT("a\0b"), 3)));
    sources.push_back(lender.String(StdWString(65535, u'x')));  // more than Excel counts, all of it is there
    sources.push_back(lender.Reference(0));
    sources.push_back(lender.Reference(1000));
    sources.push_back(Everything(lender));
    for (const XLOPER12& source : sources) {
        SCOPED_TRACE(source.xltype);
        EXPECT_EQ(support::BlocksLeftBy([&] {
                      ExpectDeepCopy(*XXloperCopy(Viewed(source)), source);
                      ExpectDeepCopy(*XXloperCopy(XXloperCopy(Viewed(source))), source);
                  }),
                  0);
    }
}

TEST(Copy, OutlivesItsSource) {
    XXloperPtr copy;
    {
        Lender lender;
        copy = XXloperCopy(Viewed(lender.Array(1, 1, {lender.String(TEXT("kept"))})));
    }
    EXPECT_EQ(Viewed(copy->val.array.lparray[0]).ToCStringW(), CStringW(TEXT("kept")));
}

TEST(Copy, NullPointersStayNull) {
    for (const DWORD type : {xltypeStr, xltypeRef, xltypeMulti}) {
        XLOPER12 record{};
        record.xltype = type;
        if (type == xltypeMulti) record.val.array.rows = record.val.array.columns = 2;
        const std::int64_t before = support::LiveBlocks();
        {
            const XXloperPtr copy = XXloperCopy(Viewed(record));
            EXPECT_EQ(std::memcmp(copy.get(), &record, sizeof record), 0);
            EXPECT_EQ(support::LiveBlocks(), before + 1);
        }
        EXPECT_EQ(support::LiveBlocks(), before);
    }
    EXPECT_EQ(XXloperCopy(XXloperPtr()), nullptr);
}

TEST(Copy, ReleasesTheHandleWhenDone) {
    XXloperPtr source = XXloperFromString("text");
    const std::weak_ptr<const XXloper> watched = source;
    const XXloperPtr copy = XXloperCopy(std::move(source));
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(copy->ToCStringW(), CStringW(TEXT("text")));
}

TEST(Copy, ReadsTheLowHalfOfColumns) {
    Lender lender;
    const XLOPER12 source = lender.Array(1, 0x50002, {lender.String(TEXT("a")), lender.String(TEXT("b"))});
    const XXloperPtr copy = XXloperCopy(Viewed(source));
    EXPECT_EQ(copy->val.array.columns, 0x50002);
    ExpectDeepCopy(*copy, source);
}

TEST(Copy, ArraysWithoutElementsHaveABlock) {
    for (const auto& [rows, columns] :
         {std::pair{0, 3}, std::pair{3, 0}, std::pair{-1, 4}, std::pair{4, -1}}) {
        Lender lender;
        const XLOPER12 source = lender.Array(rows, columns, std::vector<XLOPER12>(1));
        const XXloperPtr copy = XXloperCopy(Viewed(source));
        EXPECT_NE(copy->val.array.lparray, nullptr);
        EXPECT_NE(copy->val.array.lparray, source.val.array.lparray);
    }
}

TEST(Copy, GoesToAnyDepth) {
    Lender lender;
    XLOPER12 nested = lender.String(TEXT("core"));
    for (int depth = 0; depth < 1000; ++depth) nested = lender.Array(1, 1, {nested});
    EXPECT_EQ(support::BlocksLeftBy([&] { ExpectDeepCopy(*XXloperCopy(Viewed(nested)), nested); }), 0);
}

TEST(Copy, LargeMixedArraysComeOutWhole) {
    Lender lender;
    std::vector<XLOPER12> cells;
    for (int i = 0; i < 300 * 100; ++i) {
        // Runs of numbers of every length up to 63 between cells that own something.
        if (i % 64 == i / 64 % 64) {
            cells.push_back(lender.String(i % 2 == 0 ? TEXT("even") : TEXT("odd")));
        } else {
            XLOPER12 number = Lender::Blank(xltypeNum);
            number.val.num = i;
            cells.push_back(number);
        }
    }
    const XLOPER12 source = lender.Array(300, 100, cells);
    ExpectDeepCopy(*XXloperCopy(Viewed(source)), source);
}

TEST(Copy, ASizeBeyondMemoryIsRefused) {
    XLOPER12 record{};
    record.xltype = xltypeMulti;
    record.val.array.lparray = &record;
    record.val.array.rows = 2147483647;
    record.val.array.columns = 32767;
    const std::int64_t before = support::LiveBlocks();
    const support::AllocationFault fault(2);  // a sanitizer's heap would end the program instead of refusing
    EXPECT_THROW(static_cast<void>(XXloperCopy(Viewed(record))), std::bad_alloc);
    EXPECT_EQ(support::LiveBlocks(), before);
}

TEST(Copy, AFailureMidwayFreesWhatWasCopied) {
    Lender lender;
    const XLOPER12 source = Everything(lender);
    std::size_t faults = 0;
    std::size_t raised = 0;
    EXPECT_EQ(support::BlocksLeftBy([&] {
                  raised = 0;
                  faults = support::FailEachAllocation(
                      [&] {
                          try {
                              static_cast<void>(XXloperCopy(Viewed(source)));
                          } catch (const std::bad_alloc&) {
                              ++raised;
                          }
                      },
                      [] {});
              }),
              0);
    EXPECT_EQ(faults, 12u);  // record, 4 arrays, 5 strings, 2 references
    EXPECT_EQ(raised, faults);
}

TEST(Copy, AFailedCopyIntoARecordLeavesItAsItWas) {
    Lender lender;
    const XLOPER12 source = Everything(lender);
    XLOPER12 target = Lender::Blank(xltypeNum);
    const XLOPER12 untouched = target;
    const support::AllocationFault fault(5);
    EXPECT_THROW(detail::CopyValue(target, source), std::bad_alloc);
    EXPECT_EQ(std::memcmp(&target, &untouched, sizeof target), 0);
}

}  // namespace
