#include "winapi/desktop.h"

int WINAPI GetSystemMetrics(int) noexcept {
    return 0;
}
