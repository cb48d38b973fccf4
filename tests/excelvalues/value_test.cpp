// Values: what makers put in them, what copies share, and what goes with them.
#include "excelhost/value.h"
#include "excelvalues/xxloper.h"
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <tuple>

namespace {

using excelhost::Area;
using excelhost::Array;
using excelhost::Empty;
using excelhost::RecordFrom;
using excelhost::Reference;
using excelhost::Text;
using excelhost::Value;
using excelhost::ValueFrom;

const XXloper& Viewed(const XLOPER12& record) {
    return static_cast<const XXloper&>(record);
}

XLOPER12 Typed(DWORD type) {
    XLOPER12 record;
    std::memset(&record, 0xA5, sizeof record);
    record.xltype = type;
    return record;
}

constexpr DWORD plainTypes[] = {xltypeNum, xltypeBool, xltypeErr, xltypeFlow,    xltypeMissing, xltypeNil,
                                0,         xltypeSRef, xltypeInt, xltypeBigData, 0xABC};

// Arrays of arrays with all that owns something.
const Value everything = Array{2,
                               2,
                               {Array{1,
                                      2,
                                      {Array{2, 2, {Text(TEXT("a")), Text(), 1.0, Text(32767, u'w')}},
                                       Reference{7, {Area{{0, 1, 2, 3}}, Area{{4, 4, 4, 4}}}}}},
                                Text(TEXT("text")), Reference{9, {}}, Empty{}}};

TEST(Copy, IsDeepForEveryType) {
    for (const DWORD type : plainTypes) {
        const XLOPER12 source = Typed(type | xlbitXLFree | xlbitDLLFree);
        EXPECT_EQ(std::memcmp(XXloperCopy(Viewed(source)).get(), &source, sizeof source), 0);
    }
    for (const Value& value :
         {Value(Text(TEXT("a\0b"), 3)), Value(Reference{7, std::vector<Area>(1000)}), everything}) {
        XXloperPtr copy;
        {
            excelhost::Blocks lent;
            XLOPER12 source = RecordFrom(value, lent);
            source.xltype |= xlbitXLFree | xlbitDLLFree;
            copy = XXloperCopy(XXloperCopy(Viewed(source)));
            for (excelhost::Block& block : lent) std::memset(block.Payload(), 0xDD, block.Size());
        }
        EXPECT_EQ(ValueFrom(*copy), value);
    }
    EXPECT_EQ(XXloperCopy(XXloperPtr()), nullptr);
}

TEST(Copy, AFailureMidwayFreesWhatWasCopied) {
    excelhost::Blocks lent;
    const XLOPER12 source = RecordFrom(everything, lent);
    const auto copy = [&] { static_cast<void>(XXloperCopy(Viewed(source))); };
    // In order: the value's record with its counts; the blocks of the outer array, of the 1 x 2 array in it
    // and of the 2 x 2 array in that; the strings "a", "" and the long one; the reference to two areas;
    // "text"; the reference to none. Numbers and empty values have no block.
    EXPECT_EQ(support::AllocationsThatMayFail(copy), 1 + 3 + 3 + 1 + 1 + 1);

    XLOPER12 target = Typed(xltypeNum);
    const support::AllocationFault fault(5);
    EXPECT_THROW(kestrolumen::detail::CopyValue(target, source), std::bad_alloc);
    const XLOPER12 untouched = Typed(xltypeNum);
    EXPECT_EQ(std::memcmp(&target, &untouched, sizeof target), 0);
}

TEST(Values, GoWithAllThatTheirTypeOwns) {
    excelhost::Blocks lent;
    std::vector<XLOPER12> sources = {RecordFrom(everything, lent)};
    for (const DWORD type : plainTypes) sources.push_back(Typed(type));
    for (const DWORD type : {xltypeStr, xltypeRef, xltypeMulti}) {  // null pointers
        sources.push_back({});
        sources.back().xltype = type;
    }
    for (const XLOPER12& source : sources) {
        for (const DWORD flags : {DWORD{0}, xlbitXLFree, xlbitDLLFree, xlbitXLFree | xlbitDLLFree}) {
            const std::int64_t before = support::LiveBlocks();
            {
                XXloper value;
                kestrolumen::detail::CopyValue(value, source);
                value.xltype |= flags;
            }
            EXPECT_EQ(support::LiveBlocks(), before) << "type " << source.xltype << ", flags " << flags;
        }
    }
}

TEST(Values, TextEndsAtTheFirstZeroUnit) {
    for (const Text& text : {Text(), Text(TEXT("a\0bc"), 4), Text(32767, u'z')}) {
        excelhost::Blocks lent;
        const CStringW read = Viewed(RecordFrom(text, lent)).ToCStringW();
        EXPECT_EQ(read, text.c_str());
        EXPECT_EQ(read.GetLength(), static_cast<int>(Text(text.c_str()).size()));
    }
    XLOPER12 null{};
    EXPECT_TRUE(Viewed(null).ToCStringW().IsEmpty());
    static constexpr kestrolumen::CountedText fixed(TEXT("a\0b"));
    EXPECT_EQ(ValueFrom(fixed.Value()), Value(Text(TEXT("a\0b"), 3))) << "a text of the program is counted";
}

TEST(Makers, StringsKeepUpTo32767UnitsBeforeTheFirstZero) {
    for (const std::size_t length : {0u, 1u, 255u, 256u, 32766u, 32767u, 32768u, 100000u}) {
        Text text;
        for (std::size_t i = 0; i < length; ++i) text += static_cast<WCHAR>(u'a' + i % 26);
        const Value kept = text.substr(0, 32767);
        const std::string narrow(text.begin(), text.end());
        for (const XXloperPtr& value : {XXloperFromString(text), XXloperFromString(text.c_str()),
                                        XXloperFromString(narrow), XXloperFromString(narrow.c_str())}) {
            EXPECT_EQ(ValueFrom(*value), kept) << length;
        }
        EXPECT_EQ(ValueFrom(*XXloperFromString(narrow + '\x80')),
                  Value((text + TEXT('\x20AC')).substr(0, 32767)));
    }
    EXPECT_EQ(ValueFrom(*XXloperFromString(Text(TEXT("ab\0cd"), 5))), Value(Text(TEXT("ab"))));
    EXPECT_EQ(ValueFrom(*XXloperFromString(nullptr)), Value(Text()));
    EXPECT_EQ(ValueFrom(*XXloperFromString(static_cast<const WCHAR*>(nullptr))), Value(Text()));
    EXPECT_EQ(ValueFrom(*XXloperFromString(static_cast<const char*>(nullptr))), Value(Text()));
    EXPECT_EQ(ValueFrom(*XXloperFromString("\x80 \xE9")), Value(Text(TEXT("\x20AC \xE9"))));
}

TEST(Makers, LentBytesAndElementsAreNotCopied) {
    const std::vector<BYTE> bytes = {1, 2, 3};
    const XXloperPtr blob = XXloperFromBlob(bytes);
    EXPECT_EQ(blob->xltype, DWORD{xltypeBigData});
    EXPECT_EQ(blob->val.bigdata.h.lpbData, bytes.data());
    EXPECT_EQ(blob->val.bigdata.cbData, 3);
    std::vector<BYTE> none;
    none.reserve(1);
    EXPECT_EQ(XXloperFromBlob(none)->val.bigdata.h.lpbData, nullptr) << "though there is room";
    XLOPER12 record = Typed(xltypeStr), element = Typed(xltypeInt);
    SetSingleCellArray(record, &element);
    EXPECT_EQ(record.xltype, DWORD{xltypeMulti});
    EXPECT_EQ(record.val.array.lparray, &element);
    EXPECT_EQ(record.val.array.rows * record.val.array.columns, 1);
    SetErrorValue(element, xlerrNA);
    EXPECT_EQ(element.val.failure.returnCode, 0) << "whatever stood there";
    EXPECT_EQ(XXloperFromBool(2)->val.xbool, 2) << "the byte as it is";
}

TEST(ElementCount, IsZeroForANegativeCount) {
    for (const auto& [rows, columns] : {std::pair{-1, 2}, {2, -1}, {2, 0x18000}}) {
        XLOPER12 array{.val = {.array = {.lparray = nullptr, .rows = rows, .columns = columns}},
                       .xltype = xltypeMulti};
        EXPECT_EQ(ElementCount(array), 0u);
    }
}

TEST(Makers, NoMemoryRaisesBadAllocAndLeavesNothing) {
    static constexpr VARIANT empty{};
    const std::pair<std::function<XXloperPtr()>, int> makers[] = {
        // and the blocks of what they make
        {[] { return XXloperFromInt(1); }, 1},
        {[] { return XXloperFromVariant(empty); }, 1},
        {[] { return XXloperFromString(TEXT("wide text")); }, 2},
        {[] { return XXloperFromString("narrow text"); }, 2},
        {[] { return XXloperFromString("narrow \x80"); }, 2}};
    for (const auto& [make, blocks] : makers) {
        std::string words;
        const auto attempt = [&words, &make = make] {
            try {
                static_cast<void>(make());
            } catch (const std::bad_alloc& error) {
                words = error.what();
                throw;
            }
        };
        EXPECT_EQ(support::AllocationsThatMayFail(attempt), blocks);
        EXPECT_EQ(words, "bad allocation")
            << "the last one is the add-in's own: no library changes its words";
    }
}

}  // namespace
