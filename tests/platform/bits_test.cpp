#include "platform/bits.h"
#include "platform/primes.h"
#include "platform/swapbytes.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(Bits, AreThoseOfAVectorOfBools) {
    constexpr std::int32_t size = 1003;
    std::vector<bool> expected(size);
    std::vector<std::uint8_t> bytes((size + 7) / 8);
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        const auto index = static_cast<std::int32_t>(random() % size);
        expected[static_cast<std::size_t>(index)] = random() % 3 != 0;
        expected[static_cast<std::size_t>(index)] ? SetBit(bytes.data(), index)
                                                  : ClearBit(bytes.data(), index);
    }
    for (std::int32_t count = 0; count < size; ++count) {
        const auto set = std::count(expected.begin(), expected.begin() + count, true);
        const std::vector<std::uint8_t> exact(bytes.begin(), bytes.begin() + (count + 7) / 8);
        ASSERT_EQ(BitCountOfArray(exact.data(), count), set) << count;
        ASSERT_EQ(TestBit(bytes.data(), count), expected[static_cast<std::size_t>(count)]) << count;
    }
}

TEST(Bits, StandHighestFirst) {
    std::uint8_t bytes[] = {0xFF, 0x00};
    ClearBit(bytes, 0);
    SetBit(bytes, 9);
    EXPECT_EQ(bytes[0], 0x7F);
    EXPECT_EQ(bytes[1], 0x40);
    EXPECT_EQ(BitCountOfArray(bytes, 4), 3);
    EXPECT_EQ(BitCountOfArray(nullptr, 0) + BitCountOfArray(nullptr, -8), 0);
    EXPECT_EQ(BitCount32(0xF0000001) + BitCount32(0), 5);
    EXPECT_EQ(BitCount64(0xF000000100000003) + BitCount64(~std::uint64_t{0}), 7 + 64);
}

TEST(SwapBytes, ExchangesTheBytesOfACountAlone) {
    for (const int count : {-1, 0, 1, 5, 40}) {
        std::string first(64, 'a'), second(64, 'b');
        SwapBytes(reinterpret_cast<std::uint8_t*>(first.data()),
                  reinterpret_cast<std::uint8_t*>(second.data()), count);
        const auto swapped = static_cast<std::size_t>(std::max(count, 0));
        EXPECT_EQ(first, std::string(swapped, 'b') + std::string(64 - swapped, 'a'));
        EXPECT_EQ(second, std::string(swapped, 'a') + std::string(64 - swapped, 'b'));
    }
}

// Whether each number from `first` on is composite. The squares of all numbers below 46,341 are below 2^31.
std::vector<bool> Sieve(std::int64_t first, std::size_t size) {
    std::vector<bool> composite(size);
    const std::int64_t end = first + static_cast<std::int64_t>(size);
    for (std::int64_t divisor = 2; divisor * divisor < end; ++divisor) {
        const std::int64_t start = std::max(divisor * divisor, (first + divisor - 1) / divisor * divisor);
        for (std::int64_t n = start; n < end; n += divisor)
            composite[static_cast<std::size_t>(n - first)] = true;
    }
    return composite;
}

TEST(Primes, AreThoseOfASieve) {
    constexpr std::size_t size = 100'000;
    for (const std::int64_t first : {std::int64_t{2}, std::int64_t{0x7FFFFFFF} - std::int64_t{size}}) {
        const std::vector<bool> composite = Sieve(first, size);
        std::int32_t prime = 7;
        for (std::size_t i = 0; i < size; ++i) {
            const auto limit = static_cast<std::int32_t>(first + static_cast<std::int64_t>(i));
            if (limit <= 7) continue;
            if (first == 2 || prime != 7) {
                ASSERT_EQ(LargestPrimeBelow(limit), prime) << limit;
            }
            if (!composite[i]) prime = limit;
        }
    }
    for (const std::int32_t limit : {-0x7FFFFFFF - 1, 0, 8}) EXPECT_EQ(LargestPrimeBelow(limit), 7);
    EXPECT_EQ(LargestPrimeBelow(0x7FFFFFFF), 0x7FFFFFFF - 18);
}

}  // namespace
