// One character of UTF-8 or UTF-16: what is well formed, and what an ill-formed sequence counts as.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace winapi::utf8 {

constexpr char32_t replacement = 0xFFFD;

// One character, or the replacement for what is ill-formed.
struct Decoded {
    char32_t character;
    std::size_t length;  // source units
    bool wellFormed;
};

constexpr Decoded IllFormed(std::size_t length) noexcept {
    return {replacement, length, false};
}

constexpr bool IsContinuation(std::uint8_t byte) noexcept {
    return (byte & 0xC0) == 0x80;
}

// The lead byte decides the range of the second byte (The Unicode Standard, table 3-7).
constexpr bool IsSecondByte(std::uint8_t lead, std::uint8_t byte) noexcept {
    const unsigned first = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned last = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return lead >= 0xC2 && lead <= 0xF4 && byte >= first && byte <= last;
}

inline Decoded DecodeFirst(std::string_view text) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t lead = byte(0);
    if (lead < 0x80) return {lead, 1, true};
    if (text.size() < 2 || !IsSecondByte(lead, byte(1))) return IllFormed(1);
    const char32_t second = byte(1) & 0x3Fu;
    if (lead < 0xE0) return {(lead & 0x1Fu) << 6 | second, 2, true};
    if (text.size() < 3 || !IsContinuation(byte(2))) return IllFormed(2);
    const char32_t third = byte(2) & 0x3Fu;
    if (lead < 0xF0) return {(lead & 0xFu) << 12 | second << 6 | third, 3, true};
    if (text.size() < 4 || !IsContinuation(byte(3))) return IllFormed(3);
    return {(lead & 0x7u) << 18 | second << 12 | third << 6 | (byte(3) & 0x3Fu), 4, true};
}

constexpr bool IsHighSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}
constexpr bool IsSurrogate(char16_t unit) noexcept {
    return (unit & 0xF800) == 0xD800;
}

inline Decoded DecodeFirst(std::u16string_view text) noexcept {
    const char16_t unit = text[0];
    if (!IsSurrogate(unit)) return {unit, 1, true};
    if (!IsHighSurrogate(unit) || text.size() < 2 || !IsLowSurrogate(text[1])) return IllFormed(1);
    return {0x10000 + ((unit & 0x3FFu) << 10 | (text[1] & 0x3FFu)), 2, true};
}

// Each writes one character and gives the place behind it.
inline char16_t* Encode(char32_t character, char16_t* to) noexcept {
    if (character < 0x10000) {
        *to++ = static_cast<char16_t>(character);
    } else {
        *to++ = static_cast<char16_t>(0xD7C0 + (character >> 10));
        *to++ = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
    return to;
}

inline char* Encode(char32_t character, char* to) noexcept {
    const auto put = [&](char32_t byte) { *to++ = static_cast<char>(byte); };
    const auto putSixBits = [&](unsigned shift) { put(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | character >> 6);
        putSixBits(0);
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        putSixBits(6);
        putSixBits(0);
    } else {
        put(0xF0 | character >> 18);
        putSixBits(12);
        putSixBits(6);
        putSixBits(0);
    }
    return to;
}

}  // namespace winapi::utf8
