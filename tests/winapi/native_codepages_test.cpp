// What only the stand-in has: the choice of the ANSI code page and of vector instructions.
#include "codepagetext.h"

#include <stdexcept>

#include <mbctype.h>

#include "src/tableconversion.h"
#include "src/utf8.h"
#include "support/children.h"
#include "support/home.h"
#include "winapi/control.h"

namespace {

using winapi::VectorSet;

TEST(AnsiCodePage, IsWhatTheProgramSays) {
    const UINT before = winapi::SetAnsiCodePage(932);
    EXPECT_EQ(before, 1252u);
    EXPECT_EQ(GetACP(), 932u);
    EXPECT_TRUE(IsDBCSLeadByte(0x82));
    EXPECT_EQ(_setmbcp(_MB_CP_ANSI), 0);
    EXPECT_EQ(_getmbcp(), 932);
    EXPECT_THROW(winapi::SetAnsiCodePage(12345), std::invalid_argument);
    EXPECT_EQ(winapi::SetAnsiCodePage(before), 932u);
    EXPECT_EQ(_setmbcp(_MB_CP_ANSI), 0);
    EXPECT_EQ(_getmbcp(), 0);
}

const support::Role tellsItsPage("ansi code page", [](const support::Arguments&) {
    support::Say(std::to_string(GetACP()));
    return 0;
});

TEST(AnsiCodePage, IsThatOfTheEnvironmentToStartWith) {
    for (const auto& [value, expected] : {std::pair{"932", "932"}, {"65001", "65001"}, {"x", "1252"}}) {
        const support::EnvironmentVariable variable("KESTROLUMEN_ANSI_CODE_PAGE", value);
        support::Child child("ansi code page");
        EXPECT_EQ(child.ReadLine(), expected);
        EXPECT_EQ(child.Finish(), 0);
    }
}

// The calls take the best that the machine has, so each set is tried by itself here.
class WithVectors : public testing::TestWithParam<VectorSet> {
  protected:
    void SetUp() override {
        if (GetParam() > winapi::BestVectorSet()) GTEST_SKIP() << "this machine doesn't have them";
    }
};

TEST_P(WithVectors, ConversionsAreAsTheCallsHaveThem) {
    const winapi::CodePage& western = *winapi::FindCodePage(1252);
    std::mt19937 random(932);
    for (std::size_t round = 0; round < 3000; ++round) {
        const std::size_t offset = random() % 32;
        const ExactCopy<WCHAR> source(Spoilt(random, RandomWide(random, 1 + round % 300)), offset);
        const std::string bytes = NarrowOf(CP_UTF8, source.View());
        ASSERT_EQ(winapi::utf8::Utf8Length(source.View(), GetParam()), bytes.size());
        const ExactCopy<char> toUtf8(std::string(bytes.size(), '\0'), offset);
        ASSERT_EQ(winapi::utf8::ToUtf8(source.View(), {toUtf8.Data(), bytes.size()}, GetParam()),
                  bytes.size());
        ASSERT_EQ(toUtf8.View(), bytes);

        const ExactCopy<char> utf8(Spoilt(random, bytes), offset);
        const Wide wide = WideOf(CP_UTF8, utf8.View());
        ASSERT_EQ(winapi::utf8::Utf16Length(utf8.View(), GetParam()), wide.size());
        const ExactCopy<WCHAR> toWide(Wide(bytes.size(), WCHAR{}), offset);
        ASSERT_EQ(winapi::utf8::ToUtf16(utf8.View(), {toWide.Data(), wide.size()}, GetParam()), wide.size());
        ASSERT_EQ(toWide.View().substr(0, wide.size()), wide);
        ASSERT_EQ(winapi::WideFromPage(western, utf8.View(), {toWide.Data(), bytes.size()}, GetParam()),
                  bytes.size());
        ASSERT_EQ(toWide.View(), WideOf(1252, utf8.View()));
    }
}

// The counters of a vector's lanes are emptied now and then.
TEST_P(WithVectors, LongTextIsCountedRight) {
    const Wide text(300000, 0x20AC);
    EXPECT_EQ(winapi::utf8::Utf8Length(text, GetParam()), 3 * text.size());
}

INSTANTIATE_TEST_SUITE_P(All, WithVectors, testing::Values(VectorSet::baseline, VectorSet::avx2),
                         [](const auto& test) {
                             return test.param == VectorSet::avx2 ? "Avx2" : "Baseline";
                         });

}  // namespace
