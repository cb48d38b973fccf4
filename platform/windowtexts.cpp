#include "platform/windowtexts.h"

namespace {

// Has a text of `size` units put into a string, which then gets the length that the call gives.
template <typename Size>
CStringW TextBy(Size(WINAPI* call)(HWND, LPWSTR, Size), HWND window, Size size) {
    CStringW text;
    const Size length = call(window, text.GetBuffer(static_cast<int>(size)), size);
    text.ReleaseBufferSetLength(static_cast<int>(length));
    return text;
}

}  // namespace

CStringW GetWindowClassName(HWND window) {
    return TextBy(GetClassNameW, window, 1024);
}

CStringW GetWindowTitle(HWND window) {
    return TextBy(GetWindowTextW, window, 1024);
}

CStringW GetWindowModuleName(HWND window) {
    return TextBy(GetWindowModuleFileNameW, window, 2048U);
}
