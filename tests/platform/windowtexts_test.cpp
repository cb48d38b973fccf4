#include "platform/windowtexts.h"
#include "platform/systemerrortext.h"
#include "platform/systeminfo.h"
#include "support/window.h"

#include <gtest/gtest.h>

namespace {

TEST(WindowTexts, AreThoseOfTheSystemAndElseEmpty) {
    const StdWString title = TEXT("K\u00E9\u4E2D ") + StdWString(1500, TEXT('t'));
    HWND handle = nullptr;
    {
        const support::TestWindow window(TEXT("xlMain"), title.c_str());
        handle = window.get();
        EXPECT_EQ(GetWindowClassName(handle), TEXT("xlMain"));
        EXPECT_EQ(GetWindowTitle(handle), title.substr(0, 1023).c_str());
        WCHAR path[MAX_PATH];
        GetModuleFileNameW(nullptr, path, MAX_PATH);
        EXPECT_EQ(GetWindowModuleName(handle), path);
        EXPECT_TRUE(IsExcelRunning()) << "names of classes have no case";
    }
    EXPECT_EQ(GetWindowClassName(handle) + GetWindowTitle(handle) + GetWindowModuleName(nullptr), TEXT(""));
}

TEST(SystemErrorText, AlwaysGivesSomething) {
    for (const std::uint32_t code : {0U, 2U, 5U, 87U, 0x80004005U}) {
        CStringW text = SystemErrorText(code, 9);
        EXPECT_EQ(text.Find(TEXT("err=")), -1);
        EXPECT_EQ(text, CStringW(text).TrimRight());
        EXPECT_EQ(text, SystemErrorText(code, 0));
    }
    EXPECT_EQ(SystemErrorText(0x80070005, 0), SystemErrorText(5, 0));
    EXPECT_EQ(SystemErrorText(0xA0001234, 9), TEXT("err=-1610608076"));
    EXPECT_EQ(SystemErrorText(193, 0), TEXT("err=193")) << "a text with a place for a path";
    EXPECT_EQ(SystemErrorText(5, 0x7F), TEXT("err=5")) << "a language that no system speaks";
}

}  // namespace
