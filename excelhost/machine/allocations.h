// The memory that an add-in asks for, counted, and refused when it is told so.
#pragma once

#include <windows.h>

#include <cstdint>

namespace excelhost {

// The `nth` allocation of the watched modules from now on, 1 for the next one, gives null, or std::bad_alloc from
// operator new; 0 lets none fail.
void FailAllocation(std::uint64_t nth) noexcept;

// From here on the allocations of a loaded module come through us: its own calls of malloc, calloc and realloc, and of
// C++'s operator new where it takes that from a library. What other libraries allocate for it isn't seen, nor what comes
// from a runtime library within the module. False when it takes none of these functions from outside.
[[nodiscard]] bool WatchAllocations(HMODULE module);

// How many allocations have been seen since FailAllocation.
[[nodiscard]] std::uint64_t AllocationsSeen() noexcept;

}  // namespace excelhost
