// Hexadecimal and six-bit text: known texts, every length over plain references, malformed input.
#include "text/codings.h"

#include "text/bytecoding.h"

#include <cstring>
#include <memory>
#include <random>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes RandomBytes(std::size_t size, std::mt19937& random) {
    Bytes bytes(size);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

CStringA Text(const std::string& text) {
    return CStringA(text.data(), static_cast<int>(text.size()));
}

TEST(Hex, OfText) {
    EXPECT_EQ(HexFromTextA("\xff"
                           "A"),
              "FF41");
    EXPECT_EQ(HexFromTextW(TEXT("\x00e9\xfffe")), TEXT("00E9FFFE"));
    EXPECT_TRUE(HexFromTextA("").IsEmpty() && HexFromTextW(TEXT("")).IsEmpty());
    EXPECT_EQ(TextAFromHex("410042"), CStringA("A\0B", 3));
    EXPECT_EQ(TextWFromHex(TEXT("004100000062fFfF")), CStringW(TEXT("A\0b\xffff"), 4));
}

TEST(Hex, StrictReadingRefuses) {
    for (const char* text : {"", "4", "4G", "G4", "4 ", "/0", ":0", "@A", "`a", "4\xb1", "0x41"}) {
        EXPECT_TRUE(TextAFromHex(text).IsEmpty()) << text;
    }
    for (const WCHAR* text : {TEXT("041"), TEXT("00411"), TEXT("004g"), TEXT("\xff10\xff10\xff14\xff11")}) {
        EXPECT_TRUE(TextWFromHex(text).IsEmpty());
    }
    // Wherever the wrong character stands, in a block or behind.
    for (std::size_t wrong = 0; wrong < 70; ++wrong) {
        std::string text(70, 'a');
        text[wrong] = 'x';
        EXPECT_TRUE(TextAFromHex(text.c_str()).IsEmpty()) << wrong;
    }
}

unsigned LooseValue(unsigned char character) {
    const int upper = character >= 'a' && character <= 'z' ? character - 32 : character;
    return static_cast<unsigned>(upper < 'A' ? upper - 48 : upper - 55) & 0xFF;
}

TEST(Hex, LooseReadingTakesEveryCharacter) {
    EXPECT_EQ(BytesFromHex("4a4"), Bytes{0x4a});
    EXPECT_EQ(BytesFromHex("4"), Bytes{});
    std::mt19937 random(5301);
    for (std::size_t size = 0; size < 100; ++size) {
        std::string text;
        for (const auto byte : RandomBytes(size, random)) text += static_cast<char>(byte);
        Bytes expected;
        for (std::size_t i = 0; i + 1 < size; i += 2) {
            const unsigned high = LooseValue(static_cast<unsigned char>(text[i]));
            const unsigned low = LooseValue(static_cast<unsigned char>(text[i + 1]));
            expected.push_back(static_cast<std::uint8_t>(high * 16 + low));
        }
        EXPECT_EQ(BytesFromHex(Text(text)), expected);
    }
}

constexpr char alphabet[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_$";

// Bit by bit.
std::string SixBitReference(const Bytes& bytes) {
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
Bytes SixBitBytesReference(const std::string& text) {
    Bytes bytes((6 * text.size() + 7) / 8);
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

TEST(Coding, EveryLengthGoesThereAndBack) {
    std::mt19937 random(5302);
    for (std::size_t size = 0; size < 200; ++size) {
        const Bytes bytes = RandomBytes(size, random);
        const CStringA hex = HexFromBytes(bytes);
        std::string expected;
        for (const unsigned byte : bytes)
            expected += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
        EXPECT_EQ(hex, expected.c_str());
        EXPECT_EQ(BytesFromHex(hex), bytes);
        EXPECT_EQ(HexFromBytes(BytesFromHex(CStringA(hex).MakeLower())), hex);

        const CStringA text = Text6FromBytes(bytes);
        EXPECT_EQ(text, SixBitReference(bytes).c_str());
        Bytes padded = bytes;
        if (size % 3 != 0) padded.push_back(0);
        EXPECT_EQ(BytesFromText6(text), padded);
    }
}

TEST(Coding, KnownSixBitTexts) {
    EXPECT_EQ(Text6FromBytes(Bytes{0xFF}), "$M");
    EXPECT_EQ(BytesFromText6("$M"), (Bytes{0xFF, 0x00}));
    EXPECT_EQ(BytesFromText6("0"), Bytes{0});
    EXPECT_EQ(BytesFromText6("!!!!"), (Bytes{0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(BytesFromText6("00!0"), (Bytes{0, 0x3F, 0xC0}));
    EXPECT_EQ(BytesFromText6("0!00"), (Bytes{0x0F, 0xF0, 0}));
}

TEST(Coding, MalformedSixBitTextHasTheSameBytesEverywhere) {
    std::mt19937 random(5303);
    for (std::size_t size = 0; size < 120; ++size) {
        for (int round = 0; round < 8; ++round) {
            std::string text;
            for (std::size_t i = 0; i < size; ++i) text += alphabet[random() % 64];
            for (int wrong = 0; wrong < round && size > 0; ++wrong) {
                text[random() % size] = static_cast<char>(random());
            }
            ASSERT_EQ(BytesFromText6(Text(text)), SixBitBytesReference(text)) << text;
        }
    }
}

// Memory of exactly the size: a sanitizer sees what goes beyond.
TEST(Coding, StaysInsideItsMemory) {
    std::mt19937 random(5304);
    for (std::size_t size = 0; size < 100; ++size) {
        const Bytes bytes = RandomBytes(size, random);
        const std::unique_ptr<char[]> hex(new char[2 * size]);
        const std::unique_ptr<char[]> text(new char[detail::SixBitLength(size)]);
        const std::unique_ptr<std::uint8_t[]> back(new std::uint8_t[size]);
        detail::EncodeHex(bytes.data(), size, hex.get());
        EXPECT_TRUE(detail::DecodeHex(hex.get(), size, back.get()));
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), back.get()));
        detail::EncodeSixBit(bytes.data(), size, text.get());
        detail::DecodeSixBit(text.get(), static_cast<std::size_t>(detail::SixBitLength(size)), back.get());
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), back.get()));
    }
}

}  // namespace
