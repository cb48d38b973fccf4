// Hexadecimal and six-bit text: malformed digits, and the bounds of memory. That any bytes go there and back,
// and what malformed six-bit text gives, is held against plain references by fuzz/codings_fuzz.cpp.
#include "text/codings.h"

#include "text/detail/bytecoding.h"

#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes RandomBytes(std::size_t size, std::mt19937& random) {
    Bytes bytes(size);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

// Rows that Python's base64 and hex have made, see data/codings.py.
TEST(Codings, GiveWhatPythonGives) {
    std::ifstream table(KESTROLUMEN_TEXT_DATA "/codings.tsv");
    std::string numbers, hex, text6;
    int rows = 0;
    for (; std::getline(table, numbers, '\t') && table >> hex >> text6 && table.get() != EOF; ++rows) {
        Bytes bytes;
        std::istringstream list(numbers);
        for (std::string number; std::getline(list, number, ',');) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(number)));
        }
        EXPECT_EQ(HexFromBytes(bytes), hex.c_str());
        EXPECT_EQ(BytesFromHex(hex.c_str()), bytes);
        EXPECT_EQ(Text6FromBytes(bytes), text6.c_str());
        if (bytes.size() % 3 != 0) bytes.push_back(0);  // the size is rounded up
        EXPECT_EQ(BytesFromText6(text6.c_str()), bytes);
    }
    EXPECT_EQ(rows, 56);
}

TEST(Hex, OfText) {
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

// Memory of exactly the size: a sanitizer sees what goes beyond.
TEST(Coding, StaysInsideItsMemory) {
    std::mt19937 random(5304);
    for (std::size_t size = 0; size < 100; ++size) {
        const Bytes bytes = RandomBytes(size, random);
        const std::unique_ptr<char[]> hex(new char[2 * size]);
        const std::unique_ptr<char[]> text(new char[kestrolumen::detail::SixBitLength(size)]);
        const std::unique_ptr<std::uint8_t[]> back(new std::uint8_t[size]);
        kestrolumen::detail::EncodeHex(bytes.data(), size, hex.get());
        EXPECT_TRUE(kestrolumen::detail::DecodeHex(hex.get(), size, back.get()));
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), back.get()));
        kestrolumen::detail::EncodeSixBit(bytes.data(), size, text.get());
        kestrolumen::detail::DecodeSixBit(
            text.get(), static_cast<std::size_t>(kestrolumen::detail::SixBitLength(size)), back.get());
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), back.get()));
    }
}

}  // namespace
