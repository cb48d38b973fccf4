// Checksums beside models that work bit by bit.
#include "platform/checksums.h"

#include "support/folder.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <string>

namespace {

std::string RandomBytes(std::size_t length) {
    std::mt19937 random(20240229);
    std::string bytes(length, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

// `state` after one message bit.
template <typename State>
State Reflected(State polynomial, State state, int bit) {
    const bool odd = (static_cast<int>(state & 1) ^ bit) != 0;
    return static_cast<State>(state >> 1 ^ (odd ? polynomial : State{0}));
}
std::uint64_t HighestFirst(std::uint64_t state, int bit) {
    return state << 1 ^ ((static_cast<int>(state >> 63) ^ bit) != 0 ? 0x42F0E1EBA9EA3693 : 0);
}

TEST(Checksums, GiveThePublishedCheckValuesAndStartAsTheyShould) {
    EXPECT_EQ(Crc16("123456789", 9), 0xBB3D);
    EXPECT_EQ(~Crc32("123456789", 9), 0xCBF43926) << "as published, with the final complement";
    EXPECT_EQ(Crc64("123456789", 9), 0x62EC59E3F1A4F00A);
    EXPECT_EQ(Crc64("abc", 3), 0x048B813AF9F49702);
    EXPECT_EQ(Crc16(nullptr, 0), 0);
    EXPECT_EQ(Crc32(nullptr, 0), 0xFFFFFFFF);
    EXPECT_EQ(Crc64(nullptr, 0), 0u);
    EXPECT_EQ(ByteSum(nullptr, 0), 0);
}

TEST(Checksums, AgreeWithTheModelsAtEveryLengthAndAlignment) {
    const std::string bytes = RandomBytes(400);
    for (std::size_t offset = 0; offset < 16; ++offset) {
        const char* const data = bytes.data() + offset;
        const auto start32 = static_cast<std::uint32_t>(0x9E3779B9 * offset);
        const std::uint64_t start64 = 0x9E3779B97F4A7C15 * offset;
        std::uint16_t model16 = 0;
        std::uint32_t model32 = start32, sum = 0;
        std::uint64_t model64 = start64;
        for (std::uint32_t length = 0; length <= 300; ++length) {
            SCOPED_TRACE(testing::Message() << length << " bytes at " << offset);
            ASSERT_EQ(Crc16(data, length), model16);
            ASSERT_EQ(Crc32Update(start32, data, length), model32);
            ASSERT_EQ(Crc64Update(&start64, data, length), model64);
            ASSERT_EQ(ByteSum(data, length), static_cast<int>(sum % 256));
            const auto byte = static_cast<unsigned char>(data[length]);
            for (int bit = 0; bit < 8; ++bit) {
                model16 = Reflected<std::uint16_t>(0xA001, model16, byte >> bit & 1);
                model32 = Reflected<std::uint32_t>(0xEDB88320, model32, byte >> bit & 1);
                model64 = HighestFirst(model64, byte >> (7 - bit) & 1);
            }
            sum += byte;
        }
    }
}

TEST(Checksums, OfPiecesEqualThatOfTheWhole) {
    const std::string bytes = RandomBytes(100003);
    std::mt19937 random(7);
    for (const std::size_t most : {200u, 5000u, 100003u}) {
        std::uint32_t state32 = 0xFFFFFFFF;
        std::uint64_t state64 = ~std::uint64_t{0};
        for (std::size_t at = 0, piece = 0; at < bytes.size(); at += piece) {
            piece = std::min<std::size_t>(random() % most, bytes.size() - at);
            state32 = Crc32Update(state32, &bytes[at], piece);
            state64 = Crc64Update(&state64, &bytes[at], piece);
        }
        EXPECT_EQ(state32, Crc32(bytes.data(), bytes.size()));
        EXPECT_EQ(~state64, Crc64(bytes.data(), bytes.size()));
    }
    const double joined[] = {1.5, -0.0, 3e300};
    EXPECT_EQ(Crc64OfArrays(std::vector<std::vector<double>>{{1.5, -0.0}, {}, {3e300}}),
              Crc64(joined, sizeof joined));
    EXPECT_EQ(Crc64OfArrays(std::vector<std::vector<std::int64_t>>{}), 0u);
}

TEST(Checksums, ByteSumTakesTheSignOfItsSum) {
    const std::string bytes(8421505, '\xFF');
    EXPECT_EQ(ByteSum(bytes.data(), 8421504), 0x80) << "0x7FFFFF80";
    EXPECT_EQ(ByteSum(bytes.data(), 8421505), -129) << "0x8000007F is -2147483521";
}

TEST(Checksums, OfFilesAreThoseOfTheirBytes) {
    const support::Folder folder;
    const CStringW name((folder / TEXT("file")).c_str());
    const std::size_t handles = support::OpenHandles();
    for (const std::size_t length : {0u, 5u, 65535u, 65536u, 200000u}) {
        const std::string bytes = "\r\n\x1A\n" + RandomBytes(length);  // what text mode would change
        folder.Write("file", bytes.substr(4 * (length == 0)));
        EXPECT_EQ(FileCrc32(name), length == 0 ? 0xFFFFFFFF : Crc32(bytes.data(), bytes.size())) << length;
    }
    EXPECT_EQ(FileCrc32(name + TEXT(" that isn't there")), 0xFFFFFFFF);
    EXPECT_EQ(FileCrc32(CStringW((folder / TEXT("")).c_str())), 0xFFFFFFFF) << "a folder";
    EXPECT_EQ(support::OpenHandles(), handles);
}

}  // namespace
