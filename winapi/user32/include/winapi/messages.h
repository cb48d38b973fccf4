// Messages of threads and windows, as Microsoft's winuser.h describes them. There is no display: keyboard,
// mouse and timers send none, and all that come were posted.
#pragma once

#include "winapi/windowtable.h"

#define WM_QUIT 0x0012
#define WM_KEYDOWN 0x0100
#define WM_USER 0x0400

#define PM_NOREMOVE 0x0000
#define PM_REMOVE 0x0001

struct POINT {
    LONG x;
    LONG y;
};

struct MSG {
    HWND hwnd;  // null: a message to the thread
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;  // of GetTickCount
    POINT pt;    // 0, 0
};
using LPMSG = MSG*;

// Both take the calling thread's oldest message; PeekMessageW leaves it there without PM_REMOVE and gives
// FALSE when there is none, GetMessageW waits for it. When all others are taken, WM_QUIT is there if
// PostQuitMessage has been called: for it GetMessageW gives 0. Nothing is filtered: ERROR_INVALID_PARAMETER
// for other filters than null and 0, and -1 from GetMessageW.
BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove) noexcept;
BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last) noexcept;

// FALSE: no key is pressed here that would stand for a character.
BOOL WINAPI TranslateMessage(const MSG* message) noexcept;

// Calls the procedure of the message's window, and gives its result; 0 for a message without a window, or
// with one that isn't there any longer. What the procedure throws passes.
LRESULT WINAPI DispatchMessageW(const MSG* message);

// To the window's thread; with a null window, to the calling thread. ERROR_INVALID_WINDOW_HANDLE for what is
// no window.
BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

void WINAPI PostQuitMessage(int exitCode) noexcept;
