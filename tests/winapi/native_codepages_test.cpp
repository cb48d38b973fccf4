// What only the stand-in has: the choice of the ANSI code page and of vector instructions.
#include "codepagetext.h"

#include <stdexcept>

#include <mbctype.h>

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
