// Windows that tests make and that are never shown.
#pragma once

#include <windows.h>

#include <winuser.h>

#include <functional>
#include <utility>
#include <vector>

namespace support {

// A window of a class of its own. It keeps what `Post` sent to it, in the order in which it came.
class TestWindow {
  public:
    explicit TestWindow(const WCHAR* className, const WCHAR* title = nullptr) : className_(className) {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = Procedure;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = className;
        RegisterClassW(&windowClass);
        window_ = CreateWindowExW(0, className, title, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  windowClass.hInstance, nullptr);
    }
    ~TestWindow() {
        DestroyWindow(window_);
        UnregisterClassW(className_, GetModuleHandleW(nullptr));
        Current() = {};
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    [[nodiscard]] HWND get() const { return window_; }

    void Post(UINT message) const { PostMessageW(window_, message, 0, mark); }
    [[nodiscard]] static std::vector<UINT> TakeSeen() { return std::exchange(Current().seen, {}); }
    static void React(std::function<void(UINT)> reaction) { Current().react = std::move(reaction); }

  private:
    static constexpr LPARAM mark = 0x5A17;  // the system's own messages don't have it

    struct State {
        std::vector<UINT> seen;
        std::function<void(UINT)> react;
    };
    // The windows of a thread share it.
    static State& Current() {
        thread_local State state;
        return state;
    }

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (lParam != mark) return DefWindowProcW(window, message, wParam, lParam);
        Current().seen.push_back(message);
        if (Current().react) Current().react(message);
        return 0;
    }

    const WCHAR* className_;
    HWND window_;
};

}  // namespace support
