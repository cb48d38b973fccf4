#include "excelhost/machine/readable.h"

#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

namespace excelhost {

// msync refuses a range with a page that isn't mapped.
bool IsReadable(const void* start, std::size_t size) noexcept {
    if (size == 0) return true;
    static const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto first = reinterpret_cast<std::uintptr_t>(start) & ~(page - 1);
    const auto last = reinterpret_cast<std::uintptr_t>(start) + size - 1;
    if (last < first) return false;
    return msync(reinterpret_cast<void*>(first), last - first + 1, MS_ASYNC) == 0;
}

}  // namespace excelhost
