// Tokens, shortening, trimming, case and search.
#include "text/search.h"
#include "text/tokens.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

TEST(Split, TakesWhatStandsBetweenRunsOfDelimiters) {
    const StdWString block(40, TEXT('x'));  // longer than what is searched at once
    const struct {
        StdWString text;
        const WCHAR* delimiters;
        std::vector<CStringW> tokens;
        bool trim = false;
    } rows[] = {
        {TEXT(""), TEXT(","), {}},
        {TEXT(",,a;,b,"), TEXT(",;"), {TEXT("a"), TEXT("b")}},
        {TEXT(" a, ,\x00a0"), TEXT(","), {TEXT("a")}, true},
        {block + TEXT("e") + block + TEXT("\x20ac"), TEXT("abcde\x20ac"), {block.c_str(), block.c_str()}},
        {block + TEXT(",") + block, TEXT(",;"), {block.c_str(), block.c_str()}},
        {block, TEXT(""), {block.c_str()}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(SplitCStringW(row.text.c_str(), row.delimiters, row.trim), row.tokens);
    }
}

TEST(TokenizeQuoted, KeepsWhatStandsInQuotesTogether) {
    const struct {
        const WCHAR* text;
        std::vector<CStringW> tokens;
    } rows[] = {
        {TEXT(",;,"), {}},
        {TEXT("x\"a,b\"y"), {TEXT("x\"a"), TEXT("b\"y")}},
        {TEXT("\"a\"b\"c,d\",e"), {TEXT("\"a\"b\"c,d\""), TEXT("e")}},
        {TEXT("a;\"b,c"), {TEXT("a"), TEXT("\"b,c")}},
        {TEXT(",,a;,b,,"), {TEXT("a"), TEXT("b")}},
        {TEXT("caf\x00e9,\"\x20ac,\""), {TEXT("caf\x00e9"), TEXT("\"\x20ac,\"")}},
    };
    for (const auto& row : rows) {
        int wide = 0;
        int narrow = 0;
        for (const CStringW& token : row.tokens) {
            EXPECT_EQ(TokenizeQuotedW(row.text, TEXT(",;"), wide), token);
            EXPECT_EQ(TokenizeQuotedA(row.text, ",;", narrow), CStringA(token));
            EXPECT_EQ(narrow, wide);
            EXPECT_GE(wide, 0);
        }
        for (int again = 0; again < 2; ++again) {
            EXPECT_TRUE(TokenizeQuotedW(row.text, TEXT(",;"), wide).IsEmpty());
            EXPECT_TRUE(TokenizeQuotedA(row.text, ",;", narrow).IsEmpty());
            EXPECT_EQ(wide, -1);
            EXPECT_EQ(narrow, -1);
        }
    }
    for (int position : {2, 100, std::numeric_limits<int>::max(), -2, std::numeric_limits<int>::min()}) {
        EXPECT_TRUE(TokenizeQuotedW(TEXT("ab"), TEXT(","), position).IsEmpty());
        EXPECT_EQ(position, -1);
    }
    int position = 0;
    EXPECT_EQ(TokenizeQuotedW(CStringW(TEXT("a\0b"), 3), TEXT(","), position), CStringW(TEXT("a\0b"), 3));
    position = 0;
    EXPECT_EQ(TokenizeQuotedA(CStringA("a\0b", 3), ",", position), "a");
    EXPECT_EQ(position, 1);
}

TEST(Abbreviated, NeverMakesATextLonger) {
    EXPECT_EQ(AbbreviatedA("abcd", 0, 0), "...");
    EXPECT_EQ(AbbreviatedA("abcdefgh", 0xFFFFFFFF, 0xFFFFFFFF), "abcdefgh");
}

template <typename Unit, typename Find>
void ExpectFound(Find find, const Unit* text, const Unit* sought, int expected) {
    const Unit* const found = find(text, sought);
    EXPECT_EQ(found == nullptr ? -1 : static_cast<int>(found - text), expected) << CStringA(sought);
}

TEST(FindNoCase, GivesTheFirstPlace) {
    ExpectFound(FindNoCaseA, "", "", -1);
    ExpectFound(FindNoCaseA, "[\\]^_`{|}", "{", 6);
    ExpectFound(FindNoCaseW, TEXT("Hello"), TEXT("hELLO"), 0);
    ExpectFound(FindNoCaseW, TEXT("x\x4e2d\xd83d"), TEXT("\xd83d"), 2);
    ExpectFound(FindNoCaseW, TEXT("ab"), TEXT("abc"), -1);
}

TEST(Functions, GiveAChangedTextOfTheSameClass) {
    EXPECT_EQ(TrimmedW(TEXT("\x3000\x2003\x00A0\x0085 x\x200B\x2028\x202F")), TEXT("x\x200B"));
    EXPECT_EQ(TrimmedA("\xA0x\x85 "), "\xA0x\x85");
    EXPECT_EQ(TrimmedA(std::string(" a\0 ", 4)), "a");
    EXPECT_EQ(TrimmedW(StdWString(TEXT(" a "))), StdWString(TEXT("a")));
    EXPECT_EQ(LowerA("\xc9"
                     "A["),
              "\xe9"
              "a[");
    EXPECT_EQ(UpperA("{a\xe9\xff\xb5\xdf\x9c"), "{A\xc9\x9f\xb5\xdf\x8c");
    EXPECT_EQ(LowerW(TEXT("\x00c9\x0416\x0130")), TEXT("\x00e9\x0436\x0130"));
    EXPECT_EQ(UpperW(TEXT("\x00e9\x0436\x4e2d\x00b5")), TEXT("\x00c9\x0416\x4e2d\x00b5"));
    EXPECT_EQ(LowerA(std::string("AB\0C", 4)), "ab");
    EXPECT_EQ(UpperA(std::string("ab")), "AB");
    EXPECT_EQ(LowerW(StdWString(TEXT("AB"))), StdWString(TEXT("ab")));
    EXPECT_EQ(UpperW(StdWString(TEXT("ab"))), StdWString(TEXT("AB")));
    EXPECT_EQ(ReplacedA(std::string("aXbX"), std::string("X"), std::string()), "ab");
    EXPECT_EQ(ReplacedW(StdWString(TEXT("aa")), StdWString(TEXT("a")), StdWString(TEXT("b"))),
              StdWString(TEXT("bb")));
    EXPECT_LT(CompareNoCaseStd(std::string("a"), std::string("B")), 0);
    EXPECT_GT(CompareNoCaseStd(StdWString(TEXT("\x00c9x")), StdWString(TEXT("\x00e9"))), 0);
}

}  // namespace
