// What only a native test can set: a double-byte code page as the ANSI one, and the C library's locale.
#include "text/text.h"

#include "winapi/control.h"

#include <clocale>
#include <random>

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

    // Kana of one byte take none with them.
    const CStringA kana = "\xb1\\\xb2\\\xb3";
    position = 0;
    for (const auto& [token, end] : {std::pair{"\xb1", 1}, {"\xb2", 3}, {"\xb3", 5}}) {
        EXPECT_EQ(TokenizeQuotedA(kana, "\\", position), token);
        EXPECT_EQ(position, end);
    }
}

// Each of the texts is one run of bytes that could be the first or the second half of a character.
TEST_F(Japanese, LongRunsTakeOneReading) {
    CStringA text;
    std::mt19937 random(7);
    for (int i = 0; i < 100'000; ++i) {
        const char character[] = {'\x93', static_cast<char>(0x93 + random() % 8)};  // NOLINT
        text.Append(character, 2);
        if (i % 5 == 0) text += ",";
    }
    const CStringW wide = text;
    EXPECT_EQ(CStringW(ReplacedA(text, "\x93\x93", "\x81\x97")),
              ReplacedW(wide, TEXT("\u6d9b"), TEXT("\uff20")));
    text.Replace(",", "");
    CStringW unbroken = text;
    EXPECT_EQ(text.Replace("\x93\x93", "ab"), unbroken.Replace(TEXT("\u6d9b"), TEXT("ab")));
    EXPECT_EQ(CStringW(text), unbroken);
    text = wide;
    int narrow = 0, unit = 0;
    for (int count = 0; count < 2'000; ++count) {
        EXPECT_EQ(CStringW(TokenizeQuotedA(text, ",", narrow)), TokenizeQuotedW(wide, TEXT(","), unit));
        ASSERT_EQ(narrow, unit);
    }
}

}  // namespace
