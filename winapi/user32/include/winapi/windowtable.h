// Windows that are never shown, as Microsoft's winuser.h describes them: each has a class, a title and a
// procedure, and belongs to the thread that created it. They are those of this process alone.
//
// Nothing is sent to a window but what DispatchMessageW sends; it hears neither of its creation nor of its
// end.
#pragma once

#include "winapi/modules.h"
#include "winapi/types.h"

#define ERROR_INVALID_WINDOW_HANDLE 1400
#define ERROR_CANNOT_FIND_WND_CLASS 1407
#define ERROR_CLASS_ALREADY_EXISTS 1410
#define ERROR_CLASS_DOES_NOT_EXIST 1411

using HWND = struct HWND__*;
using HMENU = struct HMENU__*;
using ATOM = WORD;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using WNDPROC = LRESULT(CALLBACK*)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

#define HWND_MESSAGE (reinterpret_cast<HWND>(static_cast<LONG_PTR>(-3)))

// Without what concerns display and memory.
struct WNDCLASSW {
    WNDPROC lpfnWndProc;
    HINSTANCE hInstance;
    LPCWSTR lpszClassName;
};

// Names of classes are compared without case. 0 and ERROR_CLASS_ALREADY_EXISTS for a name that is there.
ATOM WINAPI RegisterClassW(const WNDCLASSW* windowClass) noexcept;

// Windows of the class stay, and keep its procedure.
BOOL WINAPI UnregisterClassW(LPCWSTR windowClass, HINSTANCE module) noexcept;

// Read are the class, the title (null: empty) and the module (null: the executable). Null and
// ERROR_CANNOT_FIND_WND_CLASS for a class that isn't registered.
[[nodiscard]] HWND WINAPI CreateWindowExW(DWORD extendedStyle, LPCWSTR windowClass, LPCWSTR title,
                                          DWORD style, int x, int y, int width, int height, HWND parent,
                                          HMENU menu, HINSTANCE module, LPVOID parameter) noexcept;

// What its thread does at its end for all of its windows. ERROR_ACCESS_DENIED for another thread's window.
BOOL WINAPI DestroyWindow(HWND window) noexcept;

// 0: there is nothing that it does for a message.
LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

// The text, cut to `size` - 1 units, and its length without the terminator. 0 and ERROR_INVALID_WINDOW_HANDLE
// for what is no window.
int WINAPI GetClassNameW(HWND window, LPWSTR text, int size) noexcept;
int WINAPI GetWindowTextW(HWND window, LPWSTR text, int size) noexcept;

// The path of the module that the window was created for, as GetModuleFileNameW gives it.
UINT WINAPI GetWindowModuleFileNameW(HWND window, LPWSTR path, UINT size) noexcept;

// The youngest window of that class and that title, both compared without case; null stands for any. Null
// when there is none.
[[nodiscard]] HWND WINAPI FindWindowA(LPCSTR windowClass, LPCSTR title) noexcept;

#define SM_SERVERR2 89

// Of the desktop, which isn't there: 0 for every figure.
[[nodiscard]] int WINAPI GetSystemMetrics(int index) noexcept;
