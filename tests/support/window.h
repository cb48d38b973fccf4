// Windows that tests make and that are never shown.
#pragma once

#include <windows.h>

#include <winuser.h>

#include <functional>
#include <vector>

namespace support {

// A window of a class of its own, for messages alone or, with no parent, one that others find. It keeps what
// `Post` sends to it, in the order in which it comes, and reacts.
class TestWindow {
  public:
    explicit TestWindow(const WCHAR* className, const WCHAR* title = nullptr, HWND parent = HWND_MESSAGE)
        : className_(className) {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = Procedure;
        windowClass.hInstance = module_;
        windowClass.lpszClassName = className;
        RegisterClassW(&windowClass);
        window_ = CreateWindowExW(0, className, title, 0, 0, 0, 0, 0, parent, nullptr, module_, nullptr);
    }
    ~TestWindow() {
        DestroyWindow(window_);
        UnregisterClassW(className_, module_);
        react = nullptr;
    }

    [[nodiscard]] HWND get() const { return window_; }
    void Post(UINT message) const { PostMessageW(window_, message, 0, mark); }

    static inline std::vector<UINT> seen;
    static inline std::function<void(UINT)> react;

  private:
    static constexpr LPARAM mark = 0x5A17;  // the system's own messages don't have it

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (lParam != mark) return DefWindowProcW(window, message, wParam, lParam);
        seen.push_back(message);
        if (react) react(message);
        return 0;
    }

    const HINSTANCE module_ = GetModuleHandleW(nullptr);
    const WCHAR* className_;
    HWND window_;
};

}  // namespace support
