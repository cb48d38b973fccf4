#include "excelhost/machine/readable.h"

#include <windows.h>

#include <cstdint>

namespace excelhost {

bool IsReadable(const void* start, std::size_t size) noexcept {
    if (size == 0) return true;
    auto next = reinterpret_cast<std::uintptr_t>(start);
    const std::uintptr_t last = next + size - 1;
    if (last < next) return false;
    while (next <= last) {
        MEMORY_BASIC_INFORMATION region{};
        if (VirtualQuery(reinterpret_cast<const void*>(next), &region, sizeof region) == 0) return false;
        if (region.State != MEM_COMMIT || (region.Protect & (PAGE_NOACCESS | PAGE_GUARD)) != 0) return false;
        const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
        if (end <= next) return false;
        next = end;
    }
    return true;
}

}  // namespace excelhost
