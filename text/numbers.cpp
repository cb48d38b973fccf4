#include "text/numbers.h"

#include "text/detail/digits.h"
#include "text/format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

namespace {

template <typename Unit>
kestrolumen::CStringOf<Unit> Grouped(std::int64_t value, Unit separator) {
    char plain[20]{};
    const char* const end = std::to_chars(plain, std::end(plain), value).ptr;
    Unit grouped[26];
    Unit* target = grouped;
    for (const char* digit = plain; digit != end; ++digit) {
        const bool startsGroup = (end - digit) % 3 == 0 && digit != plain && digit[-1] != '-';
        if (startsGroup) *target++ = separator;
        *target++ = static_cast<Unit>(*digit);
    }
    return {grouped, static_cast<int>(target - grouped)};
}

char* WithoutTrailingZeros(const char* point, char* end) noexcept {
    while (end[-1] == '0') --end;
    return end - 1 == point ? end - 1 : end;
}

// Gives the end of the text.
char* WritePlain(const char* digits, int count, int point, char decimalPoint, char* text) noexcept {
    if (point == 0) *text++ = '0';
    text = std::copy_n(digits, point, text);
    if (point == count) return text;
    const char* const mark = text;
    *text++ = decimalPoint;
    return WithoutTrailingZeros(mark, std::copy(digits + point, digits + count, text));
}

char* WriteWithExponent(const char* digits, int count, int point, char decimalPoint, char* text) noexcept {
    *text++ = digits[0];
    const char* const mark = text;
    *text++ = decimalPoint;
    text = WithoutTrailingZeros(mark, std::copy(digits + 1, digits + count, text));
    *text++ = 'E';
    return std::to_chars(text, text + 8, point - 1).ptr;
}

bool IsWholeOf32Bits(double value) noexcept {
    return value >= -2147483648.0 && value <= 2147483647.0 && std::floor(value) == value;
}

template <typename Unit>
unsigned LetterNumber(Unit unit) noexcept {
    const auto letter = static_cast<unsigned>(unit) | 0x20;
    return letter - 'a';  // above 25 for what is no letter
}

template <typename Unit>
std::uint16_t ReadColumn(const Unit** cursor) noexcept {
    const Unit* text = *cursor;
    if (text == nullptr) return noColumn;
    unsigned oneBased = 0;
    int count = 0;
    for (; count < 3 && LetterNumber(text[count]) < 26; ++count) {
        oneBased = oneBased * 26 + LetterNumber(text[count]) + 1;
    }
    *cursor += count;
    return count == 0 ? noColumn : static_cast<std::uint16_t>(oneBased - 1);
}

}  // namespace

CStringW CStringWFromInt64Grouped(std::int64_t value, WCHAR separator) {
    return Grouped(value, separator);
}

CStringA CStringAFromInt64Grouped(std::int64_t value, char separator) {
    return Grouped(value, separator);
}

CStringW CStringWFromDouble(double value, std::int16_t digits, char decimalPoint) {
    if (!std::isfinite(value)) return CStringWFormat(TEXT("%g"), value);
    char text[kestrolumen::detail::mostDigits + 16];
    char* end = text;
    if (IsWholeOf32Bits(value)) {
        end = std::to_chars(text, text + 16, static_cast<std::int32_t>(value)).ptr;
    } else {
        const int count = std::clamp<int>(digits, 1, kestrolumen::detail::mostDigits);
        char significant[kestrolumen::detail::mostDigits];
        const int point = kestrolumen::detail::SignificantDigits(
            std::fabs(value), count, kestrolumen::detail::Ties::awayFromZero, significant);
        if (value < 0) *end++ = '-';
        end = point >= 0 && point <= count ? WritePlain(significant, count, point, decimalPoint, end)
                                           : WriteWithExponent(significant, count, point, decimalPoint, end);
    }
    *end = 0;
    return CStringW(text);
}

CStringW ColumnLettersFromIndex(std::int32_t index) {
    if (index < 0 || index > 18277) return CStringW();
    WCHAR letters[3];
    WCHAR* begin = std::end(letters);
    // Digits from A for 1 to Z for 26: there is none for 0.
    for (int oneBased = index + 1; oneBased > 0; oneBased = (oneBased - 1) / 26) {
        *--begin = static_cast<WCHAR>('A' + (oneBased - 1) % 26);
    }
    return CStringW(begin, static_cast<int>(std::end(letters) - begin));
}

std::uint16_t ColumnIndexFromLetters(const char** cursor) noexcept {
    return ReadColumn(cursor);
}

std::uint16_t ColumnIndexFromLetters(const WCHAR** cursor) noexcept {
    return ReadColumn(cursor);
}
