// Numbers as text against exact decimal arithmetic, and column letters against counting.
#include "text/numbers.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr auto lowest64 = std::numeric_limits<std::int64_t>::min();

TEST(Grouped, SeparatesThreeDigitsFromTheRight) {
    EXPECT_EQ(CStringWFromInt64Grouped(lowest64), "-9,223,372,036,854,775,808");
    EXPECT_EQ(CStringWFromInt64Grouped(1234, 0), CStringW(TEXT("1\0"
                                                               "234"),
                                                          5));
    std::mt19937_64 random(5201);
    for (int i = 0; i < 20'000; ++i) {
        const auto value = static_cast<std::int64_t>(random()) >> (random() % 64);
        std::string expected = std::to_string(value);
        for (auto at = expected.size(); at > (value < 0 ? 4u : 3u);) expected.insert(at -= 3, ",");
        ASSERT_EQ(CStringAFromInt64Grouped(value), expected.c_str());
    }
}

TEST(FromDouble, FollowsTheRulesOfNotation) {
    const struct {
        double value;
        std::int16_t digits;
        const char* expected;
        char point = '.';
    } rows[] = {
        {-0.0, 7, "0"},
        {-2147483648.0, 3, "-2147483648"},
        {2147483648.0, 7, "2.147484E9"},
        {-2147483649.0, 10, "-2147483649"},
        {9.5, 1, "1E1"},
        {5e-324, 3, "4.94E-324"},
        {1.7976931348623157e308, 17, "1.7976931348623157E308"},
        {1.5, 0, "2"},  // digits below 1 count as 1
        {0.1, std::numeric_limits<std::int16_t>::min(), "0.1"},
        {std::numeric_limits<double>::infinity(), 7, "inf"},
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

// Rounded by hand from all its digits: the first `count`, and the place of the point in front of them.
std::pair<std::string, int> RoundedAwayFromZero(double value, std::size_t count) {
    char text[800]{};
    std::to_chars(text, std::end(text), value, std::chars_format::scientific, 780);
    std::string digits(text, 782);  // with the point; the exponent is behind
    digits.erase(1, 1);
    const int point = std::atoi(text + 783) + 1;
    const bool up = digits[count] >= '5';
    digits.resize(count);
    const auto last = digits.find_last_not_of('9');
    if (up && last == digits.npos) return {"1" + std::string(count - 1, '0'), point + 1};
    if (up)
        digits.replace(
            last, count - last,
            std::string(1, static_cast<char>(digits[last] + 1)) + std::string(count - last - 1, '0'));
    return {digits, point};
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
    const auto [expected, point] = RoundedAwayFromZero(std::fabs(value), static_cast<std::size_t>(digits));
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
    for (const std::int32_t index : {-1, 18278}) EXPECT_TRUE(ColumnLettersFromIndex(index).IsEmpty());
    for (const WCHAR* cursor : {TEXT("@`"), TEXT("["), TEXT("\x00e1"), static_cast<const WCHAR*>(nullptr)}) {
        EXPECT_EQ(ColumnIndexFromLetters(&cursor), noColumn);
    }
    const char* word = "XFDA";  // a fourth letter is none of the column's
    EXPECT_EQ(ColumnIndexFromLetters(&word), 16383);
    EXPECT_STREQ(word, "A");
}

}  // namespace
