#include <atlstr.h>

#include <climits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

// ASCII as text of the string's width, and back.
template <typename Unit>
std::basic_string<Unit> Units(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}
template <typename String>
String Of(std::string_view ascii) {
    return String(Units<typename String::XCHAR>(ascii).c_str(), static_cast<int>(ascii.size()));
}
template <typename Unit>
std::basic_string<Unit> Content(const CStringT<Unit>& text) {
    EXPECT_EQ(text.GetString()[text.GetLength()], Unit{0});
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}
template <typename Unit>
std::string Ascii(const CStringT<Unit>& text) {
    std::string ascii;
    for (const Unit unit : Content(text)) ascii += static_cast<char>(unit);
    return ascii;
}

// What both widths have in common is tested in both.
template <typename String>
class AtlString : public testing::Test {};
using BothWidths = testing::Types<CStringA, CStringW>;
TYPED_TEST_SUITE(AtlString, BothWidths);

TYPED_TEST(AtlString, ConstructionAndConcatenation) {
    using Unit = typename TypeParam::XCHAR;
    using Other = typename TypeParam::YCHAR;
    const auto own = Units<Unit>("text");
    const auto other = Units<Other>("text");
    for (const TypeParam& text : {TypeParam(own.c_str()), TypeParam(other.c_str()), TypeParam(own.c_str(), 4),
                                  TypeParam(CStringA("text")), TypeParam(CStringW("text"))}) {
        EXPECT_EQ(Ascii(text), "text");
    }
    for (const TypeParam& empty :
         {TypeParam(), TypeParam(static_cast<const Unit*>(nullptr)), TypeParam(own.c_str(), -1),
          TypeParam(static_cast<const Other*>(nullptr), 3), TypeParam(Unit{'x'}, 0)}) {
        EXPECT_TRUE(empty.IsEmpty());
        EXPECT_EQ(Ascii(empty), "");
    }
    const TypeParam a = Of<TypeParam>(std::string_view("a\0", 2));
    TypeParam sum = a + a + Unit{'b'} + TypeParam(Other{'c'}, 2);
    sum += other.c_str();
    EXPECT_EQ(Ascii(sum), std::string_view("a\0a\0bcctext", 11));
    EXPECT_EQ(Ascii(own.c_str() + a), std::string_view("texta\0", 6));
    // Pointers end at their first zero, strings don't.
    EXPECT_TRUE(a > own.substr(0, 0).c_str() && a < own.c_str() && a != Of<TypeParam>("a"));
    EXPECT_EQ(a.Compare(Of<TypeParam>("a")), 0);
    // Lower case is compared: an underline stands before every letter.
    EXPECT_EQ(Of<TypeParam>("HeLLo").CompareNoCase(Of<TypeParam>("hEllO")), 0);
    EXPECT_LT(Of<TypeParam>("_").CompareNoCase(a), 0);
}

template <typename Text, typename Argument>
concept Formats = requires(Text text, const Argument& argument) {
    text.Format(text.GetString(), argument);
};

TYPED_TEST(AtlString, Format) {
    using Unit = typename TypeParam::XCHAR;
    TypeParam text = Of<TypeParam>("n");
    text.Format(Units<Unit>("%s=%d").c_str(), text.GetString(), 5);
    text.AppendFormat(Units<Unit>(" %s %I64d").c_str(), text.GetString(), std::int64_t{7});
    EXPECT_EQ(Ascii(text), "n=5 n=5 7");
    // Strings themselves, of either width, where Microsoft's class takes them.
    const TypeParam own = Of<TypeParam>("own");
    TypeParam whole;
    whole.Format(Units<Unit>("<%s>").c_str(), own);
    whole.AppendFormat(Units<Unit>("<%S>%s").c_str(), CStringT<typename TypeParam::YCHAR>(own), 5);
    EXPECT_EQ(Ascii(whole), "<own><own>5");
    static_assert(!Formats<TypeParam, std::basic_string<Unit>> && !Formats<TypeParam, std::vector<int>>);
    EXPECT_THROW(text.Format(Units<Unit>("%2147483647d%d").c_str(), 1, 2), std::length_error);
    EXPECT_THROW(text.Append(text, INT_MAX - 3), std::length_error);
    EXPECT_THROW(static_cast<void>(text.GetBuffer(INT_MAX)), std::length_error);
    EXPECT_THROW(TypeParam(Unit{'x'}, INT_MAX), std::length_error);
    EXPECT_EQ(Ascii(text), "n=5 n=5 7");
}

TYPED_TEST(AtlString, CopiesOfOneStringOnManyThreads) {
    auto shared = std::make_unique<TypeParam>(Of<TypeParam>("shared by all"));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([own = *shared, thread] {
            for (int i = 0; i < 2000; ++i) {
                TypeParam copy = own;
                const TypeParam second = copy;
                if (i % 3 == thread % 3) copy.SetAt(0, 'S');
                copy += typename TypeParam::XCHAR('!');
                ASSERT_EQ(copy.GetLength(), 14);
                ASSERT_EQ(second, own);
            }
        });
    }
    shared.reset();
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
