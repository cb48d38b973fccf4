// What the string classes know of single units and of the case of letters, wide and in the ANSI code page.
#pragma once

#include "ansitext.h"

namespace letters {

// U+0009 to U+000D and the blank, in wide text also Unicode's other spaces.
constexpr bool IsSpace(char unit) noexcept {
    return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

constexpr bool IsSpace(WCHAR unit) noexcept {
    if (unit < 0x80) return IsSpace(static_cast<char>(unit));
    switch (unit) {
        case 0x0085:
        case 0x00A0:
        case 0x1680:
        case 0x2028:
        case 0x2029:
        case 0x202F:
        case 0x205F:
        case 0x3000:
            return true;
        default:
            return unit >= 0x2000 && unit <= 0x200A;
    }
}

template <typename Unit>
bool IsAscii(Unit unit) noexcept {
    return ansitext::IsAscii(&unit, 1);
}

enum class LetterCase { upper, lower };

// Any other unit than an ASCII letter stays.
template <typename Unit>
constexpr Unit MapAsciiCase(Unit unit, LetterCase to) noexcept {
    const char first = to == LetterCase::upper ? 'a' : 'A';
    return unit >= first && unit <= first + 25 ? static_cast<Unit>(unit ^ 0x20) : unit;
}

// By the system's case rules, in place. A narrow character whose other case the code page lacks stays.
void MapCase(WCHAR* text, std::size_t length, LetterCase to) noexcept;
void MapCase(char* text, std::size_t length, LetterCase to) noexcept;

}  // namespace letters
