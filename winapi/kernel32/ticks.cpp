#include "profileapi.h"
#include "synchapi.h"
#include "sysinfoapi.h"

#include <chrono>
#include <thread>

#include <ctime>

void WINAPI Sleep(DWORD milliseconds) noexcept {
    if (milliseconds == 0) {
        std::this_thread::yield();
    } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
}

DWORD WINAPI GetTickCount() noexcept {
    timespec sinceStart{};
    clock_gettime(CLOCK_BOOTTIME, &sinceStart);
    return static_cast<DWORD>(std::uint64_t(sinceStart.tv_sec) * 1000 +
                              std::uint64_t(sinceStart.tv_nsec) / 1'000'000);
}

BOOL WINAPI QueryPerformanceCounter(PLARGE_INTEGER count) noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    count->QuadPart = LONGLONG{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
    return TRUE;
}
