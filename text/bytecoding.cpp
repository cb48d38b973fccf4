#include "text/detail/bytecoding.h"

#include "text/detail/bytecoding_ssse3.h"

#include <array>

namespace {

constexpr char hexDigits[] = "0123456789ABCDEF";

constexpr bool IsDigitOfHex(unsigned unit) noexcept {
    return unit - '0' < 10 || (unit | 0x20) - 'a' < 6;
}

constexpr std::uint8_t LooseValue(unsigned character) noexcept {
    const unsigned upper = character >= 'a' && character <= 'z' ? character - 0x20 : character;
    return static_cast<std::uint8_t>(upper < 'A' ? upper - 48 : upper - 55);
}

struct HexCharacter {
    std::uint8_t value;
    bool isDigit;
};

constexpr std::array<HexCharacter, 256> hexCharacters = [] {
    std::array<HexCharacter, 256> all{};
    for (unsigned i = 0; i < 256; ++i) all[i] = {LooseValue(i), IsDigitOfHex(i)};
    return all;
}();

constexpr char sixBitAlphabet[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_$";

constexpr std::array<std::uint8_t, 256> sixBitValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(255);
    for (std::uint8_t i = 0; i < 64; ++i) values[static_cast<unsigned char>(sixBitAlphabet[i])] = i;
    return values;
}();

unsigned SixBitValue(char character) noexcept {
    return sixBitValues[static_cast<unsigned char>(character)];
}

}  // namespace

namespace kestrolumen::detail {

bool IsHexDigit(unsigned unit) noexcept {
    return IsDigitOfHex(unit);
}

unsigned HexDigitValue(unsigned unit) noexcept {
    return unit < 'A' ? unit - '0' : (unit | 0x20) - 'a' + 10;
}

void EncodeHex(const std::uint8_t* bytes, std::size_t size, char* digits) noexcept {
    for (std::size_t i = EncodeHexBlocks(bytes, size, digits); i < size; ++i) {
        digits[2 * i] = hexDigits[bytes[i] >> 4];
        digits[2 * i + 1] = hexDigits[bytes[i] & 15];
    }
}

bool DecodeHex(const char* digits, std::size_t pairs, std::uint8_t* bytes) noexcept {
    bool allValid = true;
    for (std::size_t i = DecodeHexBlocks(digits, pairs, bytes); i < pairs; ++i) {
        const HexCharacter high = hexCharacters[static_cast<unsigned char>(digits[2 * i])];
        const HexCharacter low = hexCharacters[static_cast<unsigned char>(digits[2 * i + 1])];
        bytes[i] = static_cast<std::uint8_t>(high.value * 16 + low.value);
        allValid = allValid && high.isDigit && low.isDigit;
    }
    return allValid;
}

void EncodeSixBit(const std::uint8_t* bytes, std::size_t size, char* text) noexcept {
    std::size_t i = EncodeSixBitBlocks(bytes, size, text);
    text += i / 3 * 4;
    for (; i + 3 <= size; i += 3) {
        const unsigned bits = unsigned{bytes[i]} << 16 | unsigned{bytes[i + 1]} << 8 | bytes[i + 2];
        *text++ = sixBitAlphabet[bits >> 18];
        *text++ = sixBitAlphabet[bits >> 12 & 63];
        *text++ = sixBitAlphabet[bits >> 6 & 63];
        *text++ = sixBitAlphabet[bits & 63];
    }
    if (i == size) return;
    const unsigned last = i + 1 < size ? bytes[i + 1] : 0;
    const unsigned bits = unsigned{bytes[i]} << 16 | last << 8;
    *text++ = sixBitAlphabet[bits >> 18];
    *text++ = sixBitAlphabet[bits >> 12 & 63];
    if (i + 1 < size) *text = sixBitAlphabet[bits >> 6 & 63];
}

void DecodeSixBit(const char* text, std::size_t length, std::uint8_t* bytes) noexcept {
    std::size_t i = DecodeSixBitBlocks(text, length, bytes);
    bytes += i / 4 * 3;
    for (; i + 1 < length; i += 4) {
        const unsigned second = SixBitValue(text[i + 1]);
        *bytes++ = static_cast<std::uint8_t>(SixBitValue(text[i]) << 2 | second >> 4);
        if (i + 2 >= length) return;
        const unsigned third = SixBitValue(text[i + 2]);
        *bytes++ = static_cast<std::uint8_t>(second << 4 | third >> 2);
        if (i + 3 >= length) return;
        *bytes++ = static_cast<std::uint8_t>(third << 6 | SixBitValue(text[i + 3]));
    }
}

}  // namespace kestrolumen::detail
