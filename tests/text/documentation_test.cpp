// Every example of docs/text.md, run as the page has it.
#include "text/text.h"

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

using Bytes = std::vector<std::uint8_t>;

TEST(Documentation, ExamplesGiveWhatThePageSays) {
    const struct {
        const char* expression;
        std::string result;
        const char* shown;
    } examples[] = {
#include "text_examples.inc"
    };
    for (const auto& example : examples) EXPECT_EQ(example.result, example.shown) << example.expression;
}

}  // namespace
