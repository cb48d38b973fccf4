// Hexadecimal and six-bit text of any bytes, and any bytes read as such text, beside plain references.
#include "fuzz.h"

#include "text/codings.h"

#include <algorithm>
#include <cstring>
#include <string>

using fuzz::Check;

namespace {

constexpr char alphabet[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_$";

// Bit by bit.
std::string SixBitReference(fuzz::Bytes bytes) {
    std::string text;
    for (std::size_t bit = 0; bit < bytes.size() * 8; bit += 6) {
        unsigned value = 0;
        for (std::size_t i = bit; i < bit + 6; ++i) {
            value = value * 2 + (i < bytes.size() * 8 ? bytes[i / 8] >> (7 - i % 8) & 1u : 0u);
        }
        text += alphabet[value];
    }
    return text;
}

// Character by character, in four phases.
std::vector<std::uint8_t> SixBitBytesReference(fuzz::Bytes text) {
    std::vector<std::uint8_t> bytes((6 * text.size() + 7) / 8);
    auto target = bytes.begin();
    unsigned partial = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* const found = text[i] == 0 ? nullptr : std::strchr(alphabet, text[i]);
        const unsigned value = found == nullptr ? 255u : static_cast<unsigned>(found - alphabet);
        const unsigned shift = 2 * static_cast<unsigned>(i % 4);
        if (shift > 0) *target++ = static_cast<std::uint8_t>(partial | value >> (6 - shift));
        partial = value << (2 + shift) & 0xFF;
    }
    return bytes;
}

unsigned LooseValue(unsigned character) {
    const unsigned upper = character >= 'a' && character <= 'z' ? character - 32 : character;
    return (upper < 'A' ? upper - 48 : upper - 55) & 0xFF;
}

std::vector<std::uint8_t> LooseReference(fuzz::Bytes text) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(LooseValue(text[i]) * 16 + LooseValue(text[i + 1])));
    }
    return bytes;
}

std::string HexReference(fuzz::Bytes bytes) {
    std::string hex;
    for (const unsigned value : bytes)
        hex += {"0123456789ABCDEF"[value / 16], "0123456789ABCDEF"[value % 16]};
    return hex;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Bytes input(data, size);
    const auto isInput = [&](const std::vector<std::uint8_t>& bytes) {
        return bytes.size() >= size && std::equal(input.begin(), input.end(), bytes.begin());
    };
    Check(HexFromBytes(input) == HexReference(input).c_str(), "two digits a byte");
    Check(Text6FromBytes(input) == SixBitReference(input).c_str(), "a character for six bits");
    Check(isInput(BytesFromHex(HexFromBytes(input))), "hexadecimal text of bytes gives the bytes");
    Check(isInput(BytesFromText6(Text6FromBytes(input))), "six-bit text of bytes gives the bytes");

    const CStringA text = fuzz::Narrow(input);
    const std::vector<std::uint8_t> loose = BytesFromHex(text);
    Check(loose == LooseReference(input), "a byte for two characters");
    const CStringA strict = TextAFromHex(text);
    if (!strict.IsEmpty()) {
        Check(HexFromBytes(loose).Left(2 * strict.GetLength()) ==
                  CStringA(text.GetString()).MakeUpper().Left(2 * strict.GetLength()),
              "what is read strictly is hexadecimal text");
        Check(std::equal(
                  loose.begin(), loose.begin() + strict.GetLength(), strict.GetString(),
                  [](std::uint8_t unit, char character) { return static_cast<char>(unit) == character; }),
              "strict and loose reading agree");
    }
    const CStringW wide = fuzz::Wide(input);
    Check(TextWFromHex(HexFromTextW(wide)) == CStringW(wide.GetString()),
          "hexadecimal wide text gives the text");
    static_cast<void>(TextWFromHex(wide));

    Check(BytesFromText6(text) == SixBitBytesReference(input), "six bits a character, rounded up");
    return 0;
}
