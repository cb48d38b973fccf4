#include "winapi/sysinfo.h"

#include <limits>

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr WORD Architecture() noexcept {
#if defined(__x86_64__)
    return PROCESSOR_ARCHITECTURE_AMD64;
#elif defined(__i386__)
    return PROCESSOR_ARCHITECTURE_INTEL;
#elif defined(__aarch64__)
    return PROCESSOR_ARCHITECTURE_ARM64;
#else
    return PROCESSOR_ARCHITECTURE_UNKNOWN;
#endif
}

}  // namespace

void WINAPI GetSystemInfo(LPSYSTEM_INFO info) noexcept {
    *info = {};
    info->wProcessorArchitecture = Architecture();
    info->dwPageSize = static_cast<DWORD>(sysconf(_SC_PAGESIZE));
    info->dwAllocationGranularity = 0x10000;
    info->lpMinimumApplicationAddress = reinterpret_cast<LPVOID>(std::uintptr_t{0x10000});
    constexpr std::uintptr_t maximum =
        static_cast<std::uintptr_t>(sizeof(void*) == 8 ? 0x7FFFFFFEFFFF : 0xFFFEFFFF);
    info->lpMaximumApplicationAddress = reinterpret_cast<LPVOID>(maximum);

    cpu_set_t usable;
    CPU_ZERO(&usable);
    if (sched_getaffinity(0, sizeof usable, &usable) != 0) CPU_SET(0, &usable);
    info->dwNumberOfProcessors = static_cast<DWORD>(CPU_COUNT(&usable));
    for (unsigned bit = 0; bit < std::numeric_limits<DWORD_PTR>::digits; ++bit) {
        if (CPU_ISSET(bit, &usable)) info->dwActiveProcessorMask |= DWORD_PTR{1} << bit;
    }
}

BOOL WINAPI SwitchToThread() noexcept {
    return sched_yield() == 0;
}

DWORD WINAPI GetCurrentProcessId() noexcept {
    return static_cast<DWORD>(getpid());
}

DWORD WINAPI GetCurrentThreadId() noexcept {
    return static_cast<DWORD>(syscall(SYS_gettid));
}
