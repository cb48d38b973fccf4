// Any bytes as UTF-8 and as UTF-16 through the system's calls, beside a reader of one character after the other.
#include "fuzz.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>

using fuzz::Check;

namespace {

constexpr char32_t replacement = 0xFFFD;

// The next character of `text`, which is cut by it: a maximal subpart of an ill-formed sequence gives U+FFFD.
// The bounds of the second byte are those of table 3-7 of the Unicode Standard.
char32_t NextCharacter(std::string_view& text) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = at(0);
    std::size_t trails = 0;
    unsigned low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) trails = 1;
    if (lead >= 0xE0 && lead <= 0xEF) trails = 2;
    if (lead >= 0xF0 && lead <= 0xF4) trails = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
    char32_t character = trails == 0 ? lead : lead & (0x3FU >> trails);
    std::size_t taken = 1;
    for (; taken <= trails && taken < text.size() && at(taken) >= low && at(taken) <= high; ++taken) {
        character = character << 6 | (at(taken) & 0x3FU);
        low = 0x80;
        high = 0xBF;
    }
    text.remove_prefix(taken);
    return taken <= trails || (trails == 0 && lead >= 0x80) ? replacement : character;
}

std::u16string Utf16Reference(std::string_view text) {
    std::u16string units;
    while (!text.empty()) {
        const char32_t character = NextCharacter(text);
        if (character > 0xFFFF) units += static_cast<char16_t>(0xD7C0 + (character >> 10));
        units += static_cast<char16_t>(character > 0xFFFF ? 0xDC00 | (character & 0x3FF) : character);
    }
    return units;
}

std::string Utf8Reference(std::u16string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        const bool isPair = character >= 0xD800 && character < 0xDC00 && i + 1 < text.size() &&
                            text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
        if (isPair) character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00U);
        if (character >= 0xD800 && character < 0xE000) character = replacement;
        const int trails = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        static constexpr unsigned leads[] = {0, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(leads[trails] | character >> (6 * trails));
        for (int trail = trails; trail-- > 0;)
            bytes += static_cast<char>(0x80 | (character >> (6 * trail) & 0x3F));
    }
    return bytes;
}

// Memory of a size of its own, which begins `offset` units behind the beginning of its block.
template <typename Unit>
struct Exact {
    std::unique_ptr<Unit[]> block;
    std::span<Unit> units;

    Exact(std::size_t size, std::size_t offset)
        : block(new Unit[offset + size]), units(block.get() + offset, size) {}
    [[nodiscard]] std::basic_string_view<Unit> View() const { return {units.data(), units.size()}; }
};
template <typename Unit>
Exact<Unit> Copy(std::basic_string_view<Unit> text, std::size_t offset) {
    Exact<Unit> copy(text.size(), offset);
    std::copy(text.begin(), text.end(), copy.units.begin());
    return copy;
}

// Converts into the size told, which must give the reference, and into one unit less, which must be refused.
template <typename To, typename Convert>
void CheckConversion(std::basic_string_view<To> reference, std::size_t offset, Convert convert) {
    const auto size = static_cast<int>(reference.size());
    Check(convert(nullptr, 0) == size, "the size is told");
    const Exact<To> room(reference.size(), offset);
    Check(convert(room.units.data(), size) == size && room.View() == reference,
          "the text is the reference's");
    if (size < 2) return;
    const Exact<To> tooSmall(reference.size() - 1, offset);
    Check(convert(tooSmall.units.data(), size - 1) == 0, "less room is refused");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    const std::size_t offset = data[0] % 32;
    const std::string bytes(data + 1, data + size);
    const std::u16string units = fuzz::Wide({data + 1, size - 1}).GetString();
    if (units.empty()) return 0;
    const auto utf8 = Copy(std::string_view(bytes), offset);
    const auto utf16 = Copy(std::u16string_view(units), offset);
    CheckConversion<char16_t>(Utf16Reference(bytes), offset, [&](char16_t* to, int room) {
        return MultiByteToWideChar(CP_UTF8, 0, utf8.units.data(), static_cast<int>(bytes.size()), to, room);
    });
    CheckConversion<char>(Utf8Reference(units), offset, [&](char* to, int room) {
        return WideCharToMultiByte(CP_UTF8, 0, utf16.units.data(), static_cast<int>(units.size()), to, room,
                                   nullptr, nullptr);
    });
    return 0;
}
