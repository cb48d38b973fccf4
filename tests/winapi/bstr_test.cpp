// BSTRs: the byte count in front, the terminator behind, and what null means to each call.
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

namespace {

std::uint32_t CountInFront(BSTR text) {
    std::uint32_t count = 0;
    std::memcpy(&count, reinterpret_cast<const char*>(text) - sizeof count, sizeof count);
    return count;
}

std::basic_string<WCHAR> Units(BSTR text) {
    return {text, SysStringLen(text)};
}

TEST(Bstr, HoldsItsByteCountInFrontAndAZeroBehind) {
    for (const UINT units : {0U, 1U, 2U, 7U, 8U, 1000U}) {
        const std::basic_string<WCHAR> source(units, TEXT('\xE9'));
        const BSTR text = SysAllocString(source.c_str());
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(CountInFront(text), units * 2);
        EXPECT_EQ(SysStringByteLen(text), units * 2);
        EXPECT_EQ(Units(text), source);
        EXPECT_EQ(text[units], 0);
        SysFreeString(text);
    }
}

TEST(Bstr, OfALengthKeepsZerosInside) {
    const BSTR text = SysAllocStringLen(TEXT("ab\0cd\0"), 6);
    EXPECT_EQ(Units(text), std::basic_string<WCHAR>(TEXT("ab\0cd\0"), 6));
    EXPECT_EQ(text[6], 0);
    SysFreeString(text);
}

TEST(Bstr, OfBytesMayBeOddAndEndsForReadersOfUnitsToo) {
    const std::string bytes = "abcdefgh";
    for (UINT count = 0; count <= bytes.size(); ++count) {
        const BSTR text = SysAllocStringByteLen(bytes.c_str(), count);
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(SysStringByteLen(text), count);
        EXPECT_EQ(SysStringLen(text), count / 2);
        EXPECT_EQ(std::memcmp(text, bytes.data(), count), 0);
        EXPECT_EQ(reinterpret_cast<const char*>(text)[count], 0);
        EXPECT_EQ(text[(count + 1) / 2], 0);
        SysFreeString(text);
    }
}

TEST(Bstr, NullIsTheEmptyText) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysStringByteLen(nullptr), 0u);
    SysFreeString(nullptr);
}

TEST(Bstr, WithoutASourceHasItsLengthAndTerminator) {
    const BSTR units = SysAllocStringLen(nullptr, 3);
    EXPECT_EQ(SysStringLen(units), 3u);
    EXPECT_EQ(units[3], 0);
    SysFreeString(units);

    const BSTR bytes = SysAllocStringByteLen(nullptr, 5);
    EXPECT_EQ(SysStringByteLen(bytes), 5u);
    EXPECT_EQ(bytes[3], 0);
    SysFreeString(bytes);
}

TEST(Bstr, RefusesALengthThatTheCountCannotHold) {
    for (const UINT units : {0x7FFFFFFDU, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(SysAllocStringLen(nullptr, units), nullptr) << units;
    }
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFFU), nullptr);
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFCU), nullptr);
}

TEST(Bstr, ReallocationReplacesTheOldText) {
    BSTR text = nullptr;
    EXPECT_TRUE(SysReAllocString(&text, TEXT("first")));
    EXPECT_EQ(Units(text), TEXT("first"));
    EXPECT_TRUE(SysReAllocString(&text, TEXT("the second, which is longer")));
    EXPECT_EQ(Units(text), TEXT("the second, which is longer"));
    EXPECT_TRUE(SysReAllocStringLen(&text, text + 4, 6));
    EXPECT_EQ(Units(text), TEXT("second"));
    EXPECT_TRUE(SysReAllocStringLen(&text, nullptr, 3));
    EXPECT_EQ(Units(text), TEXT("sec"));
    EXPECT_TRUE(SysReAllocStringLen(&text, nullptr, 8));
    EXPECT_EQ(SysStringLen(text), 8u);
    EXPECT_EQ(Units(text).substr(0, 3), TEXT("sec"));
    EXPECT_EQ(text[8], 0);
    EXPECT_TRUE(SysReAllocString(&text, nullptr));
    EXPECT_EQ(text, nullptr);
    EXPECT_FALSE(SysReAllocString(nullptr, TEXT("x")));
}

TEST(Bstr, ReallocationThatFailsKeepsTheOldText) {
    BSTR text = SysAllocString(TEXT("kept"));
    EXPECT_FALSE(SysReAllocStringLen(&text, nullptr, 0xFFFFFFFFU));
    EXPECT_EQ(Units(text), TEXT("kept"));
    SysFreeString(text);
}

}  // namespace
