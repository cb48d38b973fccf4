// Every example of docs/text.md is run, and every row of its tables is one of them.
#include "text/text.h"

#include <fstream>
#include <map>
#include <string>

#include <gtest/gtest.h>

namespace {

std::string Shown(const CStringW& text) {
    return Utf8FromCStringW(text);
}
std::string Shown(const CStringA& text) {
    return Shown(CStringW(text));
}
std::string Shown(const std::string& text) {
    return text;
}
std::string Shown(const StdWString& text) {
    return Utf8FromWString(text);
}
std::string Shown(const char* text) {
    return text;
}
std::string Shown(int number) {
    return std::to_string(number);
}
std::string Shown(const std::vector<std::uint8_t>& bytes) {
    return StdStringFromByteList(bytes, true);
}
std::string Shown(const std::vector<CStringW>& texts) {
    return Shown(CStringWFromVectorCStringW(texts));
}

int Column(const char* text) {
    return ColumnIndexFromLetters(&text);
}

CStringW FirstToken(const CStringW& text, const CStringW& delimiters) {
    int position = 0;
    return TokenizeQuotedW(text, delimiters, position);
}

CStringA FirstToken(const CStringA& text, const CStringA& delimiters) {
    int position = 0;
    return TokenizeQuotedA(text, delimiters, position);
}

// The text of the expression as it stands here is that of the page.
#define EXAMPLE(...) \
    { #__VA_ARGS__, Shown(__VA_ARGS__) }

using Bytes = std::vector<std::uint8_t>;

// clang-format off: one example a line.
const std::map<std::string, std::string>& Examples() {
    static const std::map<std::string, std::string> examples{
        EXAMPLE(CStringWFromAnsi("caf\xe9")),
        EXAMPLE(CStringAFromWide(TEXT("\x20ac \x4e2d"))),
        EXAMPLE(WStringFromUtf8("caf\xc3\xa9")),
        EXAMPLE(CStringWFromUtf8("caf\xc3\xa9", 5)),
        EXAMPLE(Utf8FromWString(TEXT("\x20ac"))),
        EXAMPLE(Utf8FromCStringW(TEXT("\x20ac"))),
        EXAMPLE(CStringWFormat(TEXT("%s: %I64d"), TEXT("row"), 7LL)),
        EXAMPLE(CStringAFormat("%5.2f", 2.5)),
        EXAMPLE(StdStringFormat("%04X", 255)),
        EXAMPLE(StdWStringFormat(TEXT("%S"), "narrow")),
        EXAMPLE(CStringWFromInt64Grouped(-1234567)),
        EXAMPLE(CStringWFromInt64Grouped(1234567, TEXT('.'))),
        EXAMPLE(CStringAFromInt64Grouped(1000)),
        EXAMPLE(CStringWFromDouble(1234.5, 7, '.')),
        EXAMPLE(CStringWFromDouble(0.0025, 7, ',')),
        EXAMPLE(CStringWFromDouble(123456.789, 4, '.')),
        EXAMPLE(CStringWFromDouble(99.99, 2, '.')),
        EXAMPLE(CStringWFromDouble(1234.0, 2, '.')),
        EXAMPLE(ColumnLettersFromIndex(16383)),
        EXAMPLE(Column("xfd1")),
        EXAMPLE(Column("12")),
        EXAMPLE(HexFromTextA("\xff\x41")),
        EXAMPLE(HexFromTextW(TEXT("\x00e9"))),
        EXAMPLE(HexFromBytes(Bytes{10, 255})),
        EXAMPLE(TextAFromHex("4a4B")),
        EXAMPLE(TextWFromHex(TEXT("20AC"))),
        EXAMPLE(BytesFromHex("0aFF1")),
        EXAMPLE(EscapedTextA("tab\t")),
        EXAMPLE(EscapedTextA<std::string>(std::string("\x7f"))),
        EXAMPLE(EscapedTextW(TEXT("5 \x20ac"))),
        EXAMPLE(EscapedTextW<CStringW>(TEXT("5 \x20ac"))),
        EXAMPLE(EscapedTextW<std::string>(TEXT("5 \x20ac"))),
        EXAMPLE(Text6FromBytes(Bytes{255})),
        EXAMPLE(BytesFromText6("$M")),
        EXAMPLE(DoubleQuotesDoubled("say \"yes\"")),
        EXAMPLE(DoubleQuotesUndoubled("\"\"\"\"")),
        EXAMPLE(SheetQuotesDoubled(TEXT("'It's'!A1"))),
        EXAMPLE(SheetQuotesUndoubled(TEXT("It''s!A1"))),
        EXAMPLE(WithLeadingEquals("A1")),
        EXAMPLE(WithoutLeadingEquals("==A1")),
        EXAMPLE(WithoutLeadingAt("@@A1")),
        EXAMPLE(WithoutLeadingAts("@@A1")),
        EXAMPLE(WithoutTrailingAts("A1@@")),
        EXAMPLE(WithoutDoubleQuotes("\"a\"")),
        EXAMPLE(WithoutParentheses("(a)(b)")),
        EXAMPLE(WithoutSingleQuotes("'a'")),
        EXAMPLE(FirstAndFourthField("a\1b\1c\1d")),
        EXAMPLE(CStringWFromVectorBool({true, false})),
        EXAMPLE(CStringWFromVectorByte({1, 2, 3, 4, 5}, 2, 1)),
        EXAMPLE(StdStringFromVectorInt16({-1, 2})),
        EXAMPLE(CStringAFromVectorUInt16({65535})),
        EXAMPLE(CStringWFromVectorInt32({-1, 2})),
        EXAMPLE(CStringAFromVectorUInt32({4294967295})),
        EXAMPLE(CStringAFromVectorPtrDiff({-1, 1})),
        EXAMPLE(CStringWFromVectorInt64({-1, 2})),
        EXAMPLE(CStringAFromVectorUInt64({18446744073709551615u})),
        EXAMPLE(CStringAFromVectorUInt64Hex({255})),
        EXAMPLE(CStringAFromVectorDouble({1, 2.5, 1234567})),
        EXAMPLE(CStringWFromVectorDouble({1, 2, 3, 4}, 1, 1)),
        EXAMPLE(StdStringFromVectorDouble({0.1})),
        EXAMPLE(CStringAFromChunkedVectorDouble({{{1, 2}, {3}}, 2, 1, 1})),
        EXAMPLE(CStringWFromVectorCStringA({"a", "b"})),
        EXAMPLE(CStringAFromVectorCStringW({"a", "b"})),
        EXAMPLE(StdStringFromVectorStdString({"a", ""})),
        EXAMPLE(StdStringFromVectorStdWString({TEXT("5 \x20ac")})),
        EXAMPLE(CStringWFromVectorPairCStringW({{"a", "b"}})),
        EXAMPLE(CStringAFromVectorVectorInt32({{1, 2}, {3}})),
        EXAMPLE(CStringAFromSetCStringA({"b", "a"})),
        EXAMPLE(CStringAFromSetCStringW({"b", "a"})),
        EXAMPLE(CStringAFromSharedVectorDouble(nullptr)),
        EXAMPLE(CStringAFromSharedVectorInt32(std::make_shared<std::vector<std::int32_t>>(2, 7))),
        EXAMPLE(CStringAFromByteList({10, 255}, true)),
        EXAMPLE(StdStringFromByteList({10, 255}, false)),
        EXAMPLE(SplitCStringW("a, ,b", ",", false)),
        EXAMPLE(SplitCStringW("a, ,b", ",", true)),
        EXAMPLE(FirstToken(CStringW("\"a,b\",c"), CStringW(","))),
        EXAMPLE(FirstToken(CStringA("a,b"), CStringA(","))),
        EXAMPLE(AbbreviatedA("abc12xyz", 2, 2)),
        EXAMPLE(AbbreviatedW("abc12xy", 2, 2)),
        EXAMPLE(FindNoCaseA("Hello", "LL")),
        EXAMPLE(CompareNoCaseStd("ABC", "abc")),
        EXAMPLE(TrimmedA(" a b ")),
        EXAMPLE(TrimmedW(TEXT("\ta\r\n"))),
        EXAMPLE(LowerA("ABC")),
        EXAMPLE(UpperW(TEXT("caf\x00e9"))),
        EXAMPLE(ReplacedA("a-b", "-", " - ")),
    };
    return examples;
}
// clang-format on

TEST(Documentation, ExamplesGiveWhatThePageSays) {
    std::ifstream page(TEXT_PAGE);
    ASSERT_TRUE(page.is_open());
    std::map<std::string, std::string> rows;
    for (std::string line; std::getline(page, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        // | `expression` | `result` |
        const auto middle = line.find("` | `");
        if (!line.starts_with("| `") || middle == line.npos) continue;
        rows[line.substr(3, middle - 3)] = line.substr(middle + 5, line.size() - middle - 8);
    }
    EXPECT_EQ(rows, Examples());
}

}  // namespace
