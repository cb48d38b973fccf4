// The fields of a formatted text, each written from one value by its specification. Private to msformat.cpp.
#pragma once

#include "ansitext.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace msformat::fields {

template <typename Unit>
using OtherWidth = std::conditional_t<std::is_same_v<Unit, char>, WCHAR, char>;

// Units are written as long as they fit; the first piece that doesn't is the last one looked at, the rest is
// counted. So measuring costs no more than the lengths.
template <typename Unit>
class Output {
  public:
    Output(Unit* target, std::size_t capacity) noexcept : next_(target), room_(capacity) {}

    void Append(const Unit* text, std::size_t length) noexcept {
        if (Unit* place = Take(length)) std::char_traits<Unit>::copy(place, text, length);
    }
    void AppendAscii(std::string_view text) noexcept {
        if (Unit* place = Take(text.size())) {
            std::transform(text.begin(), text.end(), place,
                           [](char each) { return static_cast<Unit>(each); });
        }
    }
    void AppendConverted(const OtherWidth<Unit>* text, std::size_t length, std::size_t converted) noexcept {
        if (Unit* place = Take(converted)) ansitext::Convert(text, length, place, converted);
    }
    void Repeat(char unit, std::size_t count) noexcept {
        if (Unit* place = Take(count)) std::fill_n(place, count, static_cast<Unit>(unit));
    }
    [[nodiscard]] std::size_t Length() const noexcept {
        return static_cast<std::size_t>(std::min<std::uint64_t>(length_, SIZE_MAX));
    }

  private:
    Unit* Take(std::size_t count) noexcept {
        length_ += count;
        if (count == 0) return nullptr;
        if (count > room_) {
            room_ = 0;
            return nullptr;
        }
        room_ -= count;
        return std::exchange(next_, next_ + count);
    }

    Unit* next_;
    std::size_t room_;
    std::uint64_t length_ = 0;
};

enum class Size { none, hh, h, wide, bits64, pointer, longDouble };  // `wide` says nothing to numbers

constexpr std::size_t noPrecision = SIZE_MAX;

template <typename Unit>
struct Specification {
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool zeros = false;
    std::size_t width = 0;
    std::size_t precision = noPrecision;
    Size size = Size::none;
    Unit conversion = 0;  // 0 if the format ends before it
};

// A number's text in the order in which it is written.
struct NumberText {
    std::string_view prefix{};     // sign and base
    std::size_t leadingZeros = 0;  // that the precision asks for
    std::string_view digits{};
    std::size_t innerZeros = 0;  // digits that are known to be zeros
    std::string_view exponent{};
    bool mayPadWithZeros = true;
};

template <typename Unit>
void WriteNumber(Output<Unit>& output, const Specification<Unit>& specification,
                 const NumberText& text) noexcept {
    const std::uint64_t length = std::uint64_t{text.prefix.size()} + text.leadingZeros + text.digits.size() +
                                 text.innerZeros + text.exponent.size();
    const std::size_t padding =
        specification.width > length ? specification.width - static_cast<std::size_t>(length) : 0;
    const bool withZeros = specification.zeros && text.mayPadWithZeros;
    if (!specification.left && !withZeros) output.Repeat(' ', padding);
    output.AppendAscii(text.prefix);
    if (!specification.left && withZeros) output.Repeat('0', padding);
    output.Repeat('0', text.leadingZeros);
    output.AppendAscii(text.digits);
    output.Repeat('0', text.innerZeros);
    output.AppendAscii(text.exponent);
    if (specification.left) output.Repeat(' ', padding);
}

template <typename Unit>
std::string_view SignOf(bool negative, const Specification<Unit>& specification) noexcept {
    return negative ? "-" : specification.plus ? "+" : specification.blank ? " " : "";
}

inline void MakeUpper(char* text, std::size_t length) noexcept {
    std::transform(text, text + length, text, [](char each) {
        return each >= 'a' && each <= 'z' ? static_cast<char>(each - 0x20) : each;
    });
}

template <typename Unit>
void WriteInteger(Output<Unit>& output, const Specification<Unit>& specification, std::uint64_t magnitude,
                  std::string_view sign) noexcept {
    const bool hexadecimal = specification.conversion == 'x' || specification.conversion == 'X';
    const bool octal = specification.conversion == 'o';
    std::array<char, 24> buffer;
    const char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude,
                                    hexadecimal ? 16
                                    : octal     ? 8
                                                : 10)
                          .ptr;
    auto length = static_cast<std::size_t>(end - buffer.data());
    if (specification.conversion == 'X') MakeUpper(buffer.data(), length);
    if (specification.precision == 0 && magnitude == 0) length = 0;

    NumberText text{.prefix = sign, .digits = {buffer.data(), length}};
    if (specification.precision != noPrecision) {
        text.mayPadWithZeros = false;
        if (specification.precision > length) text.leadingZeros = specification.precision - length;
    }
    if (specification.alternate && hexadecimal && magnitude != 0) {
        text.prefix = specification.conversion == 'x' ? "0x" : "0X";
    }
    if (specification.alternate && octal && text.leadingZeros == 0 && !text.digits.starts_with('0')) {
        text.leadingZeros = 1;
    }
    WriteNumber(output, specification, text);
}

template <typename Unit>
void WriteSigned(Output<Unit>& output, const Specification<Unit>& specification,
                 std::int64_t value) noexcept {
    const bool negative = value < 0;
    const auto bits = static_cast<std::uint64_t>(value);
    WriteInteger(output, specification, negative ? 0 - bits : bits, SignOf(negative, specification));
}

template <typename Unit>
void WritePointer(Output<Unit>& output, Specification<Unit> specification, const void* value) noexcept {
    specification.conversion = 'X';
    specification.precision = 2 * sizeof(void*);
    WriteInteger(output, specification, reinterpret_cast<std::uintptr_t>(value), "");
}

// The digits of one finite double, at least 0. What lies beyond its last digit that can differ from zero is
// only counted.
class DoubleDigits {
  public:
    DoubleDigits(double value, std::size_t precision, char conversion, bool alternate) noexcept {
        switch (conversion) {
            case 'a':
                SplitAt('p', Write(value, std::chars_format::hex, precision, 13), precision, alternate);
                break;
            case 'e':
                SplitAt('e', Write(value, std::chars_format::scientific, precision, 766), precision,
                        alternate);
                break;
            case 'f':
                SplitAt('.', Write(value, std::chars_format::fixed, precision, 1074), precision, alternate);
                break;
            default:
                General(value, std::max<std::size_t>(precision, 1), alternate);
        }
    }
    void MakeUpper() noexcept { fields::MakeUpper(buffer_.data(), buffer_.size()); }

    void PutInto(NumberText& text) const noexcept {
        text.digits = {buffer_.data(), digits_};
        text.innerZeros = zeros_;
        text.exponent = {buffer_.data() + digits_, length_ - digits_};
    }

  private:
    static constexpr std::size_t mostWholeDigits = 309;
    static constexpr std::size_t mostFractionDigits = 1074;

    // Gives the digits behind the point that were written.
    std::size_t Write(double value, std::chars_format format, std::size_t precision,
                      std::size_t most) noexcept {
        const std::size_t written = std::min(precision, most);
        char* const begin = buffer_.data();
        const char* end =
            std::to_chars(begin, begin + buffer_.size() - 1, value, format, static_cast<int>(written)).ptr;
        length_ = static_cast<std::size_t>(end - begin);
        return written;
    }

    void SplitAt(char exponent, std::size_t written, std::size_t precision, bool alternate) noexcept {
        const std::string_view text(buffer_.data(), length_);
        digits_ = exponent == '.' ? length_ : std::min(text.find(exponent), length_);
        zeros_ = precision - written;
        if (alternate && precision == 0) {
            std::memmove(buffer_.data() + digits_ + 1, buffer_.data() + digits_, length_ - digits_);
            buffer_[digits_++] = '.';
            ++length_;
        }
    }

    // `significant` digits in all: in the form f for exponents from -4 to below that count, else in e.
    void General(double value, std::size_t significant, bool alternate) noexcept {
        if (!alternate) {
            Write(value, std::chars_format::general, significant, mostWholeDigits + mostFractionDigits);
            digits_ = length_;
            return;
        }
        const std::size_t written = Write(value, std::chars_format::scientific, significant - 1, 766);
        SplitAt('e', written, significant - 1, true);
        const char* const end = buffer_.data() + length_;
        int exponent = 0;
        std::from_chars(buffer_.data() + digits_ + (buffer_[digits_ + 1] == '+' ? 2 : 1), end, exponent);
        if (exponent < -4 || exponent >= static_cast<std::int64_t>(significant)) return;
        const auto fraction = static_cast<std::size_t>(static_cast<std::int64_t>(significant) - 1 - exponent);
        SplitAt('.', Write(value, std::chars_format::fixed, fraction, mostFractionDigits), fraction, true);
    }

    std::array<char, mostWholeDigits + 1 + mostFractionDigits + 16> buffer_;
    std::size_t length_ = 0;
    std::size_t digits_ = 0;
    std::size_t zeros_ = 0;
};

// As Microsoft's runtime names them: the quiet NaN that invalid operations give is the indeterminate one.
inline std::string_view NameOfSpecial(double value) noexcept {
    if (std::isinf(value)) return "inf";
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    constexpr std::uint64_t quiet = std::uint64_t{1} << 51;
    if ((bits & quiet) == 0) return "nan(snan)";
    return bits == 0xFFF8'0000'0000'0000 ? "nan(ind)" : "nan";
}

template <typename Unit>
void WriteSpecial(Output<Unit>& output, const Specification<Unit>& specification, double value,
                  bool upper) noexcept {
    const std::string_view name = NameOfSpecial(value);
    std::array<char, 16> buffer;
    std::copy(name.begin(), name.end(), buffer.begin());
    if (upper) MakeUpper(buffer.data(), name.size());
    WriteNumber(output, specification,
                NumberText{.prefix = SignOf(std::signbit(value), specification),
                           .digits = {buffer.data(), name.size()},
                           .mayPadWithZeros = false});
}

template <typename Unit>
void WriteDouble(Output<Unit>& output, const Specification<Unit>& specification, double value) noexcept {
    const bool upper = specification.conversion < 'a';
    if (!std::isfinite(value)) return WriteSpecial(output, specification, value, upper);

    const auto conversion = static_cast<char>(specification.conversion | 0x20);
    const std::size_t defaultPrecision = conversion == 'a' ? 13 : 6;
    const std::size_t precision =
        specification.precision == noPrecision ? defaultPrecision : specification.precision;
    const bool negative = std::signbit(value);
    DoubleDigits digits(std::fabs(value), precision, conversion, specification.alternate);
    if (upper) digits.MakeUpper();

    std::array<char, 3> prefix;
    const std::string_view sign = SignOf(negative, specification);
    char* end = std::copy(sign.begin(), sign.end(), prefix.data());
    if (conversion == 'a') {
        *end++ = '0';
        *end++ = upper ? 'X' : 'x';
    }
    NumberText text{.prefix = {prefix.data(), static_cast<std::size_t>(end - prefix.data())}};
    digits.PutInto(text);
    WriteNumber(output, specification, text);
}

// A piece of the source, and what it comes to in the output's own units.
struct Extent {
    std::size_t length;
    std::size_t converted;
};

// Of a text that ends with a zero, or where more than `precision` units would come of it.
template <typename Unit, typename Source>
Extent ExtentOf(const Source* text, std::size_t precision) noexcept {
    constexpr bool own = std::is_same_v<Unit, Source>;
    if (precision == noPrecision) {
        const std::size_t length = std::char_traits<Source>::length(text);
        return {length, own ? length : ansitext::ConvertedLength(text, length)};
    }
    Extent extent{0, 0};
    while (extent.converted < precision && text[extent.length] != 0) {
        const Source* const character = text + extent.length;
        const std::size_t length = own ? 1 : ansitext::CharacterLength(character);
        const std::size_t converted = own ? 1 : ansitext::ConvertedLength(character, length);
        if (extent.converted + converted > precision) break;
        extent.length += length;
        extent.converted += converted;
    }
    return extent;
}

template <typename Unit, typename Source>
void WritePadded(Output<Unit>& output, const Specification<Unit>& specification, const Source* text,
                 const Extent& extent) noexcept {
    const std::size_t padding =
        specification.width > extent.converted ? specification.width - extent.converted : 0;
    if (!specification.left) output.Repeat(specification.zeros ? '0' : ' ', padding);
    if constexpr (std::is_same_v<Unit, Source>) {
        output.Append(text, extent.length);
    } else {
        output.AppendConverted(text, extent.length, extent.converted);
    }
    if (specification.left) output.Repeat(' ', padding);
}

template <typename Source, typename Unit>
void WriteText(Output<Unit>& output, const Specification<Unit>& specification, const Source* given) noexcept {
    static constexpr Source nullText[] = {'(', 'n', 'u', 'l', 'l', ')', 0};
    const Source* const text = given == nullptr ? nullText : given;
    WritePadded(output, specification, text, ExtentOf<Unit>(text, specification.precision));
}

template <typename Source, typename Unit>
void WriteCharacter(Output<Unit>& output, const Specification<Unit>& specification,
                    Source character) noexcept {
    const std::size_t converted = std::is_same_v<Source, Unit> ? 1 : ansitext::ConvertedLength(&character, 1);
    WritePadded(output, specification, &character, Extent{1, converted});
}

// Whether the text or character of this specification is wide.
template <typename Unit>
bool TakesWide(const Specification<Unit>& specification) noexcept {
    constexpr bool wideFormat = std::is_same_v<Unit, WCHAR>;
    switch (specification.size) {
        case Size::hh:
        case Size::h:
            return false;
        case Size::wide:
            return true;
        default:
            return (specification.conversion == 's' || specification.conversion == 'c') == wideFormat;
    }
}

}  // namespace msformat::fields
