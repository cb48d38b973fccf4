#include "support/window.h"

#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using support::TestWindow;

// The last error of a call that fails.
template <typename Call>
DWORD ErrorOf(Call call) {
    SetLastError(ERROR_SUCCESS);
    return call() ? ERROR_SUCCESS : GetLastError();
}

TEST(Messages, ReachAThreadThatWaitsAndNoneThatHasEnded) {
    std::promise<HWND> made;
    DWORD number = 0;
    std::thread thread([&] {
        number = GetCurrentThreadId();
        const TestWindow window(TEXT("Kestrolumen waiting"));
        made.set_value(window.get());
        for (MSG message; GetMessageW(&message, nullptr, 0, 0) != 0;) DispatchMessageW(&message);
        EXPECT_EQ(TestWindow::TakeSeen().size(), 0U);
    });
    const HWND window = made.get_future().get();
    EXPECT_TRUE(PostMessageW(window, WM_USER, 0, 0));
    EXPECT_EQ(ErrorOf([&] { return DestroyWindow(window); }), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_TRUE(PostThreadMessageW(number, WM_QUIT, 0, 0));
    thread.join();
    EXPECT_FALSE(PostThreadMessageW(number, WM_USER, 0, 0));
    EXPECT_EQ(ErrorOf([&] { return PostMessageW(window, WM_USER, 0, 0); }),
              DWORD{ERROR_INVALID_WINDOW_HANDLE});
    MSG stale{window, WM_USER, 0, 0, 0, {}};
    EXPECT_EQ(DispatchMessageW(&stale), 0);

    // A thread's windows go with it.
    HWND left = nullptr;
    const TestWindow other(TEXT("Kestrolumen left"));
    std::thread([&] {
        left = CreateWindowExW(0, TEXT("kestrolumen LEFT"), nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                               nullptr, nullptr);
    }).join();
    EXPECT_NE(left, nullptr);
    WCHAR text[8];
    EXPECT_EQ(GetClassNameW(left, text, 8), 0);
}

TEST(WindowTable, FindsWindowsWithoutCaseAndKeepsTheirTexts) {
    const WCHAR* const name = TEXT("Kestrolumen \u00C4 table");
    EXPECT_EQ(CreateWindowExW(0, name, name, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr),
              nullptr);
    const TestWindow window(name, TEXT("Kestrolumen's title \u00C9"));
    WNDCLASSW again{};
    again.lpfnWndProc = DefWindowProcW;
    again.hInstance = GetModuleHandleW(nullptr);
    again.lpszClassName = TEXT("kestrolumen \u00E4 TABLE");
    EXPECT_EQ(ErrorOf([&] { return RegisterClassW(&again); }), DWORD{ERROR_CLASS_ALREADY_EXISTS});
    EXPECT_EQ(ErrorOf([&] { return UnregisterClassW(name, again.hInstance); }),
              DWORD{ERROR_CLASS_HAS_WINDOWS});

    const struct {
        const char* windowClass;
        const char* title;
        bool found;
    } rows[] = {
        {"Kestrolumen \xC4 table", nullptr, true},
        {"kestrolumen \xE4 TABLE", "KESTROLUMEN'S TITLE \xE9", true},
        {nullptr, "kestrolumen's title \xE9", true},
        {"Kestrolumen \xC4 table", "Kestrolumen's", false},
        {"Kestrolumen \xC4", nullptr, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FindWindowA(row.windowClass, row.title), row.found ? window.get() : nullptr);
    }
    WCHAR text[6];
    EXPECT_EQ(GetClassNameW(window.get(), text, 6), 5);
    EXPECT_EQ(std::basic_string<WCHAR>(text), TEXT("Kestr"));
    EXPECT_EQ(GetWindowTextW(window.get(), text, 6), 5);
    EXPECT_EQ(GetWindowModuleFileNameW(window.get(), text, 6), GetModuleFileNameW(nullptr, text, 6));
}

}  // namespace
