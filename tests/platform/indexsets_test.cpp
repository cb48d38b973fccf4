#include "platform/indexsets.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Values = std::vector<std::int32_t>;

// Both ways. The bit form has its values in order, and each of them once. Sets of any size and density go
// both ways in the fuzz target of the same name.
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

// In order and dense they are gathered in registers, else set one by one: the bytes are the same.
TEST(IndexSets, AreTheSameInAnyOrder) {
    Values ordered;
    for (std::int32_t value = 0; value < 3000; value += 1 + value * value % 5) ordered.push_back(value);
    Values turned(ordered.rbegin(), ordered.rend());
    EXPECT_EQ(PackIndexSet(ordered), PackIndexSet(turned));
    EXPECT_EQ(UnpackIndexSet(PackIndexSet(ordered)), ordered);
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
