// Escapes, quotes in sheet references, enclosures and field records. What docs/text.md has as an example and
// what fuzz/quoting_fuzz.cpp holds of any text isn't repeated.
#include "text/escapes.h"
#include "text/quoting.h"

#include <gtest/gtest.h>

namespace {

TEST(Escapes, TakeTextOfEveryClass) {
    const char* const narrow = "a ~<\x7f\t\xff";
    const WCHAR* const wide = TEXT("a ~<\x7f\t\x20ac");
    const std::string narrowEscaped = "a ~<<7F><09><FF>";
    const std::string wideEscaped = "a ~<<007F><0009><20AC>";
    EXPECT_EQ(EscapedTextA(narrow), narrowEscaped.c_str());
    EXPECT_EQ(EscapedTextA(CStringA(narrow)), narrowEscaped.c_str());
    EXPECT_EQ(EscapedTextA<std::string>(std::string(narrow)), narrowEscaped);
    EXPECT_EQ(EscapedTextW(wide), wideEscaped.c_str());
    EXPECT_EQ(EscapedTextW<std::string>(StdWString(wide)), wideEscaped);
    EXPECT_EQ(EscapedTextW<CStringW>(CStringW(wide)), CStringW(wideEscaped.c_str()));
    EXPECT_EQ(EscapedTextW<CStringW>(_bstr_t(wide)), CStringW(wideEscaped.c_str()));
}

TEST(Escapes, OfNothingAndOfZeroUnits) {
    EXPECT_TRUE(EscapedTextA(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(EscapedTextW(static_cast<const WCHAR*>(nullptr)).IsEmpty());
    EXPECT_TRUE(EscapedTextW(_bstr_t()).IsEmpty());
    EXPECT_EQ(EscapedTextA(std::string("a\0b", 3)), "a<00>b");
    EXPECT_EQ(EscapedTextA(CStringA("a\0b", 3)), "a<00>b");
    EXPECT_EQ(EscapedTextW(CStringW(TEXT("\0"), 1)), "<0000>");
}

TEST(SheetReferences, ApostrophesAreDoubledInTheSheetPartAlone) {
    const struct {
        const WCHAR* single;
        const WCHAR* doubled;
    } rows[] = {
        {TEXT("a'b!c'd!A'1"), TEXT("a''b!c''d!A'1")},
        {TEXT("'a"), TEXT("''a")},
        {TEXT("'!A1"), TEXT("''!A1")},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(SheetQuotesDoubled(row.single), row.doubled);
        EXPECT_EQ(SheetQuotesUndoubled(row.doubled), row.single);
    }
    EXPECT_EQ(SheetQuotesDoubled(TEXT("''!A1")), TEXT("''!A1"));
    EXPECT_EQ(SheetQuotesUndoubled(TEXT("''!A1")), TEXT("'!A1"));
    EXPECT_EQ(SheetQuotesUndoubled(TEXT("'''a'!A''1")), TEXT("''a'!A''1"));
}

}  // namespace
