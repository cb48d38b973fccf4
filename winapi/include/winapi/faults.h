// For tests of the native build: memory that runs out at a chosen moment, and an exact count of what lives.
// Both look at the stand-in's own allocations alone: BSTRs, descriptors of arrays and their data blocks.
#pragma once

#include <cstddef>

namespace winapi {

// While one lives, its thread gets `allowed` more allocations; the next one and all later ones fail as they
// do when memory runs out. Guards don't nest.
class AllocationFaults {
  public:
    explicit AllocationFaults(std::size_t allowed) noexcept;
    ~AllocationFaults();
    AllocationFaults(const AllocationFaults&) = delete;
    AllocationFaults& operator=(const AllocationFaults&) = delete;

    // Whether an allocation has failed: a loop over `allowed` = 0, 1, 2, ... ends at the first guard that
    // has not struck.
    [[nodiscard]] bool Struck() const noexcept;
};

// What the process holds at the moment.
[[nodiscard]] std::size_t LiveAllocations() noexcept;

}  // namespace winapi
