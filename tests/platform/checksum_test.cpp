// Checksums beside models that work bit by bit.
#include "platform/checksums.h"

#include "support/home.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <string>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes RandomBytes(std::size_t length) {
    std::mt19937 random(20240229);
    Bytes bytes(length);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
    return bytes;
}

// One bit at a time, each message bit against the state's outermost one.
template <typename State>
State ReflectedBits(State polynomial, State state, const unsigned char* data, std::size_t length) {
    for (std::size_t bit = 0; bit < 8 * length; ++bit) {
        const bool odd = ((state ^ static_cast<State>(data[bit / 8] >> bit % 8)) & 1) != 0;
        state = static_cast<State>((state >> 1) ^ (odd ? polynomial : State{0}));
    }
    return state;
}

std::uint64_t Ecma182Bits(std::uint64_t state, const unsigned char* data, std::size_t length) {
    for (std::size_t bit = 0; bit < 8 * length; ++bit) {
        const unsigned message = static_cast<unsigned>(data[bit / 8] >> (7 - bit % 8)) & 1u;
        const bool odd = (static_cast<unsigned>(state >> 63) ^ message) != 0;
        state = (state << 1) ^ (odd ? 0x42F0E1EBA9EA3693u : 0u);
    }
    return state;
}

TEST(Checksums, GiveThePublishedCheckValues) {
    const std::string digits = "123456789";
    EXPECT_EQ(Crc16(digits.data(), 9), 0xBB3D);
    EXPECT_EQ(Crc32(digits.data(), 9), 0x340BC6D9u);
    EXPECT_EQ(~Crc32(digits.data(), 9), 0xCBF43926u) << "as published, with the final complement";
    EXPECT_EQ(Crc64(digits.data(), 9), 0x62EC59E3F1A4F00Au);
    EXPECT_EQ(Crc64("abc", 3), 0x048B813AF9F49702u);
    // One byte on an empty state is the entry of the table.
    const std::uint64_t zero = 0;
    EXPECT_EQ(Crc16("\x01", 1), 0xC0C1);
    EXPECT_EQ(Crc32Update(0, "\x01", 1), 0x77073096u);
    EXPECT_EQ(Crc64Update(&zero, "\x01", 1), 0x42F0E1EBA9EA3693u);
}

TEST(Checksums, OfNothingAreWhereTheyStart) {
    const std::uint64_t state64 = 0x0123456789ABCDEF;
    for (const char* const data : {static_cast<const char*>(nullptr), "x"}) {
        EXPECT_EQ(Crc16(data, 0), 0);
        EXPECT_EQ(Crc32(data, 0), 0xFFFFFFFFu);
        EXPECT_EQ(Crc32Update(0x12345678, data, 0), 0x12345678u);
        EXPECT_EQ(Crc64(data, 0), 0u);
        EXPECT_EQ(Crc64Update(&state64, data, 0), state64);
        EXPECT_EQ(ByteSum(data, 0), 0);
    }
    EXPECT_EQ(Crc64OfArrays(std::vector<std::vector<double>>{}), 0u);
    EXPECT_EQ(Crc64OfArrays(std::vector<std::vector<double>>(3)), 0u);
}

TEST(Checksums, AgreeWithTheModelsAtEveryLengthAndAlignment) {
    const Bytes bytes = RandomBytes(400);
    for (std::size_t length = 0; length <= 300; ++length) {
        for (std::size_t offset = 0; offset < 16; ++offset) {
            SCOPED_TRACE(testing::Message() << length << " bytes at " << offset);
            const unsigned char* const data = bytes.data() + offset;
            const auto state32 = static_cast<std::uint32_t>(0xFFFFFFFF - length * offset);
            const std::uint64_t state64 = ~std::uint64_t{length * offset} << 7;
            ASSERT_EQ(Crc16(data, static_cast<std::uint32_t>(length)),
                      ReflectedBits<std::uint16_t>(0xA001, 0, data, length));
            ASSERT_EQ(Crc32Update(state32, data, length),
                      ReflectedBits<std::uint32_t>(0xEDB88320, state32, data, length));
            ASSERT_EQ(Crc64Update(&state64, data, length), Ecma182Bits(state64, data, length));
            ASSERT_EQ(ByteSum(data, static_cast<std::uint32_t>(length)),
                      static_cast<int>(std::accumulate(data, data + length, 0u) % 256));
        }
    }
}

TEST(Checksums, OfPiecesEqualThatOfTheWhole) {
    const Bytes bytes = RandomBytes(100003);
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        std::uint32_t state32 = 0xFFFFFFFF;
        std::uint64_t state64 = ~std::uint64_t{0};
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t most = round % 2 == 0 ? 200 : bytes.size();
            const std::size_t piece = std::min<std::size_t>(random() % most, bytes.size() - at);
            state32 = Crc32Update(state32, &bytes[at], piece);
            const std::uint64_t before = state64;
            const std::uint64_t after = Crc64Update(&state64, &bytes[at], piece);
            ASSERT_EQ(state64, before) << "the state is read and not written";
            state64 = after;
            at += piece;
        }
        ASSERT_EQ(state32, Crc32(bytes.data(), bytes.size()));
        ASSERT_EQ(~state64, Crc64(bytes.data(), bytes.size()));
    }
    EXPECT_EQ(~Crc64(bytes.data(), bytes.size()), Ecma182Bits(~std::uint64_t{0}, bytes.data(), bytes.size()));

    const std::vector<std::vector<double>> arrays = {{1.5, -0.0}, {}, {3e300}};
    const double joined[] = {1.5, -0.0, 3e300};
    EXPECT_EQ(Crc64OfArrays(arrays), Crc64(joined, sizeof joined));
}

TEST(Checksums, ByteSumTakesTheSignOfItsSum) {
    EXPECT_EQ(ByteSum(Bytes(256, 1).data(), 256), 0);
    EXPECT_EQ(ByteSum(Bytes(3, 255).data(), 3), 765 % 256);
    // 8,421,504 bytes of 255 make 0x7FFFFF80, one more passes the greatest signed number.
    const Bytes bytes(8421505, 255);
    EXPECT_EQ(ByteSum(bytes.data(), 8421504), 0x80);
    EXPECT_EQ(ByteSum(bytes.data(), 8421505), -129) << "0x8000007F is -2147483521";
}

TEST(Checksums, OfFilesAreThoseOfTheirBytes) {
    const auto folder = std::filesystem::temp_directory_path() / "kestrolumen checksums";
    std::filesystem::create_directories(folder);
    const std::size_t handles = support::OpenHandles();
    const auto sumOf = [](const std::filesystem::path& path) {
        return FileCrc32(CStringWFromAnsi(path.string().c_str()));
    };
    // With what text mode would change, and around the size of a block.
    for (const std::size_t length : {0u, 1u, 300u, 65535u, 65536u, 65537u, 200000u}) {
        Bytes bytes = RandomBytes(length);
        if (length > 10) std::copy_n("a\r\n\x1A\n", 5, bytes.begin());
        std::ofstream(folder / "file", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(length));
        EXPECT_EQ(sumOf(folder / "file"), Crc32(bytes.data(), length)) << length;
    }
    EXPECT_EQ(sumOf(folder / "missing"), 0xFFFFFFFFu);
    EXPECT_EQ(sumOf(folder), 0xFFFFFFFFu) << "a folder";
    EXPECT_EQ(FileCrc32(CStringW()), 0xFFFFFFFFu);
    EXPECT_EQ(support::OpenHandles(), handles);
    std::filesystem::remove_all(folder);
}

}  // namespace
