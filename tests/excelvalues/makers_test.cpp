#include "excelvalues/xxloper.h"
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

namespace {

StdWString CountedText(const XXloper& value) {
    return StdWString(value.val.str + 1, value.val.str[0]);
}

TEST(Makers, IntegersBooleansAndErrorsStandAsGiven) {
    for (const int number : {0, 1, -5, 2147483647, -2147483647 - 1}) {
        const XXloperPtr value = XXloperFromInt(number);
        EXPECT_EQ(value->xltype, xltypeInt);
        EXPECT_EQ(value->val.w, number);
    }
    for (const BYTE truth : {BYTE{0}, BYTE{1}, BYTE{2}, BYTE{255}}) {
        const XXloperPtr value = XXloperFromBool(truth);
        EXPECT_EQ(value->xltype, xltypeBool);
        EXPECT_EQ(value->val.xbool, truth);
    }
    for (const int code : {0, 15, 42, 2015, -1}) {
        const XXloperPtr value = XXloperFromError(code);
        EXPECT_EQ(value->xltype, xltypeErr);
        EXPECT_EQ(value->val.err, code);
        EXPECT_EQ(value->val.returnCode, 0);
    }
    EXPECT_EQ(XXloperFlow()->xltype, xltypeFlow);
    EXPECT_EQ(XXloperMissing()->xltype, xltypeMissing);
    EXPECT_EQ(XXloperNil()->xltype, xltypeNil);
}

TEST(Makers, StringsKeepUpTo32767Units) {
    for (const std::size_t length : {0u, 1u, 2u, 255u, 256u, 32766u, 32767u, 32768u, 40000u, 100000u}) {
        SCOPED_TRACE(length);
        StdWString text;
        for (std::size_t i = 0; i < length; ++i) text += static_cast<WCHAR>(u'a' + i % 26);
        const StdWString kept = text.substr(0, 32767);
        const std::string narrow(text.begin(), text.end());
        for (const XXloperPtr& value : {XXloperFromString(text), XXloperFromString(text.c_str()),
                                        XXloperFromString(narrow), XXloperFromString(narrow.c_str())}) {
            ASSERT_EQ(value->xltype, xltypeStr);
            EXPECT_EQ(CountedText(*value), kept);
        }
    }
}

TEST(Makers, StringsEndAtTheFirstZeroUnit) {
    EXPECT_EQ(CountedText(*XXloperFromString(StdWString(TEXT("ab\0cd"), 5))), TEXT("ab"));
    EXPECT_EQ(CountedText(*XXloperFromString(std::string("ab\0cd", 5))), TEXT("ab"));
    EXPECT_EQ(CountedText(*XXloperFromString(static_cast<const WCHAR*>(nullptr))), TEXT(""));
    EXPECT_EQ(CountedText(*XXloperFromString(static_cast<const char*>(nullptr))), TEXT(""));
}

TEST(Makers, NarrowTextIsOfTheAnsiCodePage) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
    const CStringW wide = CStringWFromAnsi(bytes.c_str());
    EXPECT_EQ(CountedText(*XXloperFromString(bytes)), StdWString(wide.GetString()));
}

// The block is exactly what the count asks for: a sanitizer sees any unit too many.
TEST(Makers, StringBlockHasCountAndUnitsAndNoTerminator) {
    const XXloperPtr empty = XXloperFromString("");
    EXPECT_EQ(empty->val.str[0], 0);
    const std::int64_t before = support::LiveBlocks();
    const XXloperPtr value = XXloperFromString(TEXT("x"));
    EXPECT_EQ(support::LiveBlocks(), before + 2);  // record with its counts, text
}

TEST(Makers, BlobsAreViews) {
    std::vector<BYTE> bytes = {1, 2, 3};
    const XXloperPtr value = XXloperFromBlob(bytes);
    EXPECT_EQ(value->xltype, xltypeBigData);
    EXPECT_EQ(value->val.bigdata.h.lpbData, bytes.data());
    EXPECT_EQ(value->val.bigdata.cbData, 3);
    bytes.clear();
    bytes.reserve(10);
    const XXloperPtr empty = XXloperFromBlob(bytes);
    EXPECT_EQ(empty->val.bigdata.h.lpbData, nullptr);
    EXPECT_EQ(empty->val.bigdata.cbData, 0);
}

TEST(Makers, RecordsAreFilledInPlace) {
    XLOPER12 record;
    std::memset(&record, 0xEE, sizeof record);
    SetErrorValue(record, xlerrRef);
    EXPECT_EQ(record.xltype, xltypeErr);
    EXPECT_EQ(record.val.err, xlerrRef);
    EXPECT_EQ(record.val.returnCode, 0);

    XLOPER12 element{};
    SetSingleCellArray(record, &element);
    EXPECT_EQ(record.xltype, xltypeMulti);
    EXPECT_EQ(record.val.array.lparray, &element);
    EXPECT_EQ(record.val.array.rows, 1);
    EXPECT_EQ(record.val.array.columns, 1);
}

TEST(Makers, NoMemoryRaisesBadAllocAndLeavesNothing) {
    const StdWString wide = TEXT("some text");
    VARIANT variant{};
    variant.vt = VT_I4;
    const std::vector<BYTE> blob(4);
    const std::function<XXloperPtr()> makers[] = {
        [] { return XXloperFromInt(1); },        [] { return XXloperFromBool(1); },
        [] { return XXloperFromError(15); },     [] { return XXloperFlow(); },
        [] { return XXloperMissing(); },         [] { return XXloperNil(); },
        [] { return XXloperFromDouble(1.5); },   [] { return XXloperFromNumber(1.5); },
        [&] { return XXloperFromBlob(blob); },   [&] { return XXloperFromVariant(variant); },
        [&] { return XXloperFromString(wide); }, [] { return XXloperFromString("narrow text"); },
    };
    for (const auto& make : makers) {
        SCOPED_TRACE(&make - makers);
        std::size_t faults = 0;
        std::vector<bool> raised;
        raised.reserve(16);
        bool ownText = false;
        const std::int64_t left = support::BlocksLeftBy([&] {
            raised.clear();
            faults = support::FailEachAllocation(
                [&] {
                    try {
                        static_cast<void>(make());
                    } catch (const std::bad_alloc& error) {
                        raised.push_back(true);
                        ownText = std::string_view(error.what()) == "bad allocation";
                    }
                },
                [] {});
        });
        EXPECT_EQ(left, 0);
        EXPECT_GE(faults, 1u);
        EXPECT_EQ(raised.size(), faults);
        EXPECT_TRUE(ownText) << "the last allocation is the add-in's own, in words that no library changes";
    }
}

}  // namespace
