#include <msformat.h>

#include <climits>
#include <cstring>
#include <cfloat>
#include <limits>

#include "formatted.h"

namespace {

void ExpectRows(const std::vector<std::pair<std::string, std::string>>& rows) {
    for (const auto& [made, expected] : rows) EXPECT_EQ(made, expected);
}

double DoubleOfBits(std::uint64_t bits) {
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

TEST(MsFormat, IntegerSizes) {
    const std::int64_t wide = 0x1'2345'6789'ABCD;
    const auto pointerWide = static_cast<std::ptrdiff_t>(wide);
    ExpectRows({
        {Both("%I64d|%I64u|%d", INT64_MIN, UINT64_MAX, 7), "-9223372036854775808|18446744073709551615|7"},
        {Both("%I32d %ld %lu %8.8lX.", -1, -1, -1, 5), "-1 -1 4294967295 00000005."},
        {Both("[%*d][%*d][%.*d][%.*d][%-*d]", 4, 1, -4, 2, 3, 3, -1, 4, 3, 5), "[   1][2   ][003][4][5  ]"},
        {Both("100%%, %5%|"), "100%, %|"},
        {Both("%Id|%zd|%td|%Iu", pointerWide, pointerWide, pointerWide, std::size_t{9}),
         sizeof(void*) == 8 ? "320255973501901|320255973501901|320255973501901|9"
                            : "1737075661|1737075661|1737075661|9"},
    });
}

TEST(MsFormat, HexadecimalAndVeryLongDoublesAndWhatIsNoNumber) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double quiet = DoubleOfBits(0x7FF8'0000'0000'0000);
    const double indeterminate = DoubleOfBits(0xFFF8'0000'0000'0000);
    ExpectRows({
        {Both("%f %G %+f|%06f|%.1f", infinity, -infinity, infinity, infinity, infinity),
         "inf -INF +inf|   inf|inf"},
        {Both("%g %G %f", quiet, quiet, indeterminate), "nan NAN -nan(ind)"},
        {Both("%a %.0a %.1a %A", 1.0, 1.0, 1.96875, -0.5),
         "0x1.0000000000000p+0 0x1p+0 0x2.0p+0 -0X1.0000000000000P-1"},
    });
    // The largest double has 309 whole digits, the smallest 1074 behind the point; beyond stand zeros.
    EXPECT_EQ(Both("%.1080f", std::numeric_limits<double>::denorm_min()).substr(1070), "265625000000");
    EXPECT_EQ(Both("%.2000f", DBL_MAX).size(), 309U + 1 + 2000);
}

TEST(MsFormat, TextsOfBothWidths) {
    const char* const narrow = "na\xE9";
    const WCHAR* const wide = TEXT("wi\x00E9");
    const char* const null = nullptr;
    ExpectRows({
        {Formatted("[%s][%S][%hs][%ls][%ws][%hS][%lS]", narrow, wide, narrow, wide, wide, narrow, wide),
         "[na\xE9][wi\xE9][na\xE9][wi\xE9][wi\xE9][na\xE9][wi\xE9]"},
        {Formatted("[%5s][%-5s][%.2s][%05s][%5.1s]", narrow, narrow, narrow, narrow, narrow),
         "[  na\xE9][na\xE9  ][na][00na\xE9][    n]"},
        {Formatted("[%s][%S][%.3s][%8s]", null, null, null, null), "[(null)][(null)][(nu][  (null)]"},
        {Formatted("[%c][%3c][%-3c][%C][%hc][%lc][%wc]", 'a', 'b', 'c', 0xE9, 'e', 0xE9, 'g'),
         "[a][  b][c  ][\xE9][e][\xE9][g]"},
        {Formatted("%S%C", TEXT("\x4E00z"), 0x4E00), "?z?"},
        {Formatted("[%c]", 0), std::string("[\0]", 3)},
    });
    EXPECT_EQ(
        Formatted(TEXT("[%s][%S][%hs][%ls][%ws][%hS][%lS]"), wide, narrow, narrow, wide, wide, narrow, wide),
        TEXT("[wi\x00E9][na\x00E9][na\x00E9][wi\x00E9][wi\x00E9][na\x00E9][wi\x00E9]"));
    EXPECT_EQ(Formatted(TEXT("%5s|%-5S|%S"), wide, narrow, null), TEXT("  wi\x00E9|na\x00E9  |(null)"));
    EXPECT_EQ(Formatted(TEXT("%c%C%hc"), 0x20AC, 0x80, 0xE9), TEXT("\x20AC\x20AC\x00E9"));
}

TEST(MsFormat, PrecisionReadsNothingBeyond) {
    // No terminator: the sanitizers watch what is read.
    const std::vector<char> narrow = {'a', 'b', '\xE9'};
    const std::vector<WCHAR> wide = {'a', 'b', 0xE9};
    EXPECT_EQ(Formatted("%.3s|%.3S|%.0s", narrow.data(), wide.data(), narrow.data() + 3), "ab\xE9|ab\xE9|");
    EXPECT_EQ(Formatted(TEXT("%.3s|%.3S"), wide.data(), narrow.data()), TEXT("ab\x00E9|ab\x00E9"));
}

TEST(MsFormat, WhatTheRuntimeRefusesHasAResult) {
    int untouched = 42;
    ExpectRows({
        {Both("%y|%-5k|%d", 7), "y|k|7"},
        {Both("a%"), "a"},
        {Both("%1$d", 7), "$d"},
        {Both("%n%d", &untouched, 7), "7"},
    });
    EXPECT_EQ(untouched, 42);
}

TEST(MsFormat, TypedArgumentsMakeEveryFormatSafe) {
    using Row = std::vector<msformat::Argument>;
    const struct {
        const char* format;
        Row arguments;
        const char* expected;
    } rows[] = {
        {"%s|%S|%.1S|%hs|%ls", {"na", "na", "na", TEXT("wi"), "na"}, "na|na|n|wi|na"},
        {"%s|%3s|%.1s|%s|%s",
         {5, -6, 7.25, INT64_MIN, UINT64_MAX},
         "5| -6|7.25|-9223372036854775808|18446744073709551615"},
        {"%d|%4d|%.1f|%x|%c|%p", {"te", TEXT("xt"), "text", 1.5, "c", 7}, "te|  xt|text|1.5|c|7"},
        {"%d|%u|%x|%hd|%I64x",
         {INT64_MAX, INT64_MAX, -1, 0x12345, -1},
         "9223372036854775807|9223372036854775807|ffffffff|9029|ffffffffffffffff"},
        {"%g|%.1f|%e", {2, 3U, true}, "2|3.0|1.000000e+00"},
        {"%s|%d|%s|%5%|%", {nullptr}, "(null)|||%|"},
        {"%*d|%.*d|%-*d|", {"wide", 1, 2.5, 2, -3, 4}, "1|2|4  |"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FormattedTyped(row.format, row.arguments), row.expected);
        EXPECT_EQ(FormattedTyped(Widened(row.format).c_str(), row.arguments), Widened(row.expected));
    }
    EXPECT_EQ(FormattedTyped(static_cast<const char*>(nullptr), {1}), "");
    EXPECT_EQ(FormattedTyped("%d", {static_cast<const void*>(rows)}), FormattedTyped("%p", {rows}));
}

std::size_t Length(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = msformat::Measure(format, arguments);
    va_end(arguments);
    return length;
}

TEST(MsFormat, EnormousFieldsAreMeasuredInNoTime) {
    constexpr auto most = static_cast<std::size_t>(INT_MAX);
    EXPECT_EQ(Length("%99999999999999999999d", 1), most);
    EXPECT_EQ(Length("%.2147483647f", 1.0), most + 2);
    EXPECT_EQ(Length("%*d", INT_MIN, 1), most + 1);
    // Three such fields outgrow a 32-bit count: it stays at its end and doesn't come round.
    EXPECT_EQ(Length("%2147483647d%2147483647d%2147483647d", 1, 1, 1),
              sizeof(void*) == 8 ? 3 * std::uint64_t{most} : SIZE_MAX);
}

}  // namespace
