// The desktop, of which there is none.
#pragma once

#include "winapi/types.h"

#define SM_SERVERR2 89

// 0 for every figure.
[[nodiscard]] int WINAPI GetSystemMetrics(int index) noexcept;
