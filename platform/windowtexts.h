// Texts of a window, each cut to the length that is told, and empty where the system gives none, as for what
// is no window.
#pragma once

#include "text/text.h"

#include <windows.h>

#include <winuser.h>

// The name of its class, 1023 characters at most.
[[nodiscard]] CStringW GetWindowClassName(HWND window);

// The text of its title bar, 1023 characters at most. A window of this process is asked by a message.
[[nodiscard]] CStringW GetWindowTitle(HWND window);

// The path of the module that created it, 2048 characters at most; empty for a window of another process.
[[nodiscard]] CStringW GetWindowModuleName(HWND window);
