#include "platform/indexsets.h"

#include <algorithm>
#include <random>
#include <set>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Values = std::vector<std::int32_t>;

// Both ways. The bit form has its values in order, and each of them once.
TEST(IndexSets, HaveThePublishedBytes) {
    const struct {
        Values values;
        Bytes packed;
    } rows[] = {
        {{}, {0, 0, 0, 0}},
        {{0}, {0, 0, 0, 0x80, 0x80}},
        {{3, 1, 2, 1}, {3, 0, 0, 0x80, 0x70}},
        {{23}, {23, 0, 0, 0x80, 0, 0, 1}},
        {{24}, {1, 0, 0, 0, 24, 0, 0, 0}},  // of one length the list is taken
        {{0x7FFFFFFF}, {1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F}},
        {{1000, 3000, 2000, 1000},
         {4, 0, 0, 0, 0xE8, 3, 0, 0, 0xB8, 0xB, 0, 0, 0xD0, 7, 0, 0, 0xE8, 3, 0, 0}},
        {{-1}, {1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}},  // what has no bit makes a list
        {{5, -2}, {2, 0, 0, 0, 5, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}},
        {{-2, 5}, {2, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 5, 0, 0, 0}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(PackIndexSet(row.values), row.packed);
        Values values = row.values;
        if (row.packed[3] != 0) {
            std::sort(values.begin(), values.end());
            values.erase(std::unique(values.begin(), values.end()), values.end());
        }
        EXPECT_EQ(UnpackIndexSet(row.packed), values);
        Bytes longer = row.packed;
        longer.resize(longer.size() + 9, 0xFF);
        EXPECT_EQ(UnpackIndexSet(longer), values) << "what stands behind the set";
    }
    EXPECT_EQ(UnpackIndexSet({9, 0, 0, 0x80, 0, 0x3F}), (Values{})) << "bits above the largest value";
    EXPECT_EQ(UnpackIndexSet({9, 0, 0, 0x80, 1, 0}), (Values{7})) << "the largest need not be in the set";
}

TEST(IndexSets, ComeBackWhateverTheirDensityAndOrder) {
    std::mt19937 random(2);
    for (const unsigned spacing : {1U, 2U, 3U, 9U, 11U, 31U, 33U, 5000U}) {
        for (const std::size_t count : {1U, 7U, 8U, 9U, 64U, 600U, 3000U}) {
            for (const bool shuffled : {false, true}) {
                Values values;
                for (auto next = random() % 100; values.size() < count;
                     next += 1 + random() % (2 * spacing - 1)) {
                    values.push_back(static_cast<std::int32_t>(next));
                    if (random() % 8 == 0) values.push_back(values.back());
                    if (random() % 400 == 0) next += 200;
                }
                const std::set<std::int32_t> sorted(values.begin(), values.end());
                if (shuffled) std::shuffle(values.begin(), values.end(), random);
                const Bytes packed = PackIndexSet(values);
                const std::size_t bitBytes = (static_cast<std::size_t>(*sorted.rbegin()) + 8) / 8;
                ASSERT_EQ(packed.size(), 4 + std::min(bitBytes, 4 * values.size()));
                const bool list = bitBytes >= 4 * values.size();
                ASSERT_EQ(UnpackIndexSet(packed), list ? values : Values(sorted.begin(), sorted.end()));
            }
        }
    }
}

// Each prefix of a set lacks something, as do headers that ask for more than there is or can be.
TEST(IndexSets, ThatAreCutOffRaise) {
    for (const Values& values : {Values{100, 2000}, Values{20, 3, 1}}) {
        const Bytes packed = PackIndexSet(values);
        for (auto end = packed.begin(); end != packed.end(); ++end) {
            EXPECT_THROW(static_cast<void>(UnpackIndexSet(Bytes(packed.begin(), end))), std::length_error);
        }
    }
    for (const int top : {0x40, 0x7F, 0xBF, 0xC0, 0xFF}) {
        const Bytes packed{0xFF, 0xFF, 0xFF, static_cast<std::uint8_t>(top), 0xFF, 0xFF, 0xFF, 0xFF};
        EXPECT_THROW(static_cast<void>(UnpackIndexSet(packed)), std::length_error) << top;
    }
}

}  // namespace
