#include "support/allocations.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> live_blocks = 0;
std::atomic<std::size_t> allocations = 0;
std::atomic<std::size_t> allocated_bytes = 0;

// The thread whose allocation is to fail, 0 for none. No thread_local variable does this job: where the
// compiler emulates those, they allocate on first use.
std::atomic<DWORD> faulty_thread = 0;
// Belong to that thread.
std::size_t allocations_to_fault = 0;
void (*raise_instead)() = nullptr;

bool IsFaultyThread() noexcept {
    return faulty_thread.load(std::memory_order_relaxed) == GetCurrentThreadId();
}

bool Fails(std::size_t size) noexcept {
    allocations.fetch_add(1, std::memory_order_relaxed);
    allocated_bytes.fetch_add(size, std::memory_order_relaxed);
    return IsFaultyThread() && allocations_to_fault != 0 && --allocations_to_fault == 0;
}

void* Count(void* block) noexcept {
    if (block != nullptr) live_blocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

}  // namespace

namespace support {

std::int64_t LiveBlocks() noexcept {
    return live_blocks;
}

std::size_t Allocations() noexcept {
    return allocations;
}

std::size_t AllocatedBytes() noexcept {
    return allocated_bytes;
}

AllocationFault::AllocationFault(std::size_t nth, void (*raise)()) noexcept {
    allocations_to_fault = nth;
    raise_instead = raise;
    faulty_thread = GetCurrentThreadId();
}

AllocationFault::~AllocationFault() {
    faulty_thread = 0;
}

bool AllocationFault::Struck() const noexcept {
    return allocations_to_fault == 0;
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
    return Fails(size) ? nullptr : Count(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return Fails(count * size) ? nullptr : Count(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size) {
    if (Fails(size)) return nullptr;
    void* const moved = __real_realloc(block, size);
    return block == nullptr ? Count(moved) : moved;
}

void __wrap_free(void* block) {
    if (block != nullptr) live_blocks.fetch_sub(1, std::memory_order_relaxed);
    __real_free(block);
}
}

void* operator new(std::size_t size) {
    void* const block = __wrap_malloc(size);
    if (block == nullptr && IsFaultyThread() && raise_instead != nullptr) raise_instead();
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
