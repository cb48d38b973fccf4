#include "profileapi.h"

#include <ctime>

BOOL WINAPI QueryPerformanceCounter(PLARGE_INTEGER count) noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    count->QuadPart = LONGLONG{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
    return TRUE;
}
