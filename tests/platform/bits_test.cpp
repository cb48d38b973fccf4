#include "platform/bits.h"
#include "platform/primes.h"
#include "platform/swapbytes.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(Bits, AreThoseOfAVectorOfBools) {
    std::vector<bool> expected(1003);
    std::vector<std::uint8_t> bytes(126);
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        const auto index = random() % expected.size();
        expected[index] = random() % 3 != 0;
        (expected[index] ? SetBit : ClearBit)(bytes.data(), static_cast<std::int32_t>(index));
    }
    expected[0] = true;  // of a single bit, too
    SetBit(bytes.data(), 0);
    for (std::int32_t count = -1, set = 0; count < 1003; ++count) {
        const std::vector<std::uint8_t> exact(bytes.begin(), bytes.begin() + (count + 7) / 8);
        ASSERT_EQ(BitCountOfArray(exact.data(), count), set) << count;
        if (count < 0) continue;
        ASSERT_EQ(TestBit(bytes.data(), count), expected[static_cast<std::size_t>(count)]) << count;
        set += expected[static_cast<std::size_t>(count)] ? 1 : 0;
    }
}

TEST(Bits, StandHighestFirst) {
    std::uint8_t bytes[] = {0xFF, 0x00};
    ClearBit(bytes, 0);
    SetBit(bytes, 9);
    EXPECT_EQ(bytes[0] << 8 | bytes[1], 0x7F40);
    EXPECT_EQ(BitCount32(0xF0000001) + BitCount32(0), 5);
    EXPECT_EQ(BitCount64(0xF000000100000003) + BitCount64(~std::uint64_t{0}), 7 + 64);
}

TEST(SwapBytes, ExchangesTheBytesOfACountAlone) {
    std::vector<std::uint8_t> first(40, 1), second(40, 2);
    for (const int count : {-1, 0, 40, 38, 1}) SwapBytes(first.data(), second.data(), count);
    EXPECT_EQ(std::count(first.begin(), first.end(), 2), 3);
    EXPECT_EQ(first[0] + first[38] + first[39], 6);
    EXPECT_EQ(std::count(second.begin(), second.end(), 1), 3);
}

TEST(Primes, AreThoseThatNothingDivides) {
    const auto isPrime = [](std::int32_t n) {
        std::int32_t divisor = 2;
        while (divisor < 46341 && divisor * divisor <= n && n % divisor != 0) ++divisor;
        return divisor == 46341 || divisor * divisor > n;
    };
    for (const std::int32_t first : {8, 0x7FFFFFFF - 2999}) {
        std::int32_t prime = LargestPrimeBelow(first);
        ASSERT_TRUE(isPrime(prime)) << prime;
        for (std::int32_t n = first; n < first + 2999; ++n) {
            if (isPrime(n)) prime = n;
            ASSERT_EQ(LargestPrimeBelow(n + 1), prime) << n;
        }
    }
    for (const std::int32_t limit : {-0x7FFFFFFF - 1, 0, 8}) EXPECT_EQ(LargestPrimeBelow(limit), 7);
}

}  // namespace
