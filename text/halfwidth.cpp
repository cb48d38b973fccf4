#include "text/halfwidth.h"

#include <mbstring.h>

#include <array>

namespace {

using FoldMap = std::array<WCHAR, 0x10000>;

FoldMap MakeFoldMap() noexcept {
    FoldMap map;
    for (std::size_t unit = 0; unit < map.size(); ++unit) {
        const bool fullWidth = unit >= 0xFF01 && unit <= 0xFF5E;
        map[unit] = static_cast<WCHAR>(fullWidth ? unit + 0x120 : unit);
    }
    return map;
}

}  // namespace

WCHAR HalfWidthFromWide(WCHAR unit) noexcept {
    static const FoldMap map = MakeFoldMap();
    return map[unit];
}

int HalfWidthFromDbcs(UINT codePage, WORD character) noexcept {
    const auto high = static_cast<BYTE>(character >> 8);
    const auto low = static_cast<BYTE>(character & 0xFF);
    const bool twoBytes = character >= 0x100;
    if ((IsDBCSLeadByteEx(codePage, twoBytes ? high : low) != 0) != twoBytes) return -1;

    const char source[3] = {static_cast<char>(twoBytes ? high : low), static_cast<char>(twoBytes ? low : 0),
                            0};
    WCHAR wide[2];
    if (MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, source, -1, wide, 2) == 0) return -1;
    const WCHAR folded = HalfWidthFromWide(wide[0]);
    char target[3];
    const int size = WideCharToMultiByte(codePage, 0, &folded, 1, target, 3, nullptr, nullptr);
    if (size == 0) return -1;
    const int first = static_cast<unsigned char>(target[0]);
    return size == 1 ? first : first * 256 + static_cast<unsigned char>(target[1]);
}

int MbcsCharAt(const char* text, int index) noexcept {
    if (text == nullptr || index < 0) return -1;
    const auto* at = reinterpret_cast<const unsigned char*>(text);
    for (; index > 0 && *at != 0; --index) at = at[1] == 0 ? at + 1 : _mbsinc(at);
    return *at == 0 ? -1 : static_cast<int>(_mbsnextc(at));
}
