#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <mbctype.h>
#include <mbstring.h>

#include "utfmodel.h"
#include "wine.h"

namespace {

using utfmodel::ExactCopy;
using utfmodel::Wide;
using utfmodel::WideView;

constexpr UINT western = 1252;
constexpr UINT japanese = 932;

int Size(std::size_t size) {
    return static_cast<int>(size);
}

// With the size asked for first and a buffer of exactly that size.
Wide WideOf(UINT codePage, std::string_view text, DWORD flags = 0) {
    const int units = MultiByteToWideChar(codePage, flags, text.data(), Size(text.size()), nullptr, 0);
    Wide wide(static_cast<std::size_t>(units), WCHAR{});
    EXPECT_EQ(
        MultiByteToWideChar(codePage, flags, text.data(), Size(text.size()), wide.data(), Size(wide.size())),
        units);
    return wide;
}

std::string NarrowOf(UINT codePage, WideView text, DWORD flags = 0) {
    const int bytes =
        WideCharToMultiByte(codePage, flags, text.data(), Size(text.size()), nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    EXPECT_EQ(WideCharToMultiByte(codePage, flags, text.data(), Size(text.size()), narrow.data(),
                                  Size(narrow.size()), nullptr, nullptr),
              bytes);
    return narrow;
}

// What a call gave, and the error it left if it gave 0.
struct Outcome {
    int result;
    DWORD error = ERROR_SUCCESS;

    friend bool operator==(const Outcome&, const Outcome&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
        return stream << outcome.result << " with error " << outcome.error;
    }
};

template <class Call>
Outcome OutcomeOf(Call call) {
    SetLastError(ERROR_SUCCESS);
    const int result = call();
    return {result, result == 0 ? GetLastError() : ERROR_SUCCESS};
}

constexpr Outcome badParameter{0, ERROR_INVALID_PARAMETER};
constexpr Outcome badFlags{0, ERROR_INVALID_FLAGS};
constexpr Outcome noRoom{0, ERROR_INSUFFICIENT_BUFFER};
constexpr Outcome illFormed{0, ERROR_NO_UNICODE_TRANSLATION};
constexpr DWORD strict = MB_ERR_INVALID_CHARS;
constexpr DWORD strictWide = WC_ERR_INVALID_CHARS;

TEST(MultiByteToWideChar, KeepsItsContract) {
    const struct {
        const char* what;
        UINT codePage;
        DWORD flags;
        const char* source;
        int length;
        int size;
        Outcome expected;
    } rows[] = {
        {"terminated", western, 0, "abc", -1, 8, {4}},
        {"terminated, size query", western, 0, "abc", -1, 0, {4}},
        {"terminated UTF-8", CP_UTF8, 0, "\xC3\xA9", -1, 8, {2}},
        {"explicit length", western, 0, "abc", 2, 8, {2}},
        {"a zero inside", western, 0, "a\0b", 3, 8, {3}},
        {"just enough room", western, 0, "abc", 3, 3, {3}},
        {"too little room", western, 0, "abc", 3, 2, noRoom},
        {"no room for the terminator", western, 0, "abc", -1, 3, noRoom},
        {"too little room for UTF-8", CP_UTF8, 0, "abc", 3, 2, noRoom},
        {"too little for double bytes", japanese, 0, "\x82\xA0\x82\xA2", 4, 1, noRoom},
        {"empty source", western, 0, "", 0, 8, badParameter},
        {"null source", western, 0, nullptr, 1, 8, badParameter},
        {"negative size", western, 0, "abc", 3, -1, badParameter},
        {"unknown page", 12345, 0, "abc", 3, 8, badParameter},
        {"precomposed", western, MB_PRECOMPOSED, "abc", 3, 8, {3}},
        {"glyphs for control characters", western, MB_USEGLYPHCHARS, "abc", 3, 8, {3}},
        {"unknown flag", western, 0x100, "abc", 3, 8, badFlags},
        {"strict, well formed", CP_UTF8, strict, "\xC3\xA9", 2, 8, {1}},
        {"strict, ill formed", CP_UTF8, strict, "\xC3(", 2, 8, illFormed},
        {"strict, ill formed, size query", CP_UTF8, strict, "\xC3(", 2, 0, illFormed},
        {"strict, a pair of the page", japanese, strict, "\x82\xA0", 2, 8, {1}},
        {"strict, a pair without meaning", japanese, strict, "\x81\x20", 2, 8, illFormed},
        {"strict, a lone lead byte", japanese, strict, "a\x82", 2, 8, illFormed},
        {"strict, an undefined byte", japanese, strict, "\xFD", 1, 8, illFormed},
        {"strict, Western control characters", western, strict, "\x81\x8D", 2, 8, {2}},
    };
    for (const auto& row : rows) {
        std::array<WCHAR, 8> room;
        EXPECT_EQ(OutcomeOf([&] {
                      return MultiByteToWideChar(row.codePage, row.flags, row.source, row.length, room.data(),
                                                 row.size);
                  }),
                  row.expected)
            << row.what;
    }
}

TEST(WideCharToMultiByte, KeepsItsContract) {
    const struct {
        const char* what;
        UINT codePage;
        DWORD flags;
        const WCHAR* source;
        int length;
        int size;
        Outcome expected;
    } rows[] = {
        {"terminated", western, 0, TEXT("abc"), -1, 8, {4}},
        {"terminated, size query", western, 0, TEXT("abc"), -1, 0, {4}},
        {"terminated UTF-8", CP_UTF8, 0, TEXT("\xE9"), -1, 8, {3}},
        {"explicit length", western, 0, TEXT("abc"), 2, 8, {2}},
        {"size query, a double byte", japanese, 0, TEXT("a\x3042"), 2, 0, {3}},
        {"just enough room", western, 0, TEXT("abc"), 3, 3, {3}},
        {"too little room", western, 0, TEXT("abc"), 3, 2, noRoom},
        {"half a double byte's room", japanese, 0, TEXT("a\x3042"), 2, 2, noRoom},
        {"too little room for UTF-8", CP_UTF8, 0, TEXT("\x20AC"), 1, 2, noRoom},
        {"empty source", western, 0, TEXT(""), 0, 8, badParameter},
        {"null source", western, 0, nullptr, 1, 8, badParameter},
        {"negative size", western, 0, TEXT("abc"), 3, -1, badParameter},
        {"unknown page", 12345, 0, TEXT("abc"), 3, 8, badParameter},
        {"no best fit", western, WC_NO_BEST_FIT_CHARS, TEXT("abc"), 3, 8, {3}},
        {"unknown flag", western, 0x8000, TEXT("abc"), 3, 8, badFlags},
        {"strict, a pair", CP_UTF8, strictWide, TEXT("\xD83D\xDE00"), 2, 8, {4}},
        {"strict, half a pair", CP_UTF8, strictWide, TEXT("\xD83D\xDE00"), 1, 8, illFormed},
        {"strict, half a pair, size query", CP_UTF8, strictWide, TEXT("\xDE00"), 1, 0, illFormed},
    };
    for (const auto& row : rows) {
        std::array<char, 8> room;
        EXPECT_EQ(OutcomeOf([&] {
                      return WideCharToMultiByte(row.codePage, row.flags, row.source, row.length, room.data(),
                                                 row.size, nullptr, nullptr);
                  }),
                  row.expected)
            << row.what;
    }
}

TEST(Conversions, RefuseDestinationsThatAreNone) {
    EXPECT_EQ(OutcomeOf([] { return MultiByteToWideChar(western, 0, "a", 1, nullptr, 4); }), badParameter);
    EXPECT_EQ(
        OutcomeOf([] { return WideCharToMultiByte(western, 0, TEXT("a"), 1, nullptr, 4, nullptr, nullptr); }),
        badParameter);
}

TEST(Conversions, RefuseWhatTheirPagesForbid) {
    if (RunsOnWine()) GTEST_SKIP() << "Wine takes all of these";
    std::array<WCHAR, 4> text{};
    auto* const bytes = reinterpret_cast<char*>(text.data());
    BOOL used = FALSE;
    const auto toWide = [&](UINT codePage, DWORD flags, const char* source, int length, int size) {
        return OutcomeOf(
            [&] { return MultiByteToWideChar(codePage, flags, source, length, text.data(), size); });
    };
    const auto toNarrow = [&](UINT codePage, DWORD flags, char* to, const char* defaultChar,
                              BOOL* usedDefault) {
        return OutcomeOf([&] {
            return WideCharToMultiByte(codePage, flags, text.data(), 4, to, to == nullptr ? 0 : 8,
                                       defaultChar, usedDefault);
        });
    };
    EXPECT_EQ(toWide(western, 0, bytes, 4, 4), badParameter) << "in place";
    EXPECT_EQ(toNarrow(western, 0, bytes, nullptr, nullptr), badParameter) << "in place";
    EXPECT_EQ(toNarrow(CP_UTF8, 0, nullptr, "#", nullptr), badParameter) << "UTF-8 has no default character";
    EXPECT_EQ(toNarrow(CP_UTF8, 0, nullptr, nullptr, &used), badParameter) << "nor a use of it";
    EXPECT_EQ(toNarrow(CP_UTF8, WC_NO_BEST_FIT_CHARS, nullptr, nullptr, nullptr), badFlags)
        << "nor best fits";
    EXPECT_EQ(toWide(CP_UTF8, MB_USEGLYPHCHARS, "abc", 3, 4), badFlags) << "nor glyphs";
    EXPECT_EQ(toWide(CP_UTF8, 0, "\xF0\x9F\x98\x80", 4, 1), noRoom) << "half a surrogate pair's room";
}

TEST(CodePages, WesternHasAllItsBytes) {
    const std::pair<int, int> special[] = {
        {0x80, 0x20AC}, {0x82, 0x201A}, {0x83, 0x0192}, {0x84, 0x201E}, {0x85, 0x2026}, {0x86, 0x2020},
        {0x87, 0x2021}, {0x88, 0x02C6}, {0x89, 0x2030}, {0x8A, 0x0160}, {0x8B, 0x2039}, {0x8C, 0x0152},
        {0x8E, 0x017D}, {0x91, 0x2018}, {0x92, 0x2019}, {0x93, 0x201C}, {0x94, 0x201D}, {0x95, 0x2022},
        {0x96, 0x2013}, {0x97, 0x2014}, {0x98, 0x02DC}, {0x99, 0x2122}, {0x9A, 0x0161}, {0x9B, 0x203A},
        {0x9C, 0x0153}, {0x9E, 0x017E}, {0x9F, 0x0178},
    };
    std::string bytes;
    Wide units;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
        units += static_cast<WCHAR>(byte);
    }
    for (const auto& [byte, unit] : special) units[static_cast<std::size_t>(byte)] = static_cast<WCHAR>(unit);
    // At every place in a block of any width, too.
    for (std::size_t shift = 0; shift < 64; ++shift) {
        ASSERT_EQ(WideOf(western, std::string(shift, 'x') + bytes), Wide(shift, TEXT('x')) + units);
        ASSERT_EQ(NarrowOf(western, Wide(shift, TEXT('x')) + units), std::string(shift, 'x') + bytes);
    }
}

TEST(CodePages, LackingUnitsBecomeTheDefaultCharacter) {
    const struct {
        UINT codePage;
        const WCHAR* text;
        const char* defaultChar;
        const char* expected;
        bool used;
    } rows[] = {
        {western, TEXT("\xE9t\xE9 \x20AC"), nullptr, "\xE9t\xE9 \x80", false},
        {western, TEXT("\x4E2D\x6587"), nullptr, "??", true},
        {western, TEXT("a\x4E2D"), "#", "a#", true},
        {western, TEXT("\xD83D\xDE00!"), nullptr, "\?\?!", true},  // one for each half of the pair
        {western, TEXT("\xDE00"), nullptr, "?", true},
        {western, TEXT("?"), nullptr, "?", false},  // the character itself is no replacement
        {1251, TEXT("\x0416\x05D0"), nullptr, "\xC6?", true},
        {japanese, TEXT("\x3042\x05D0\xFF71"), nullptr, "\x82\xA0?\xB1", true},
        {japanese, TEXT("\x05D0"), "\x81\xAC", "\x81\xAC", true},
    };
    for (const auto& row : rows) {
        const WideView text(row.text);
        for (const std::size_t before : {std::size_t{0}, std::size_t{40}}) {
            const Wide source = Wide(before, TEXT('x')) + Wide(text);
            std::string result(2 * source.size(), '\0');
            BOOL used = 2;
            const int bytes =
                WideCharToMultiByte(row.codePage, WC_NO_BEST_FIT_CHARS, source.data(), Size(source.size()),
                                    result.data(), Size(result.size()), row.defaultChar, &used);
            result.resize(static_cast<std::size_t>(bytes));
            EXPECT_EQ(result, std::string(before, 'x') + row.expected);
            EXPECT_EQ(used, row.used ? TRUE : FALSE) << row.expected;
        }
    }
}

TEST(CodePages, DoubleByteTextIsTakenInPairs) {
    const struct {
        std::string_view bytes;
        WideView expected;
    } rows[] = {
        {"\x82\x60\x41", TEXT("\xFF21"
                              "A")},
        {"\xB1\x5C\x7E", TEXT("\xFF71\\~")},  // half-width katakana; ASCII is itself
        {"\x81\x20x", TEXT("\x30FBx")},       // a pair that means nothing is one character
        {"x\x82", TEXT("x\x30FB")},           // a lead byte at the end
        {std::string_view("\x82\0x", 3), WideView(TEXT("\x30FB\0x"), 3)},  // and before a zero byte
        {"\xFA\x40\xED\x40", TEXT("\x2170\x7E8A")},                        // two vendors' extensions
        {"\xF0\x40", TEXT("\xE000")},                                      // the users' own characters
        {"\xA0\xFD\xFE\xFF\x80", TEXT("\xF8F0\xF8F1\xF8F2\xF8F3\x80")},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(WideOf(japanese, row.bytes), row.expected);
        const std::string ascii(37, 'a');
        EXPECT_EQ(WideOf(japanese, ascii + std::string(row.bytes)),
                  Wide(ascii.begin(), ascii.end()) + Wide(row.expected));
    }
}

std::string PairOf(int lead, int trail) {
    return {static_cast<char>(lead), static_cast<char>(trail)};
}

// Several pairs may mean one character, so the way back leads to one that means the same.
TEST(CodePages, AllPairsOfJapaneseComeBack) {
    constexpr WCHAR meansNothing = 0x30FB;
    int meaningful = 0;
    for (int lead = 0x81; lead <= 0xFC; ++lead) {
        if (!IsDBCSLeadByteEx(japanese, static_cast<BYTE>(lead))) continue;
        for (int trail = 0x40; trail <= 0xFC; ++trail) {
            const std::string pair = PairOf(lead, trail);
            const Wide wide = WideOf(japanese, pair);
            ASSERT_EQ(wide.size(), 1u);
            if (wide[0] == meansNothing && pair != "\x81\x45") continue;
            ++meaningful;
            const std::string back = NarrowOf(japanese, wide, WC_NO_BEST_FIT_CHARS);
            ASSERT_EQ(back.size(), 2u);
            EXPECT_EQ(WideOf(japanese, back), wide);
        }
    }
    EXPECT_EQ(meaningful, 9604);
    // Of the pairs for one character the preferred ones are JIS's own, then NEC's row 13, then IBM's.
    for (const auto& [pair, preferred] : {std::pair{"\x87\x90", "\x81\xE0"},
                                          {"\xFA\x54", "\x81\xCA"},
                                          {"\xFA\x58", "\x87\x8A"},
                                          {"\xED\x40", "\xFA\x5C"}}) {
        EXPECT_EQ(NarrowOf(japanese, WideOf(japanese, pair)), preferred);
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
        std::uint32_t toWide = 2166136261u;
        for (int lead = 0; lead < 256; ++lead) {
            const bool isLead = IsDBCSLeadByteEx(row.codePage, static_cast<BYTE>(lead)) != FALSE;
            for (int trail = isLead ? 0x40 : 0xFF; trail < 0x100; ++trail) {
                const std::string code = PairOf(lead, trail);
                toWide =
                    Fold(toWide, WideOf(row.codePage, std::string_view(code).substr(0, isLead ? 2 : 1))[0]);
            }
        }
        std::uint32_t toNarrow = 2166136261u;
        for (int unit = 0; unit < 0x10000; ++unit) {
            const auto wide = static_cast<WCHAR>(unit);
            std::array<char, 4> bytes;
            const int count = WideCharToMultiByte(row.codePage, WC_NO_BEST_FIT_CHARS, &wide, 1, bytes.data(),
                                                  4, nullptr, nullptr);
            for (int i = 0; i < count; ++i) {
                toNarrow = Fold(toNarrow, static_cast<std::uint8_t>(bytes[static_cast<std::size_t>(i)]));
            }
        }
        EXPECT_EQ(toWide, row.toWide) << std::hex << toWide << " for page " << std::dec << row.codePage;
        EXPECT_EQ(toNarrow, row.toNarrow) << std::hex << toNarrow << " for page " << std::dec << row.codePage;
    }
}

TEST(CodePages, TellTheirFacts) {
    const struct {
        UINT codePage;
        UINT maxCharSize;
        std::array<BYTE, 5> leadBytes;
        WCHAR unicodeDefault;
        WideView name;
    } rows[] = {
        {western, 1, {}, TEXT('?'), TEXT("1252  (ANSI - Latin I)")},
        {437, 1, {}, TEXT('?'), TEXT("437   (OEM - United States)")},
        {japanese, 2, {0x81, 0x9F, 0xE0, 0xFC}, 0x30FB, TEXT("932   (ANSI/OEM - Japanese Shift-JIS)")},
        {949, 2, {0x81, 0xFE}, TEXT('?'), TEXT("949   (ANSI/OEM - Korean)")},
        {CP_UTF8, 4, {}, 0xFFFD, TEXT("65001 (UTF-8)")},
    };
    for (const auto& row : rows) {
        CPINFO info;
        ASSERT_TRUE(GetCPInfo(row.codePage, &info));
        CPINFOEXW more;
        ASSERT_TRUE(GetCPInfoExW(row.codePage, 0, &more));
        EXPECT_EQ(info.MaxCharSize, row.maxCharSize);
        EXPECT_EQ(info.DefaultChar[0], '?');
        EXPECT_TRUE(std::equal(row.leadBytes.begin(), row.leadBytes.end(), info.LeadByte));
        EXPECT_EQ(more.MaxCharSize, row.maxCharSize);
        EXPECT_TRUE(std::equal(row.leadBytes.begin(), row.leadBytes.end(), more.LeadByte));
        EXPECT_EQ(more.UnicodeDefaultChar, row.unicodeDefault);
        EXPECT_EQ(more.CodePage, row.codePage);
        EXPECT_FALSE(WideView(more.CodePageName).empty());
    }
    CPINFOEXW ansi;
    ASSERT_TRUE(GetCPInfoExW(CP_ACP, 0, &ansi));
    EXPECT_EQ(ansi.CodePage, GetACP());
    ASSERT_TRUE(GetCPInfoExW(CP_OEMCP, 0, &ansi));
    EXPECT_EQ(ansi.CodePage, GetOEMCP());
    EXPECT_EQ(OutcomeOf([&] { return GetCPInfoExW(12345, 0, &ansi); }), badParameter);
    EXPECT_EQ(OutcomeOf([] { return GetCPInfo(western, nullptr); }), badParameter);
}

TEST(CodePages, LeadBytes) {
    const struct {
        UINT codePage;
        std::vector<std::pair<int, int>> ranges;
    } rows[] = {{western, {}},
                {CP_UTF8, {}},
                {japanese, {{0x81, 0x9F}, {0xE0, 0xFC}}},
                {936, {{0x81, 0xFE}}},
                {12345, {}}};
    for (const auto& row : rows) {
        for (int byte = 0; byte < 256; ++byte) {
            const bool expected = std::any_of(row.ranges.begin(), row.ranges.end(), [&](const auto& range) {
                return byte >= range.first && byte <= range.second;
            });
            EXPECT_EQ(IsDBCSLeadByteEx(row.codePage, static_cast<BYTE>(byte)) != FALSE, expected)
                << row.codePage << ' ' << byte;
            if (row.codePage == GetACP()) {
                EXPECT_EQ(IsDBCSLeadByte(static_cast<BYTE>(byte)) != FALSE, expected);
            }
        }
    }
}

TEST(CodePages, AreBuiltOnceByWhoeverComesFirst) {
    std::array<Wide, 4> results;
    std::vector<std::thread> threads;
    for (Wide& result : results) threads.emplace_back([&] { result = WideOf(1256, "\xC7\xE1"); });
    for (std::thread& thread : threads) thread.join();
    for (const Wide& result : results) EXPECT_EQ(result, TEXT("\x0627\x0644"));
}

// The runtime's page is process-wide: whatever a test does to it ends with the test.
class MultibytePage {
  public:
    explicit MultibytePage(int codePage) : result_(_setmbcp(codePage)) {}
    ~MultibytePage() { _setmbcp(_MB_CP_ANSI); }
    MultibytePage(const MultibytePage&) = delete;
    MultibytePage& operator=(const MultibytePage&) = delete;
    [[nodiscard]] int Result() const noexcept { return result_; }

  private:
    int result_;
};

std::vector<unsigned> CharactersOf(const char* text) {
    std::vector<unsigned> characters;
    for (const auto* at = reinterpret_cast<const unsigned char*>(text); *at != 0; at = _mbsinc(at)) {
        characters.push_back(_mbsnextc(at));
    }
    return characters;
}

TEST(MultibyteText, GoesByTheRuntimesPage) {
    const char* const text = "a\x82\xA0\xB1\x81\x5C";
    {
        const MultibytePage page(932);
        EXPECT_EQ(page.Result(), 0);
        EXPECT_EQ(_getmbcp(), 932);
        EXPECT_EQ(CharactersOf(text), (std::vector<unsigned>{'a', 0x82A0, 0xB1, 0x815C}));
    }
    EXPECT_EQ(CharactersOf(text), (std::vector<unsigned>{'a', 0x82, 0xA0, 0xB1, 0x81, 0x5C}));
    const MultibytePage none(_MB_CP_SBCS);
    EXPECT_EQ(none.Result(), 0);
    if (RunsOnWine()) GTEST_SKIP() << "Wine gives the number of a single-byte page, too";
    EXPECT_EQ(_getmbcp(), 0);
}

TEST(MultibyteText, RefusesPagesThatItCannotGoBy) {
    const MultibytePage page(12345);
    EXPECT_EQ(page.Result(), -1);
}

TEST(Utf8, ReplacesEachMaximalSubpart) {
    const struct {
        std::string_view bytes;
        WideView expected;
    } rows[] = {
        {"\xC3\x28", TEXT("\xFFFD(")},
        {"\xE2\x82", TEXT("\xFFFD")},
        {"\xE2\x82\xE2\x82\xAC", TEXT("\xFFFD\x20AC")},
        {"\xC0\x80", TEXT("\xFFFD\xFFFD")},
        {"\xF0\x9F\x98"
         "a",
         TEXT("\xFFFD"
              "a")},
        {"\xFF\xFE", TEXT("\xFFFD\xFFFD")},
        {"\xF0\x9F\x98\x80", TEXT("\xD83D\xDE00")},
        {"\xED\x9F\xBF\xEE\x80\x80", TEXT("\xD7FF\xE000")},
        {"\xEF\xBB\xBFx", TEXT("\xFEFFx")},  // a byte order mark is text
        // The Unicode Standard, table 3-8.
        {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64", TEXT("a\xFFFD\xFFFD\xFFFD"
                                                                      "b\xFFFD"
                                                                      "c\xFFFD\xFFFD"
                                                                      "d")},
    };
    for (const auto& row : rows) EXPECT_EQ(WideOf(CP_UTF8, row.bytes), row.expected);
    if (RunsOnWine()) GTEST_SKIP() << "Wine takes a second byte that the lead byte doesn't allow with it";
    EXPECT_EQ(WideOf(CP_UTF8, "\xE0\x9F\xBF"), TEXT("\xFFFD\xFFFD\xFFFD"));
    EXPECT_EQ(WideOf(CP_UTF8, "\xED\xA0\x80"), TEXT("\xFFFD\xFFFD\xFFFD"));
    EXPECT_EQ(WideOf(CP_UTF8, "\xF4\x90\x80\x80"), TEXT("\xFFFD\xFFFD\xFFFD\xFFFD"));
}

TEST(Utf8, LoneSurrogatesAreReplaced) {
    EXPECT_EQ(NarrowOf(CP_UTF8, TEXT("\xD83D\xDE00")), "\xF0\x9F\x98\x80");
    EXPECT_EQ(NarrowOf(CP_UTF8, TEXT("\xD83Dx")), "\xEF\xBF\xBDx");
    EXPECT_EQ(NarrowOf(CP_UTF8, TEXT("\xDE00\xD83D")), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(NarrowOf(CP_UTF8, TEXT("\xD83D\xD83D\xDE00")), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

// Sizes, results and the refusal of a destination that is one unit short, from and to blocks of exact size.
void ExpectAsModel(std::string_view text, std::size_t offset) {
    const Wide expected = utfmodel::WideFromUtf8(text);
    const ExactCopy<char> source(text, offset);
    const auto convert = [&](WCHAR* to, int size) {
        return MultiByteToWideChar(CP_UTF8, 0, source.Data(), source.Size(), to, size);
    };
    ASSERT_EQ(convert(nullptr, 0), Size(expected.size()));
    const ExactCopy<WCHAR> target(Wide(expected.size(), WCHAR{}), offset);
    ASSERT_EQ(convert(target.Data(), target.Size()), target.Size());
    ASSERT_EQ(target.View(), WideView(expected));
    // Wine sees no want of room where half a pair has it.
    if (expected.size() < 2 || (RunsOnWine() && (expected.back() & 0xFC00) == 0xDC00)) return;
    const ExactCopy<WCHAR> tooSmall(Wide(expected.size() - 1, WCHAR{}), offset);
    ASSERT_EQ(convert(tooSmall.Data(), tooSmall.Size()), 0);
}

void ExpectAsModel(WideView text, std::size_t offset) {
    const std::string expected = utfmodel::Utf8FromWide(text);
    const ExactCopy<WCHAR> source(text, offset);
    const auto convert = [&](char* to, int size) {
        return WideCharToMultiByte(CP_UTF8, 0, source.Data(), source.Size(), to, size, nullptr, nullptr);
    };
    ASSERT_EQ(convert(nullptr, 0), Size(expected.size()));
    const ExactCopy<char> target(std::string(expected.size(), '\0'), offset);
    ASSERT_EQ(convert(target.Data(), target.Size()), target.Size());
    ASSERT_EQ(target.View(), std::string_view(expected));
    if (expected.size() < 2) return;
    const ExactCopy<char> tooSmall(std::string(expected.size() - 1, '\0'), offset);
    ASSERT_EQ(convert(tooSmall.Data(), tooSmall.Size()), 0);
}

class Utf8AsModel : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        if (GetParam() && RunsOnWine()) GTEST_SKIP() << "Wine replaces ill-formed sequences in its own way";
    }
};

TEST_P(Utf8AsModel, OfAllLengths) {
    std::mt19937 random(65001);
    for (std::size_t length = 1; length <= 300; ++length) {
        for (int round = 0; round < 8; ++round) {
            const std::size_t offset = random() % 32;
            ASSERT_NO_FATAL_FAILURE(ExpectAsModel(utfmodel::RandomUtf8(random, length, GetParam()), offset));
            ASSERT_NO_FATAL_FAILURE(ExpectAsModel(utfmodel::RandomWide(random, length, GetParam()), offset));
        }
    }
}

TEST_P(Utf8AsModel, CutAtEachPlace) {
    std::mt19937 random(1252);
    const std::string utf8 = utfmodel::RandomUtf8(random, 400, GetParam());
    const Wide wide = utfmodel::RandomWide(random, 400, GetParam());
    for (std::size_t cut = 1; cut < 400; ++cut) {
        ASSERT_NO_FATAL_FAILURE(ExpectAsModel(std::string_view(utf8).substr(0, cut), 0));
        ASSERT_NO_FATAL_FAILURE(ExpectAsModel(std::string_view(utf8).substr(cut), 0));
        ASSERT_NO_FATAL_FAILURE(ExpectAsModel(WideView(wide).substr(0, cut), 0));
        ASSERT_NO_FATAL_FAILURE(ExpectAsModel(WideView(wide).substr(cut), 0));
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, Utf8AsModel, testing::Bool(),
                         [](const auto& test) { return test.param ? "IllFormed" : "WellFormed"; });

TEST(Utf8, AllCharactersComeBack) {
    std::string utf8;
    Wide wide;
    for (std::uint32_t character = 1; character <= 0x10FFFF; character += character < 0x11000 ? 1 : 61) {
        if (character >= 0xD800 && character <= 0xDFFF) continue;
        if (character > 0xFFFF) wide += static_cast<WCHAR>(0xD7C0 + (character >> 10));
        wide += static_cast<WCHAR>(character > 0xFFFF ? 0xDC00 + (character & 0x3FF) : character);
    }
    utf8 = NarrowOf(CP_UTF8, wide);
    EXPECT_TRUE(utf8 == utfmodel::Utf8FromWide(wide));
    EXPECT_TRUE(WideOf(CP_UTF8, utf8, MB_ERR_INVALID_CHARS) == wide);
}

}  // namespace
