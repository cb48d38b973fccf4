#include "codepagetext.h"

#include <cstdint>
#include <vector>

namespace {

constexpr UINT western = 1252;
constexpr UINT japanese = 932;

using Outcome = std::pair<int, DWORD>;

// What a call gave, and the error it left if it gave 0.
template <class Call>
Outcome OutcomeOf(Call call) {
    SetLastError(ERROR_SUCCESS);
    const int result = call();
    return {result, result == 0 ? GetLastError() : ERROR_SUCCESS};
}

constexpr Outcome badParameter{0, ERROR_INVALID_PARAMETER};
constexpr Outcome noRoom{0, ERROR_INSUFFICIENT_BUFFER};
constexpr Outcome illFormed{0, ERROR_NO_UNICODE_TRANSLATION};

TEST(CodePages, ConversionsKeepTheirContract) {
    const auto toWide = [](UINT codePage, DWORD flags, const char* source, int length, int size) {
        WCHAR room[8];
        return OutcomeOf([&] { return MultiByteToWideChar(codePage, flags, source, length, room, size); });
    };
    EXPECT_EQ(toWide(western, 0, "abc", -1, 8), (Outcome{4, 0})) << "terminated";
    EXPECT_EQ(toWide(western, 0, "a\0b", 3, 8), (Outcome{3, 0})) << "a zero inside";
    EXPECT_EQ(toWide(western, 0, "abc", -1, 3), noRoom) << "for the terminator";
    EXPECT_EQ(toWide(western, 0, "", 0, 8), badParameter);
    EXPECT_EQ(toWide(western, 0, nullptr, 1, 8), badParameter);
    EXPECT_EQ(toWide(12345, 0, "abc", 3, 8), badParameter) << "an unknown page";
    EXPECT_EQ(toWide(western, 0x100, "abc", 3, 8), (Outcome{0, ERROR_INVALID_FLAGS}));
    constexpr DWORD strict = MB_ERR_INVALID_CHARS;
    EXPECT_EQ(toWide(CP_UTF8, strict, "\xC3(", 2, 8), illFormed);
    EXPECT_EQ(toWide(japanese, strict, "\x81\x20", 2, 8), illFormed) << "a pair without meaning";
    EXPECT_EQ(toWide(japanese, strict, "a\x82", 2, 8), illFormed) << "a lone lead byte";
    EXPECT_EQ(toWide(japanese, strict, "\xFD", 1, 8), illFormed) << "an undefined byte";
    EXPECT_EQ(toWide(western, strict, "\x81\x8D", 2, 8), (Outcome{2, 0})) << "control characters";

    const auto toNarrow = [](UINT codePage, DWORD flags, const WCHAR* source, int length, int size) {
        char room[8];
        return OutcomeOf([&] {
            return WideCharToMultiByte(codePage, flags, source, length, room, size, nullptr, nullptr);
        });
    };
    EXPECT_EQ(toNarrow(western, 0, TEXT("abc"), -1, 8), (Outcome{4, 0}));
    EXPECT_EQ(toNarrow(CP_UTF8, 0, TEXT("\xE9"), -1, 8), (Outcome{3, 0}));
    EXPECT_EQ(toNarrow(japanese, 0, TEXT("a\x3042"), 2, 2), noRoom) << "for half a double byte";
    EXPECT_EQ(toNarrow(western, 0, TEXT(""), 0, 8), badParameter);
    EXPECT_EQ(toNarrow(12345, 0, TEXT("abc"), 3, 8), badParameter);
    EXPECT_EQ(toNarrow(CP_UTF8, WC_ERR_INVALID_CHARS, TEXT("\xD83D\xDE00"), 1, 8), illFormed);
}

TEST(CodePages, LackingUnitsBecomeTheDefaultCharacter) {
    const struct {
        UINT codePage;
        WideView text;
        const char* defaultChar;
        const char* expected;
        bool used;
    } rows[] = {
        {western, TEXT("\xE9t\xE9 \x20AC"), nullptr, "\xE9t\xE9 \x80", false},
        {western, TEXT("\xD83D\xDE00!"), nullptr, "\?\?!", true},  // one for each half of the pair
        {japanese, TEXT("\x3042\x05D0\xFF71"), nullptr, "\x82\xA0?\xB1", true},
        {japanese, TEXT("\x05D0"), "\x81\xAC", "\x81\xAC", true},
    };
    for (const auto& row : rows) {
        const Wide source = Wide(40, TEXT('x')) + Wide(row.text);
        char result[100];
        BOOL used = 2;
        const int bytes = WideCharToMultiByte(row.codePage, WC_NO_BEST_FIT_CHARS, source.data(),
                                              static_cast<int>(source.size()), result, sizeof result,
                                              row.defaultChar, &used);
        EXPECT_EQ(std::string(result, static_cast<std::size_t>(bytes)), std::string(40, 'x') + row.expected);
        EXPECT_EQ(used, row.used ? TRUE : FALSE) << row.expected;
    }
}

TEST(CodePages, DoubleByteTextIsTakenInPairs) {
    const std::pair<std::string_view, WideView> rows[] = {
        {"\x82\x60z", TEXT("\xFF21z")},
        {"\xB1\x5C\x7E", TEXT("\xFF71\\~")},  // half-width katakana; ASCII is itself
        {"\x81\x20x", TEXT("\x30FBx")},       // a pair that means nothing is one character
        {"x\x82", TEXT("x\x30FB")},           // a lead byte at the end
        {std::string_view("\x82\0x", 3), WideView(TEXT("\x30FB\0x"), 3)},  // and before a zero byte
    };
    for (const auto& [bytes, expected] : rows) {
        EXPECT_EQ(WideOf(japanese, bytes), expected);
        EXPECT_EQ(WideOf(japanese, std::string(37, 'a').append(bytes)), Wide(37, TEXT('a')).append(expected));
    }
}

std::uint32_t Fold(std::uint32_t sum, std::uint32_t value) {
    return (sum ^ value) * 16777619u;
}

// Both directions of whole pages, each in a number, so that the homes can be held against each other.
TEST(CodePages, WholePagesAreAlikeInBothHomes) {
    const struct {
        UINT codePage;
        std::uint32_t toWide;
        std::uint32_t toNarrow;
    } rows[] = {
        {1250, 0x46C01BA5, 0x8D9AB641}, {1251, 0x865AEB5D, 0x05FD68C7}, {western, 0x1F0FB4AF, 0xFB6674B1},
        {1253, 0xA79740C6, 0xBB8D8A41}, {1254, 0x73AC6D07, 0x90E4C153}, {1257, 0x3E6EA4AB, 0x201F77F3},
        {437, 0x4D308040, 0xFDB95CDB},  {850, 0xC42996D0, 0x39FA94E9},  {japanese, 0x58780BC9, 0x46FBBA70}};
    for (const auto& row : rows) {
        std::uint32_t toWide = 2166136261u, toNarrow = 2166136261u;
        for (int lead = 0; lead < 256; ++lead) {
            const bool isLead = IsDBCSLeadByteEx(row.codePage, static_cast<BYTE>(lead)) != FALSE;
            for (int trail = isLead ? 0x40 : 0xFF; trail < 0x100; ++trail) {
                const char code[] = {static_cast<char>(lead), static_cast<char>(trail)};
                toWide = Fold(toWide, WideOf(row.codePage, std::string_view(code, isLead ? 2 : 1))[0]);
            }
        }
        for (int unit = 0; unit < 0x10000; ++unit) {
            const auto wide = static_cast<WCHAR>(unit);
            for (const char byte : NarrowOf(row.codePage, {&wide, 1}, WC_NO_BEST_FIT_CHARS)) {
                toNarrow = Fold(toNarrow, static_cast<std::uint8_t>(byte));
            }
        }
        EXPECT_EQ(toWide, row.toWide) << std::hex << toWide << " for page " << std::dec << row.codePage;
        EXPECT_EQ(toNarrow, row.toNarrow) << std::hex << toNarrow << " for page " << std::dec << row.codePage;
    }
}

TEST(CodePages, TellTheirFacts) {
    CPINFOEXW info;
    ASSERT_TRUE(GetCPInfoExW(japanese, 0, &info));
    EXPECT_EQ(info.MaxCharSize, 2u);
    EXPECT_EQ(std::vector<BYTE>(info.LeadByte, info.LeadByte + 5),
              (std::vector<BYTE>{0x81, 0x9F, 0xE0, 0xFC, 0}));
    EXPECT_EQ(info.UnicodeDefaultChar, 0x30FB);
    EXPECT_EQ(OutcomeOf([&] { return GetCPInfoExW(12345, 0, &info); }), badParameter);
}

TEST(Utf8, ReplacesEachMaximalSubpartAndEachLoneSurrogate) {
    const std::pair<std::string_view, WideView> rows[] = {
        {"\xE2\x82\xE2\x82\xAC", TEXT("\xFFFD\x20AC")},
        {"\xC0\x80", TEXT("\xFFFD\xFFFD")},
        {"\xF0\x9F\x98z", TEXT("\xFFFDz")},
        {"\xEF\xBB\xBFx", TEXT("\xFEFFx")},  // a byte order mark is text
        // The Unicode Standard, table 3-8, with other letters.
        {"x\xF1\x80\x80\xE1\x80\xC2y\x80z\x80\xBFx", TEXT("x\xFFFD\xFFFD\xFFFDy\xFFFDz\xFFFD\xFFFDx")},
    };
    for (const auto& [bytes, expected] : rows) EXPECT_EQ(WideOf(CP_UTF8, bytes), expected);
    EXPECT_EQ(NarrowOf(CP_UTF8, TEXT("\xD83Dx")), "\xEF\xBF\xBDx");
    EXPECT_EQ(NarrowOf(CP_UTF8, TEXT("\xDE00\xD83D")), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(NarrowOf(CP_UTF8, TEXT("\xD83D\xD83D\xDE00")), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

}  // namespace
