#include "excelhost/machine/memory.h"

#include <windows.h>

#include <psapi.h>

namespace excelhost {

std::size_t ResidentMemory() noexcept {
    PROCESS_MEMORY_COUNTERS counters{};
    return K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) ? counters.WorkingSetSize
                                                                                    : 0;
}

}  // namespace excelhost
