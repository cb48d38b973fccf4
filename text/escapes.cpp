#include "text/escapes.h"

#include "text/detail/bytecoding.h"
#include "text/detail/cstringlength.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace {

using kestrolumen::TextViewA;
using kestrolumen::TextViewW;

template <typename Unit>
constexpr bool IsPrintable(Unit unit) noexcept {
    return unit >= 0x20 && unit <= 0x7E;
}

template <typename Unit>
constexpr std::size_t escapeLength = 2 + 2 * sizeof(Unit);

template <typename Target>
Target* WriteEscape(char byte, Target* target) noexcept {
    const auto code = static_cast<std::uint8_t>(byte);
    char digits[2];
    kestrolumen::detail::EncodeHex(&code, 1, digits);
    return std::copy_n(digits, 2, target);
}

template <typename Target>
Target* WriteEscape(WCHAR unit, Target* target) noexcept {
    target = WriteEscape(static_cast<char>(unit >> 8), target);
    return WriteEscape(static_cast<char>(unit & 0xFF), target);
}

template <typename Text>
void Resize(Text& text, std::uint64_t length) {
    static_cast<void>(text.GetBufferSetLength(
        kestrolumen::detail::CStringLength(length, "escaped text: longer than 2^31 - 2 units")));
}

void Resize(std::string& text, std::uint64_t length) {
    if (length > text.max_size()) throw std::length_error("escaped text: longer than a string can be");
    text.resize(static_cast<std::size_t>(length));
}

template <typename Text>
auto* Start(Text& text) {
    return text.GetBuffer();
}

char* Start(std::string& text) noexcept {
    return text.data();
}

template <typename Result, typename Unit>
Result Escaped(std::basic_string_view<Unit> text) {
    const auto printable =
        static_cast<std::uint64_t>(std::count_if(text.begin(), text.end(), IsPrintable<Unit>));
    Result escaped;
    Resize(escaped, printable + (text.size() - printable) * escapeLength<Unit>);
    auto* target = Start(escaped);
    using Target = std::remove_reference_t<decltype(*target)>;
    for (const Unit unit : text) {
        if (IsPrintable(unit)) {
            *target++ = static_cast<Target>(unit);
        } else {
            *target++ = '<';
            target = WriteEscape(unit, target);
            *target++ = '>';
        }
    }
    return escaped;
}

}  // namespace

template <typename Result>
Result EscapedTextA(TextViewA text) {
    return Escaped<Result, char>(text);
}

template <typename Result>
Result EscapedTextW(TextViewW text) {
    return Escaped<Result, WCHAR>(text);
}

template CStringA EscapedTextA<CStringA>(TextViewA);
template std::string EscapedTextA<std::string>(TextViewA);
template CStringA EscapedTextW<CStringA>(TextViewW);
template std::string EscapedTextW<std::string>(TextViewW);
template CStringW EscapedTextW<CStringW>(TextViewW);
