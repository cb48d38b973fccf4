#include "oleheap.h"

#include "winapi/faults.h"

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<std::size_t> liveAllocations{0};

struct Faults {
    bool armed = false;
    bool struck = false;
    std::size_t allowed = 0;
};
thread_local Faults faults;

bool Strikes() noexcept {
    if (!faults.armed) return false;
    if (faults.allowed > 0) {
        --faults.allowed;
        return false;
    }
    faults.struck = true;
    return true;
}

}  // namespace

namespace winapi {

void* OleAllocate(std::size_t bytes) noexcept {
    if (Strikes()) return nullptr;
    void* const block = std::malloc(bytes);
    if (block != nullptr) liveAllocations.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void OleFree(void* block) noexcept {
    if (block == nullptr) return;
    liveAllocations.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}

AllocationFaults::AllocationFaults(std::size_t allowed) noexcept { faults = {true, false, allowed}; }

AllocationFaults::~AllocationFaults() { faults = {}; }

bool AllocationFaults::Struck() const noexcept { return faults.struck; }

std::size_t LiveAllocations() noexcept { return liveAllocations.load(std::memory_order_relaxed); }

}  // namespace winapi
