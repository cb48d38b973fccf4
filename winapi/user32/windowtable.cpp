#include "winapi/windowtable.h"

#include "kernel32/failure.h"
#include "messagequeue.h"
#include "winapi/codepages.h"
#include "winapi/strings.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using winapi::AtBorder;
using winapi::Failure;
using winapi::MessageQueue;

namespace {

using Text = std::u16string;

Text WithoutCase(Text text) {
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

Text FromAnsi(LPCSTR text) {
    const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    Text wide(static_cast<std::size_t>(size), u'\0');
    MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), size);
    wide.resize(wide.size() - 1);
    return wide;
}

struct WindowClass {
    Text name;
    WNDPROC procedure;
};

struct Window {
    HWND handle;
    WindowClass ofClass;
    Text title;
    HINSTANCE module;
    std::weak_ptr<MessageQueue> queue;  // of the thread that created it, and lost with it
};

class WindowTable {
  public:
    void Register(const WindowClass& added) {
        const std::lock_guard lock(mutex_);
        const bool isNew = classes_.emplace(WithoutCase(added.name), added).second;
        if (!isNew) throw Failure{ERROR_CLASS_ALREADY_EXISTS};
    }

    void Unregister(const Text& name) {
        const std::lock_guard lock(mutex_);
        if (classes_.erase(WithoutCase(name)) == 0) throw Failure{ERROR_CLASS_DOES_NOT_EXIST};
    }

    HWND Create(const Text& className, Text title, HINSTANCE module) {
        const auto queue = winapi::QueueOfThisThread();
        const std::lock_guard lock(mutex_);
        const auto found = classes_.find(WithoutCase(className));
        if (found == classes_.end()) throw Failure{ERROR_CANNOT_FIND_WND_CLASS};
        const auto handle = reinterpret_cast<HWND>(next_);
        windows_.push_back({handle, found->second, std::move(title), module, queue});
        next_ += 2;
        return handle;
    }

    void Destroy(HWND handle) {
        const std::lock_guard lock(mutex_);
        const auto found = Find(handle);
        if (found->queue.lock() != winapi::QueueOfThisThread()) throw Failure{ERROR_ACCESS_DENIED};
        windows_.erase(found);
    }

    // Throws Failure{ERROR_INVALID_WINDOW_HANDLE} for what is no window.
    Window Get(HWND handle) {
        const std::lock_guard lock(mutex_);
        return *Find(handle);
    }

    template <class Predicate>
    HWND Youngest(Predicate isSought) {
        const std::lock_guard lock(mutex_);
        ForgetLost();
        const auto found = std::find_if(windows_.rbegin(), windows_.rend(), isSought);
        return found == windows_.rend() ? nullptr : found->handle;
    }

  private:
    std::vector<Window>::iterator Find(HWND handle) {
        ForgetLost();
        const auto found = std::find_if(windows_.begin(), windows_.end(),
                                        [&](const Window& window) { return window.handle == handle; });
        if (found == windows_.end()) throw Failure{ERROR_INVALID_WINDOW_HANDLE};
        return found;
    }

    void ForgetLost() {
        std::erase_if(windows_, [](const Window& window) { return window.queue.expired(); });
    }

    std::mutex mutex_;
    std::map<Text, WindowClass> classes_;  // by the name without case
    std::vector<Window> windows_;          // the youngest last
    std::uintptr_t next_ = 0x10002;
};

// Never destroyed: destructors of static objects may still ask for a window.
WindowTable& Windows() {
    static WindowTable& windows = *new WindowTable;
    return windows;
}

int Copied(const Text& from, LPWSTR text, int size) {
    if (text == nullptr || size < 1) throw Failure{ERROR_INVALID_PARAMETER};
    const std::size_t length = from.copy(text, static_cast<std::size_t>(size) - 1);
    text[length] = u'\0';
    return static_cast<int>(length);
}

}  // namespace

ATOM WINAPI RegisterClassW(const WNDCLASSW* windowClass) noexcept {
    return AtBorder(ATOM{0}, [&] {
        if (windowClass->lpszClassName == nullptr || windowClass->lpfnWndProc == nullptr) {
            throw Failure{ERROR_INVALID_PARAMETER};
        }
        Windows().Register({windowClass->lpszClassName, windowClass->lpfnWndProc});
        return ATOM{0xC000};
    });
}

BOOL WINAPI UnregisterClassW(LPCWSTR windowClass, HINSTANCE) noexcept {
    return AtBorder(FALSE, [&] {
        Windows().Unregister(windowClass);
        return TRUE;
    });
}

HWND WINAPI CreateWindowExW(DWORD, LPCWSTR windowClass, LPCWSTR title, DWORD, int, int, int, int, HWND, HMENU,
                            HINSTANCE module, LPVOID) noexcept {
    return AtBorder(HWND{}, [&] {
        return Windows().Create(windowClass, title == nullptr ? Text() : Text(title), module);
    });
}

BOOL WINAPI DestroyWindow(HWND window) noexcept {
    return AtBorder(FALSE, [&] {
        Windows().Destroy(window);
        return TRUE;
    });
}

LRESULT WINAPI DefWindowProcW(HWND, UINT, WPARAM, LPARAM) noexcept {
    return 0;
}

int WINAPI GetClassNameW(HWND window, LPWSTR text, int size) noexcept {
    return AtBorder(0, [&] { return Copied(Windows().Get(window).ofClass.name, text, size); });
}

int WINAPI GetWindowTextW(HWND window, LPWSTR text, int size) noexcept {
    return AtBorder(0, [&] { return Copied(Windows().Get(window).title, text, size); });
}

UINT WINAPI GetWindowModuleFileNameW(HWND window, LPWSTR path, UINT size) noexcept {
    return AtBorder(UINT{0}, [&] { return GetModuleFileNameW(Windows().Get(window).module, path, size); });
}

HWND WINAPI FindWindowA(LPCSTR windowClass, LPCSTR title) noexcept {
    return AtBorder(HWND{}, [&] {
        const auto fits = [](const Text& text, LPCSTR wanted) {
            return wanted == nullptr || WithoutCase(text) == WithoutCase(FromAnsi(wanted));
        };
        return Windows().Youngest([&](const Window& window) {
            return fits(window.ofClass.name, windowClass) && fits(window.title, title);
        });
    });
}

LRESULT WINAPI DispatchMessageW(const MSG* message) {
    if (message->hwnd == nullptr) return 0;
    const WNDPROC procedure =
        AtBorder(WNDPROC{}, [&] { return Windows().Get(message->hwnd).ofClass.procedure; });
    if (procedure == nullptr) return 0;
    return procedure(message->hwnd, message->message, message->wParam, message->lParam);
}

BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    return AtBorder(FALSE, [&] {
        const auto queue =
            window == nullptr ? winapi::QueueOfThisThread() : Windows().Get(window).queue.lock();
        if (!queue) throw Failure{ERROR_INVALID_WINDOW_HANDLE};
        queue->Post({window, message, wParam, lParam, 0, {}});
        return TRUE;
    });
}

int WINAPI GetSystemMetrics(int) noexcept {
    return 0;
}
