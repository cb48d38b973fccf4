// Where UTF-8 ends, formatted text, and characters of double-byte code pages; docs/text.md has an example of
// each conversion.
#include "text/text.h"

#include "support/allocations.h"
#include "text/detail/uptozero.h"

#include <mbctype.h>

#include <cstdarg>
#include <functional>
#include <limits>
#include <stdexcept>
#include <tuple>

#include <gtest/gtest.h>

namespace {

TEST(Utf8, EndsAtTheFirstZeroAndReplacesWhatIsIllFormed) {
    EXPECT_EQ(Utf8FromWString(TEXT("\xd83dx\xde00")), "\xef\xbf\xbdx\xef\xbf\xbd");
    EXPECT_EQ(WStringFromUtf8("\xc3\x28"), TEXT("\xfffd("));
    EXPECT_EQ(Utf8FromWString(StdWStringView(TEXT("a\0b"), 3)), "a");
    EXPECT_EQ(Utf8FromCStringW(CStringW(TEXT("\0b"), 2)), "");
    EXPECT_EQ(WStringFromUtf8(std::string_view("\xc3\xa9\0b", 4)), TEXT("\x00e9"));
    EXPECT_EQ(CStringWFromUtf8(std::vector<char>{'a', '\0', 'b'}), TEXT("a"));
    // A size only says whether there is any text.
    EXPECT_EQ(CStringWFromUtf8("abc", 1), TEXT("abc"));
    EXPECT_EQ(CStringWFromUtf8("abc", 0), TEXT(""));
    EXPECT_EQ(CStringWFromUtf8(nullptr, 5), TEXT(""));
}

template <typename Unit>
void ExpectEveryZeroIsFound() {
    for (std::size_t size = 0; size <= 48; ++size) {
        for (std::size_t zero = 0; zero <= size; ++zero) {
            std::basic_string<Unit> text(size, Unit{'x'});
            if (zero < size) text[zero] = Unit{0};
            for (const std::size_t another : {zero, size - 1}) {
                if (zero < size) text[another] = Unit{0};
                const auto found = kestrolumen::detail::UpToZero(std::basic_string_view<Unit>(text));
                ASSERT_EQ(found.size(), zero) << "of " << size;
                ASSERT_EQ(found.data(), text.data());
            }
        }
    }
}

TEST(UpToZero, FindsTheFirstOneAtEachPlaceOfTheBlocks) {
    ExpectEveryZeroIsFound<char>();
    ExpectEveryZeroIsFound<WCHAR>();
}

TEST(HalfWidth, FoldsTheFullWidthFormsOfAsciiAlone) {
    for (unsigned code = 0; code < 0x10000; ++code) {
        const bool fullWidth = code >= 0xff01 && code <= 0xff5e;
        ASSERT_EQ(HalfWidthFromWide(static_cast<WCHAR>(code)), fullWidth ? code - 0xfee0 : code)
            << std::hex << code;
    }
}

TEST(HalfWidth, OfDoubleByteCharacters) {
    const struct {
        UINT codePage;
        WORD character;
        int expected;
    } rows[] = {
        {932, 0x8260, 'A'},    {932, 0x8281, 'a'},  // full-width letters
        {932, 0x82a0, 0x82a0}, {932, 0xb1, 0xb1},   // kana: of two bytes, of one
        {932, 'A', 'A'},       {932, 0, 0},
        {932, 0x82, -1},       {932, 0x4182, -1},  // half a character; no lead byte in front
        {932, 0x8120, -1},     {932, 0xfd, -1},    // in the page's form, but no characters of it
        {936, 0xa3c1, 'A'},    {1252, 0xe9, 0xe9},
        {1252, 0x8260, -1},    {12345, 'A', -1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(HalfWidthFromDbcs(row.codePage, row.character), row.expected) << std::hex << row.character;
    }
}

TEST(MbcsCharAt, CountsInCharactersOfTheRuntimesPage) {
    const char* const text = "a\x82\xa0z\x82";  // with half a character at its end
    EXPECT_EQ(_setmbcp(12345), -1);
    ASSERT_EQ(_setmbcp(932), 0);
    const int expected[] = {'a', 0x82a0, 'z'};
    for (int index = 0; index < 3; ++index) EXPECT_EQ(MbcsCharAt(text, index), expected[index]);
    EXPECT_EQ(MbcsCharAt(text, 4), -1);
    EXPECT_EQ(MbcsCharAt(text, std::numeric_limits<int>::max()), -1);
    ASSERT_EQ(_setmbcp(_MB_CP_ANSI), 0);
    EXPECT_EQ(MbcsCharAt(text, 1), 0x82);
    EXPECT_EQ(MbcsCharAt("ab", 2), -1);
    for (const char* none : {"", static_cast<const char*>(nullptr)}) EXPECT_EQ(MbcsCharAt(none, 0), -1);
    EXPECT_EQ(MbcsCharAt("ab", -1), -1);
}

TEST(Format, HasAnyLengthThatAStringCanHave) {
    for (const int width : {0, 255, 256, 257, 100'000}) {
        const std::string expected = std::string(static_cast<std::size_t>(width), ' ') + "7";
        EXPECT_EQ(StdStringFormat("%*d", width + 1, 7), expected);
        EXPECT_EQ(CStringWFormat(TEXT("%*d"), width + 1, 7), CStringW(expected.c_str()));
    }
    EXPECT_THROW(static_cast<void>(StdStringFormat("%2147483647d", 1)), std::length_error);
    EXPECT_THROW(static_cast<void>(CStringWFormat(TEXT("%2147483647d"), 1)), std::length_error);
}

TEST(Format, ReadsEachArgumentAsWhatItIs) {
    EXPECT_EQ(CStringWFormat(TEXT("%s|%d|%s"), CStringA("x"), CStringW(TEXT("y")), 5), TEXT("x|y|5"));
    EXPECT_EQ(CStringAFormat("%s|%s|%s|%d", std::string("a"), StdWString(TEXT("b")), 1.5), "a|b|1.5|");
    EXPECT_EQ(StdWStringFormat(TEXT("%s %I64d"), "narrow", 7), TEXT("narrow 7"));
    static_assert(!kestrolumen::detail::Formattable<std::vector<int>> &&
                  !kestrolumen::detail::Formattable<std::string_view>);
}

TEST(Text, WithoutMemoryNothingIsLeftAndTheFailurePassesOn) {
    const StdWString wide(1000, TEXT('\x20ac'));
    const std::string utf8 = Utf8FromWString(wide);
    const std::function<void()> operations[] = {
        [&] { std::ignore = CStringAFromWide(wide.c_str()); },
        [&] { std::ignore = Utf8FromWString(wide); },
        [&] { std::ignore = WStringFromUtf8(utf8); },
        [&] { std::ignore = CStringWFromUtf8(utf8.c_str(), 1); },
        [&] { std::ignore = StdStringFormat("%S", wide); },
        [&] { std::ignore = CStringWFormat(TEXT("%s"), wide); },
        [&] {
            std::ignore = CStringWFromVectorPairCStringW({{wide.c_str(), wide.c_str()}});
        },
        [&] {
            std::ignore = CStringAFromSetCStringW({wide.c_str(), TEXT("a"), TEXT("b")});
        },
        [&] { std::ignore = BytesFromHex(HexFromTextA(utf8.c_str())); },
        [&] { std::ignore = SplitCStringW(SheetQuotesDoubled(wide.c_str()), TEXT(","), true); },
        [&] { std::ignore = EscapedTextW<std::string>(wide); },
    };
    // None where a sanitizer's operator new isn't seen.
    for (const auto& operation : operations) EXPECT_GE(support::AllocationsThatMayFail(operation), 0);
}

}  // namespace
