// What only the stand-in has: the choice of the ANSI code page.
#include "codepagetext.h"

#include <stdexcept>

#include <mbstring.h>

#include "support/children.h"
#include "support/home.h"
#include "winapi/control.h"

namespace {

TEST(AnsiCodePage, IsWhatTheProgramSays) {
    const UINT before = winapi::SetAnsiCodePage(932);
    EXPECT_EQ(before, 1252u);
    EXPECT_EQ(GetACP(), 932u);
    EXPECT_TRUE(IsDBCSLeadByteEx(CP_ACP, 0x82));
    EXPECT_EQ(_setmbcp(_MB_CP_ANSI), 0);
    const unsigned char pair[] = {0x82, 0xA0, 0};
    EXPECT_EQ(_mbsnextc(pair), 0x82A0u);
    EXPECT_THROW(winapi::SetAnsiCodePage(12345), std::invalid_argument);
    EXPECT_EQ(winapi::SetAnsiCodePage(before), 932u);
    EXPECT_EQ(_setmbcp(_MB_CP_ANSI), 0);
    EXPECT_EQ(_mbsnextc(pair), 0x82u);
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

}  // namespace
