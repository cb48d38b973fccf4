#include "winapi/desktop.h"

int WINAPI GetSystemMetrics(int) noexcept {
    return 0;
}

HWND WINAPI FindWindowA(LPCSTR, LPCSTR) noexcept {
    return nullptr;
}
