#include "support/heap.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> counting = false;
std::atomic<std::ptrdiff_t> live = 0;
std::atomic<std::ptrdiff_t> peak = 0;
std::atomic<std::size_t> calls = 0;

[[nodiscard]] bool IsCounting() noexcept {
    return counting.load(std::memory_order_relaxed);
}

std::ptrdiff_t BytesOf(void* block) noexcept {
    return static_cast<std::ptrdiff_t>(BENCH_BLOCK_SIZE(block));
}

void* Counted(void* block) noexcept {
    if (!IsCounting()) return block;
    ++calls;
    const std::ptrdiff_t now = live += BytesOf(block);
    if (now > peak) peak = now;
    return block;
}

void Uncount(void* block) noexcept {
    if (IsCounting()) live -= BytesOf(block);
}

}  // namespace

namespace bench {

void StartCounting() noexcept {
    calls = 0;
    live = peak = 0;
    counting = true;
}

HeapUse StopCounting() noexcept {
    counting = false;
    return {calls, live, peak};
}

}  // namespace bench

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
    return Counted(__real_malloc(size));
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return Counted(__real_calloc(count, size));
}
void* __wrap_realloc(void* block, std::size_t size) {
    if (block != nullptr) Uncount(block);
    return Counted(__real_realloc(block, size));
}
void __wrap_free(void* block) {
    if (block == nullptr) return;
    Uncount(block);
    __real_free(block);
}
}

void* operator new(std::size_t size) {
    void* const block = __wrap_malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept {
    __wrap_free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    __wrap_free(block);
}
