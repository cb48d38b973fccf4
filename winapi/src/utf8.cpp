#include "utf8.h"

#include <cstdint>

namespace winapi::utf8 {
namespace {

constexpr char32_t replacement = 0xFFFD;

// One character, or the replacement for what is ill-formed.
struct Decoded {
    char32_t character;
    std::size_t length;  // source units
    bool wellFormed;
};

constexpr Decoded IllFormed(std::size_t length) {
    return {replacement, length, false};
}

constexpr bool IsContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

// The lead byte decides the length and the range of the second byte (The Unicode Standard, table 3-7).
Decoded DecodeFirst(std::string_view text) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t lead = byte(0);
    if (lead < 0x80) return {lead, 1, true};
    if (lead < 0xC2 || lead > 0xF4) return IllFormed(1);
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const std::uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const std::uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (text.size() < 2 || byte(1) < low || byte(1) > high) return IllFormed(1);
    char32_t character = (lead & (0x7Fu >> length)) << 6 | (byte(1) & 0x3Fu);
    for (std::size_t i = 2; i < length; ++i) {
        if (i == text.size() || !IsContinuation(byte(i))) return IllFormed(i);
        character = character << 6 | (byte(i) & 0x3Fu);
    }
    return {character, length, true};
}

constexpr bool IsHighSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}
constexpr bool IsSurrogate(char16_t unit) {
    return (unit & 0xF800) == 0xD800;
}

Decoded DecodeFirst(std::u16string_view text) noexcept {
    const char16_t unit = text[0];
    if (!IsSurrogate(unit)) return {unit, 1, true};
    if (!IsHighSurrogate(unit) || text.size() < 2 || !IsLowSurrogate(text[1])) return IllFormed(1);
    return {0x10000 + ((unit & 0x3FFu) << 10 | (text[1] & 0x3FFu)), 2, true};
}

constexpr std::size_t Utf16Units(char32_t character) {
    return character < 0x10000 ? 1 : 2;
}

constexpr std::size_t Utf8Units(char32_t character) {
    return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

void Encode(char32_t character, char16_t* to) noexcept {
    if (character < 0x10000) {
        to[0] = static_cast<char16_t>(character);
    } else {
        to[0] = static_cast<char16_t>(0xD7C0 + (character >> 10));
        to[1] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
}

void Encode(char32_t character, char* to) noexcept {
    const std::size_t length = Utf8Units(character);
    if (length == 1) {
        to[0] = static_cast<char>(character);
        return;
    }
    for (std::size_t i = length - 1; i > 0; --i) {
        to[i] = static_cast<char>(0x80 | (character & 0x3F));
        character >>= 6;
    }
    to[0] = static_cast<char>((0xF00 >> length) | character);
}

}  // namespace

std::size_t Utf16Length(std::string_view text) noexcept {
    std::size_t units = 0;
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        units += Utf16Units(first.character);
        text.remove_prefix(first.length);
    }
    return units;
}

std::size_t Utf8Length(std::u16string_view text) noexcept {
    std::size_t units = 0;
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        units += Utf8Units(first.character);
        text.remove_prefix(first.length);
    }
    return units;
}

std::optional<std::size_t> ToUtf16(std::string_view text, std::span<char16_t> destination) noexcept {
    std::size_t written = 0;
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        const std::size_t units = Utf16Units(first.character);
        if (destination.size() - written < units) return std::nullopt;
        Encode(first.character, &destination[written]);
        written += units;
        text.remove_prefix(first.length);
    }
    return written;
}

std::optional<std::size_t> ToUtf8(std::u16string_view text, std::span<char> destination) noexcept {
    std::size_t written = 0;
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        const std::size_t units = Utf8Units(first.character);
        if (destination.size() - written < units) return std::nullopt;
        Encode(first.character, &destination[written]);
        written += units;
        text.remove_prefix(first.length);
    }
    return written;
}

bool IsWellFormed(std::string_view text) noexcept {
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        if (!first.wellFormed) return false;
        text.remove_prefix(first.length);
    }
    return true;
}

bool IsWellFormed(std::u16string_view text) noexcept {
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        if (!first.wellFormed) return false;
        text.remove_prefix(first.length);
    }
    return true;
}

}  // namespace winapi::utf8
