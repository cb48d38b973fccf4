// Numbers as text against exact decimal arithmetic, and column letters against counting.
#include "text/numbers.h"

#include "exactdecimal.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr auto lowest64 = std::numeric_limits<std::int64_t>::min();

TEST(Grouped, SeparatesThreeDigitsFromTheRight) {
    const std::pair<std::int64_t, const char*> rows[] = {
        {0, "0"},
        {-1, "-1"},
        {999, "999"},
        {1000, "1,000"},
        {-1001, "-1,001"},
        {1000000, "1,000,000"},
        {std::numeric_limits<std::int64_t>::max(), "9,223,372,036,854,775,807"},
        {lowest64, "-9,223,372,036,854,775,808"},
    };
    for (const auto& [value, expected] : rows) {
        EXPECT_EQ(CStringAFromInt64Grouped(value), expected);
        EXPECT_EQ(CStringWFromInt64Grouped(value), expected);
    }
    EXPECT_EQ(CStringWFromInt64Grouped(1234567, TEXT('\x202f')), TEXT("1\x202f"
                                                                      "234\x202f"
                                                                      "567"));
    EXPECT_EQ(CStringAFromInt64Grouped(1234, '\xa0'),
              "1\xa0"
              "234");
    EXPECT_EQ(CStringWFromInt64Grouped(1234, 0), CStringW(TEXT("1\0"
                                                               "234"),
                                                          5));
}

TEST(Grouped, IsTheNumberWithoutItsSeparators) {
    std::mt19937_64 random(5201);
    for (int i = 0; i < 20'000; ++i) {
        const auto value = static_cast<std::int64_t>(random()) >> (random() % 64);
        CStringA text = CStringAFromInt64Grouped(value, ';');
        for (int at = text.GetLength() - 4; at > (value < 0 ? 1 : 0); at -= 4) ASSERT_EQ(text[at], ';');
        text.Remove(';');
        ASSERT_EQ(std::to_string(value), text.GetString());
    }
}

TEST(FromDouble, FollowsTheRulesOfNotation) {
    const struct {
        double value;
        std::int16_t digits;
        const char* expected;
        char point = '.';
    } rows[] = {
        {1234.0, 2, "1234"},
        {-0.0, 7, "0"},
        {-2147483648.0, 3, "-2147483648"},
        {2147483647.0, 3, "2147483647"},
        {2147483648.0, 7, "2.147484E9"},
        {-2147483649.0, 10, "-2147483649"},
        {1234.5, 7, "1234.5"},
        {0.5, 7, "0.5"},
        {0.05, 7, "5E-2"},
        {1e10, 7, "1E10"},
        {-0.25, 7, "-0.25"},
        {1230.4, 4, "1230"},
        {123456.789, 4, "1.235E5"},
        {99.99, 2, "1E2"},
        {0.99999, 3, "1"},
        {1234.5, 7, "1234,5", ','},
        {0.0025, 7, "2,5E-3", ','},
        {0.125, 2, "0.13"},  // halves go away from zero
        {-2.5, 1, "-3"},
        {9.5, 1, "1E1"},
        {2147483650.0, 9, "2.14748365E9"},
        {21474836450.0, 9, "2.14748365E10"},
        {5e-324, 3, "4.94E-324"},
        {1.7976931348623157e308, 17, "1.7976931348623157E308"},
        {1.5, 0, "2"},  // digits below 1 count as 1
        {0.1, std::numeric_limits<std::int16_t>::min(), "0.1"},
        {std::numeric_limits<double>::infinity(), 7, "inf"},
        {-std::numeric_limits<double>::infinity(), 7, "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), 7, "nan"},
        {1.5, 7,
         "1\xb7"
         "5",
         '\xb7'},
        {1.5, 7, "1", '\0'},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CStringWFromDouble(row.value, row.digits, row.point), row.expected)
            << row.value << ' ' << row.digits;
    }
    EXPECT_EQ(CStringWFromDouble(0.1, std::numeric_limits<std::int16_t>::max(), '.'),
              CStringWFromDouble(0.1, 348, '.'));
    EXPECT_EQ(CStringWFromDouble(-std::nextafter(1e-300, 1), 348, '.').GetLength(), 1 + 1 + 348 + 5);
}

// The rules, word by word, over digits that are given.
std::string Written(bool isNegative, const std::string& digits, int point) {
    const auto count = static_cast<int>(digits.size());
    const bool isPlain = point >= 0 && point <= count;
    std::string text = isPlain ? digits : digits.substr(0, 1) + "." + digits.substr(1);
    if (isPlain && point < count) text.insert(static_cast<std::size_t>(point), point == 0 ? "0." : ".");
    if (text.find('.') != text.npos) {
        text.resize(text.find_last_not_of('0') + 1);
        if (text.back() == '.') text.pop_back();
    }
    return (isNegative ? "-" : "") + text + (isPlain ? "" : "E" + std::to_string(point - 1));
}

void ExpectExact(double value, int digits) {
    const auto [expected, point] = support::RoundedAwayFromZero(std::fabs(value), digits);
    ASSERT_EQ(CStringWFromDouble(value, static_cast<std::int16_t>(digits), '.'),
              CStringW(Written(value < 0, expected, point).c_str()))
        << std::hexfloat << value << ' ' << digits;
}

TEST(FromDouble, RoundsEveryDoubleExactly) {
    std::mt19937_64 random(5202);
    for (int i = 0; i < 6'000; ++i) {
        std::uint64_t bits = random();
        if (i % 2 == 0) bits = (bits & 0x800F'FFFF'FFFF'FFFF) | (1023 - 40 + random() % 80) << 52;
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value) || std::floor(value) == value) continue;
        ExpectExact(value, 1 + static_cast<int>(random() % 20));
    }
    // Decimals that are halves as written and lie on either side of them as doubles, and true halves.
    for (int i = 0; i < 6'000; ++i) {
        const auto number = static_cast<double>(random() % 1'000'000 * 10 + 5);
        const double value = i % 2 == 0 ? number / std::pow(10, random() % 12 + 1)
                                        : std::ldexp(number, -1 - static_cast<int>(random() % 8));
        for (int digits = 1; digits <= 9; ++digits) {
            if (std::floor(value) != value) ExpectExact(value, digits);
        }
    }
}

TEST(Columns, CountThroughTheirLetters) {
    std::string letters = "A";
    for (std::int32_t index = 0; index <= 18277; ++index) {
        ASSERT_EQ(ColumnLettersFromIndex(index), letters.c_str()) << index;
        const std::string reference = letters + "12";
        const char* cursor = reference.c_str();
        ASSERT_EQ(ColumnIndexFromLetters(&cursor), index);
        ASSERT_STREQ(cursor, "12");
        auto last = letters.find_last_not_of('Z');
        letters.replace(last + 1, letters.npos, letters.size() - last - 1, 'A');
        if (last == letters.npos) {
            letters.insert(letters.begin(), 'A');
        } else {
            ++letters[last];
        }
    }
    for (const std::int32_t index : {-1, 18278, std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_TRUE(ColumnLettersFromIndex(index).IsEmpty());
    }
}

TEST(Columns, AreReadFromTheFrontOfAReference) {
    const struct {
        const WCHAR* text;
        std::uint16_t index;
        int moved;
    } rows[] = {
        {TEXT("xfd1"), 16383, 3}, {TEXT("AB12"), 27, 2},      {TEXT("A1"), 0, 1},
        {TEXT("ABCD"), 730, 3},   {TEXT("12"), noColumn, 0},  {TEXT(""), noColumn, 0},
        {TEXT("z"), 25, 1},       {TEXT("$A"), noColumn, 0},  {TEXT("a\x017f"), 0, 1},
        {TEXT("@"), noColumn, 0}, {TEXT("[`{"), noColumn, 0}, {TEXT("\x0131"), noColumn, 0},
    };
    for (const auto& row : rows) {
        const WCHAR* wide = row.text;
        EXPECT_EQ(ColumnIndexFromLetters(&wide), row.index);
        EXPECT_EQ(wide - row.text, row.moved);
        if (row.text[row.moved] >= 0x80) continue;  // the code page has letters that look alike
        const CStringA narrowText(row.text);
        const char* narrow = narrowText;
        EXPECT_EQ(ColumnIndexFromLetters(&narrow), row.index);
        EXPECT_EQ(narrow - narrowText.GetString(), row.moved);
    }
    const char* none = nullptr;
    EXPECT_EQ(ColumnIndexFromLetters(&none), noColumn);
}

}  // namespace
