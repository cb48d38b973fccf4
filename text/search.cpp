#include "text/search.h"

#include "text/detail/ansicodepage.h"

#include <cctype>
#include <cwctype>

namespace {

bool IsAsciiLower(unsigned code) noexcept {
    return code - 'a' < 26;
}

unsigned Folded(char byte) noexcept {
    const unsigned code = static_cast<unsigned char>(byte);
    if (code < 0x80) return IsAsciiLower(code) ? code - 0x20 : code;
    return static_cast<unsigned>(std::toupper(static_cast<int>(code)));
}

unsigned Folded(WCHAR unit) noexcept {
    const unsigned code = unit;
    if (code < 0x80) return IsAsciiLower(code) ? code - 0x20 : code;
    return static_cast<unsigned>(std::towupper(static_cast<std::wint_t>(code)));
}

// Single units, whatever they are.
template <typename Unit>
struct Units {
    static std::size_t Length(const Unit*) noexcept { return 1; }
    static bool Match(const Unit* left, const Unit* right, std::size_t) noexcept {
        return *left == *right || Folded(*left) == Folded(*right);
    }
};

// Characters of a double-byte code page.
struct DoubleBytes {
    static std::size_t Length(const char* text) noexcept {
        const auto first = static_cast<unsigned char>(*text);
        return first >= 0x80 && text[1] != 0 && IsDBCSLeadByteEx(CP_ACP, first) != FALSE ? 2 : 1;
    }
    static bool Match(const char* left, const char* right, std::size_t rightLength) noexcept {
        if (Length(left) != rightLength) return false;
        if (rightLength == 1) return Folded(*left) == Folded(*right);
        return left[0] == right[0] && left[1] == right[1];
    }
};

// The text's terminator matches nothing in `sought`, so no place beyond it is read.
template <typename Characters, typename Unit>
bool BeginsWith(const Unit* text, const Unit* sought) noexcept {
    while (*sought != 0) {
        const std::size_t length = Characters::Length(sought);
        if (!Characters::Match(text, sought, length)) return false;
        text += length;
        sought += length;
    }
    return true;
}

template <typename Characters, typename Unit>
const Unit* FindNoCase(const Unit* text, const Unit* sought) noexcept {
    if (*sought == 0) return nullptr;
    const unsigned first = Folded(*sought);
    for (; *text != 0; text += Characters::Length(text)) {
        if (Folded(*text) == first && BeginsWith<Characters>(text, sought)) return text;
    }
    return nullptr;
}

}  // namespace

const char* FindNoCaseA(const char* text, const char* sought) noexcept {
    return kestrolumen::detail::LongestAnsiCharacter() == 2 ? FindNoCase<DoubleBytes>(text, sought)
                                                            : FindNoCase<Units<char>>(text, sought);
}

const WCHAR* FindNoCaseW(const WCHAR* text, const WCHAR* sought) noexcept {
    return FindNoCase<Units<WCHAR>>(text, sought);
}
