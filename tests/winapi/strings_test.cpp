#include <windows.h>

#include <string>

#include <gtest/gtest.h>

namespace {

std::basic_string<WCHAR> Upper(std::basic_string<WCHAR> text) {
    EXPECT_EQ(CharUpperBuffW(text.data(), static_cast<DWORD>(text.size())), text.size());
    return text;
}
std::basic_string<WCHAR> Lower(std::basic_string<WCHAR> text) {
    EXPECT_EQ(CharLowerBuffW(text.data(), static_cast<DWORD>(text.size())), text.size());
    return text;
}

TEST(CharCase, MapsUnitByUnit) {
    EXPECT_EQ(Upper({'a', 0, 'z', '1', 0xE9}), (std::basic_string<WCHAR>{'A', 0, 'Z', '1', 0xC9}));
    EXPECT_EQ(Lower({'A', 0, 'Z', '1', 0xC9}), (std::basic_string<WCHAR>{'a', 0, 'z', '1', 0xE9}));
    EXPECT_EQ(CharUpperBuffW(nullptr, 0), 0U);
}

// Units whose case in Unicode is another one's, or a title case, stay.
TEST(CharCase, MapsOnlyWhatLeadsBack) {
    const std::basic_string<WCHAR> stay = {0xB5,  0xDF,  0x130, 0x131,  0x17F,  0x1C5,
                                           0x345, 0x3C2, 0x3D0, 0x1E9E, 0x2126, 0x212A};
    EXPECT_EQ(Upper(stay), stay);
    EXPECT_EQ(Lower(stay), stay);
}

TEST(CharCase, EveryUnitOfThePlane) {
    unsigned pairs = 0;
    for (unsigned code = 1; code < 0x10000; ++code) {
        const auto unit = static_cast<WCHAR>(code);
        const WCHAR upper = Upper({unit})[0];
        const WCHAR lower = Lower({unit})[0];
        ASSERT_TRUE(upper == unit || Lower({upper})[0] == unit) << std::hex << code;
        ASSERT_TRUE(lower == unit || Upper({lower})[0] == unit) << std::hex << code;
        if (upper != unit) ++pairs;
    }
    EXPECT_GT(pairs, 1000U);
}

}  // namespace
