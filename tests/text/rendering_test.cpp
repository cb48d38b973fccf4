// Containers as one line of text.
#include "text/rendering.h"

#include "text/format.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr auto infinity = std::numeric_limits<double>::infinity();

template <typename Integer>
using Limits = std::numeric_limits<Integer>;

// Beyond what docs/text.md has as an example.
TEST(Lists, OfNumbersAndOfNothing) {
    const std::pair<CStringW, const char*> rows[] = {
        {CStringWFromVectorByte({255, 0}, 2, 0), "{ 255, 0 }"},
        {CStringWFromVectorUInt16({0xFFFF}), "{ 65535 }"},
        {CStringWFromVectorInt32({Limits<std::int32_t>::min()}), "{ -2147483648 }"},
        {CStringWFromVectorUInt32({0xFFFFFFFF, 0}), "{ 4294967295, 0 }"},
        {CStringWFromVectorUInt64({Limits<std::uint64_t>::max()}), "{ 18446744073709551615 }"},
        {CStringWFromVectorUInt64Hex({255, 0x123456789ABCDEF0}), "{ 00000000000000FF, 123456789ABCDEF0 }"},
        {CStringWFromVectorDouble({-0.0, infinity, 1e-300, 100000, 1e-5, 0.00012}),
         "{ -0, inf, 1e-300, 100000, 1e-05, 0.00012 }"},
        {CStringWFromChunkedVectorDouble({{{1, 2, 3, 4}, {5, 6}}, 4, 2, 3}), "{ 1, 2, 3, 4, 5, 6 }"},
        {CStringWFromByteList({0x0A, 0xFF}, false), "{ 10, 255 }"},
    };
    for (const auto& [list, expected] : rows) EXPECT_EQ(list, expected);
    EXPECT_EQ(CStringAFromVectorInt32(std::vector<LONG>{3}), "{ 3 }");
    EXPECT_EQ(CStringAFromVectorInt64(std::vector<long long>{3}), "{ 3 }");
    EXPECT_EQ(CStringAFromVectorVectorInt32({{1, 2}, {3}, {}}), "{ { 1, 2 }, { 3 }, { } }");
    for (const CStringA& list :
         {CStringAFromVectorBool({}), CStringAFromVectorInt16({}), CStringAFromVectorByte({}, 0, 0),
          CStringAFromVectorDouble({}), CStringAFromChunkedVectorDouble({}),
          CStringAFromVectorPairCStringW({}), CStringAFromVectorVectorInt32({}), CStringAFromSetCStringW({}),
          CStringAFromByteList({}, true)}) {
        EXPECT_EQ(list, "{ }");
    }
    EXPECT_EQ(CStringAFromSharedVectorInt32(nullptr), "N/A");
    EXPECT_EQ(CStringAFromSharedVectorDouble(std::make_shared<std::vector<double>>(2, 0.5)), "{ 0.5, 0.5 }");
}

TEST(Lists, OfStrings) {
    EXPECT_EQ(CStringAFromVectorCStringA({"a\"b", "", CStringA("a\0b", 3)}), "{ \"a\"b\", \"\", \"a\" }");
    EXPECT_EQ(CStringWFromVectorCStringA({"\x80"}), TEXT("{ \"\x20ac\" }"));
    EXPECT_EQ(CStringWFromVectorCStringW({TEXT("\x4e2d"), CStringW(TEXT("x\0y"), 3)}),
              TEXT("{ \"\x4e2d\", \"x\" }"));
    EXPECT_EQ(CStringAFromVectorCStringW({TEXT("\x20ac\x4e2d")}), "{ \"\x80?\" }");
    EXPECT_EQ(StdStringFromVectorStdString({"a", std::string("b\0c", 3)}), "{ \"a\", \"b\" }");
    EXPECT_EQ(StdStringFromVectorStdWString({TEXT("5\x20ac"), TEXT("\"")}), "{ \"5<20AC>\", \"\"\" }");
    EXPECT_EQ(CStringWFromVectorPairCStringW({{TEXT("a"), TEXT("b")}, {TEXT("\x4e2d"), TEXT("")}}),
              TEXT("{ \"< \"a\", \"b\" >\", \"< \"\x4e2d\", \"\" >\" }"));
    const std::string text(5000, 'x');  // longer than the pieces that are gathered
    EXPECT_EQ(StdStringFromVectorStdString({"a", text, "b"}), "{ \"a\", \"" + text + "\", \"b\" }");
    // Two that the code page can't tell apart; and the order is that of the narrow texts.
    EXPECT_EQ(CStringAFromSetCStringW({TEXT("\x4e2d"), TEXT("\x6587"), TEXT("\x20ac"), TEXT("\x00e9")}),
              "{ \"?\",\"\x80\",\"\xe9\" }");
}

TEST(Lists, HaveEveryDoubleAsTheFormatHasIt) {
    std::mt19937_64 random(5401);
    std::vector<double> values{0.5, 1234565, 0.1234565, 1e22, 123456.5, 1234575, 999999.5, 5e-324, 9.999995};
    while (values.size() < 20'000) {
        std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isnan(value)) values.push_back(value);  // the x87 unit makes quiet ones of them
        values.push_back(static_cast<double>(bits % 10'000'000) / 8);
        values.push_back(static_cast<double>(bits % 100'000'000) / 1e5);
    }
    std::string expected;
    for (const double value : values)
        expected += (expected.empty() ? "{ " : ", ") + StdStringFormat("%g", value);
    EXPECT_EQ(StdStringFromVectorDouble(values), expected + " }");
}

}  // namespace
