// What only a native test can set: a double-byte code page as the ANSI one, and the C library's locale.
#include "text/text.h"

#include "winapi/control.h"

#include <clocale>

#include <gtest/gtest.h>

namespace {

class Japanese : public testing::Test {
  protected:
    void SetUp() override { before = winapi::SetAnsiCodePage(932); }
    void TearDown() override { winapi::SetAnsiCodePage(before); }

    UINT before = 0;
    // Two characters whose second bytes are a backslash and an "A".
    const char* const so = "\x83\x5c";
    const char* const a = "\x83\x41";
};

TEST_F(Japanese, SecondBytesAreNoCharactersOfTheirOwn) {
    const CStringA text = CStringA(so) + "\\" + a + "a";
    ASSERT_EQ(CStringW(text), TEXT("\x30bd\\\x30a2"
                                   "a"));
    EXPECT_EQ(UpperA(text), CStringA(so) + "\\" + a + "A");
    EXPECT_EQ(ReplacedA(text, "\\", "/"), CStringA(so) + "/" + a + "a");
    EXPECT_EQ(EscapedTextA(text), "<83>\\\\<83>Aa");
    EXPECT_EQ(AbbreviatedA(text, 1, 1), CStringA("\x83...a"));

    const char* const begin = text;
    EXPECT_EQ(FindNoCaseA(begin, "\\"), begin + 2);
    EXPECT_EQ(FindNoCaseA(begin, "A"), begin + 5);
    EXPECT_EQ(FindNoCaseA(begin, a), begin + 3);
    EXPECT_EQ(FindNoCaseA(begin, "\x83\x61"), nullptr);
    EXPECT_EQ(FindNoCaseA(begin, "\x83"), nullptr);
    const char* const half = "x\x83";  // without its second byte
    EXPECT_EQ(FindNoCaseA(half, "\x83"), half + 1);
}

TEST_F(Japanese, TokensCountWideUnits) {
    const CStringA text = CStringA("\"") + so + "\\" + a + "\"x\\" + so + "\\\\" + a;
    int position = 0;
    EXPECT_EQ(TokenizeQuotedA(text, "\\", position), text.Left(8));
    EXPECT_EQ(position, 6);
    EXPECT_EQ(TokenizeQuotedA(text, "\\", position), so);
    EXPECT_EQ(position, 8);
    EXPECT_EQ(TokenizeQuotedA(text, "\\", position), a);
    EXPECT_EQ(position, 11);
    EXPECT_TRUE(TokenizeQuotedA(text, "\\", position).IsEmpty());
    EXPECT_EQ(position, -1);
}

}  // namespace
