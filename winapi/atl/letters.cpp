#include "letters.h"

#include <algorithm>
#include <iterator>

namespace letters {
namespace {

// Maps one character that isn't ASCII, by way of its wide form. It stays where the way back is lost.
void MapCharacterCase(char* text, std::size_t length, LetterCase to) noexcept {
    WCHAR wide[2];
    const std::size_t units = ansitext::Convert(text, length, wide, std::size(wide));
    if (units == 0) return;
    MapCase(wide, units, to);
    char mapped[4];
    WCHAR again[2];
    const std::size_t bytes = ansitext::Convert(wide, units, mapped, std::size(mapped));
    if (bytes != length || ansitext::Convert(mapped, bytes, again, std::size(again)) != units) return;
    if (std::equal(wide, wide + units, again)) std::copy_n(mapped, length, text);
}

}  // namespace

void MapCase(WCHAR* text, std::size_t length, LetterCase to) noexcept {
    const auto count = static_cast<DWORD>(length);
    if (to == LetterCase::upper) {
        CharUpperBuffW(text, count);
    } else {
        CharLowerBuffW(text, count);
    }
}

void MapCase(char* text, std::size_t length, LetterCase to) noexcept {
    for (std::size_t i = 0; i < length;) {
        const std::size_t size = ansitext::CharacterLength(text + i);
        if (IsAscii(text[i])) {
            text[i] = MapAsciiCase(text[i], to);
        } else {
            MapCharacterCase(text + i, size, to);
        }
        i += size;
    }
}

}  // namespace letters
