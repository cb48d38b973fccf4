#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> liveBlocks = 0;
thread_local std::size_t allocations = 0;
// The value of `allocations` at which one fails; 0 for none.
thread_local std::size_t failAt = 0;
thread_local void (*raiseInstead)() = nullptr;

bool Fails() noexcept {
    return ++allocations == failAt;
}

void* Count(void* block) noexcept {
    if (block != nullptr) liveBlocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

}  // namespace

namespace support {

std::int64_t LiveBlocks() noexcept {
    return liveBlocks;
}

std::size_t Allocations() noexcept {
    return allocations;
}

AllocationFault::AllocationFault(std::size_t nth, void (*raise)()) noexcept {
    failAt = allocations + nth;
    raiseInstead = raise;
}

AllocationFault::~AllocationFault() {
    failAt = 0;
    raiseInstead = nullptr;
}

bool AllocationFault::Struck() const noexcept {
    return allocations >= failAt;
}

}  // namespace support

// The linker's option --wrap sends the calls of these functions here.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void __wrap_free(void* block);

void* __wrap_malloc(std::size_t size) {
    return Fails() ? nullptr : Count(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : Count(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size) {
    if (Fails()) return nullptr;
    void* const moved = __real_realloc(block, size);
    return block == nullptr ? Count(moved) : moved;
}

void __wrap_free(void* block) {
    if (block != nullptr) liveBlocks.fetch_sub(1, std::memory_order_relaxed);
    __real_free(block);
}
}

void* operator new(std::size_t size) {
    void* const block = __wrap_malloc(size);
    if (block == nullptr && raiseInstead != nullptr) raiseInstead();
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return __wrap_malloc(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return __wrap_malloc(size);
}

void operator delete(void* block) noexcept {
    __wrap_free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    __wrap_free(block);
}

void operator delete[](void* block) noexcept {
    __wrap_free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    __wrap_free(block);
}
