#include "platform/windowtexts.h"
#include "platform/systemerrortext.h"
#include "support/window.h"

#include <gtest/gtest.h>

namespace {

TEST(WindowTexts, AreThoseOfTheSystemAndElseEmpty) {
    HWND gone = nullptr;
    {
        const support::TestWindow window(TEXT("Kestrolumen texts"), TEXT("K\u00E9\u4E2D 1"));
        gone = window.get();
        EXPECT_EQ(GetWindowClassName(gone), TEXT("Kestrolumen texts"));
        EXPECT_EQ(GetWindowTitle(gone), TEXT("K\u00E9\u4E2D 1"));
        WCHAR path[MAX_PATH];
        GetModuleFileNameW(nullptr, path, MAX_PATH);
        EXPECT_EQ(GetWindowModuleName(gone), path);
    }
    const StdWString longTitle(1500, TEXT('t'));
    const support::TestWindow window(TEXT("Kestrolumen long"), longTitle.c_str());
    EXPECT_EQ(GetWindowTitle(window.get()), longTitle.substr(0, 1023).c_str());
    for (const HWND none : {gone, HWND{}}) {
        EXPECT_TRUE(GetWindowClassName(none).IsEmpty());
        EXPECT_TRUE(GetWindowTitle(none).IsEmpty());
        EXPECT_TRUE(GetWindowModuleName(none).IsEmpty());
    }
}

TEST(SystemErrorText, AlwaysGivesSomething) {
    for (const std::uint32_t code : {0U, 2U, 5U, 87U, 0x80004005U, 0x80070005U}) {
        for (const auto language : {std::uint16_t{0}, std::uint16_t{9}}) {
            CStringW text = SystemErrorText(code, language);
            EXPECT_GT(text.GetLength(), 5);
            EXPECT_NE(text.Left(4), TEXT("err="));
            EXPECT_EQ(text, CStringW(text).TrimRight());
        }
    }
    EXPECT_EQ(SystemErrorText(0x80070005, 0), SystemErrorText(5, 0));
    EXPECT_EQ(SystemErrorText(87654321, 0), TEXT("err=87654321"));
    EXPECT_EQ(SystemErrorText(0xA0001234, 9), TEXT("err=-1610608076"));
    EXPECT_EQ(SystemErrorText(193, 0), TEXT("err=193")) << "a text with a place for a path";
    EXPECT_EQ(SystemErrorText(5, 0x7F), TEXT("err=5")) << "a language that no system speaks";
}

}  // namespace
