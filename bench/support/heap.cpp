#include "support/heap.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> live = 0;
std::atomic<std::size_t> peak = 0;
std::atomic<std::size_t> calls = 0;

void* Counted(void* block) noexcept {
    calls.fetch_add(1, std::memory_order_relaxed);
    const std::size_t now = live += BENCH_BLOCK_SIZE(block);
    if (now > peak) peak = now;
    return block;
}

}  // namespace

namespace bench {

std::size_t HeapCalls() noexcept {
    return calls;
}

std::size_t LiveBytes() noexcept {
    return live;
}

std::size_t PeakBytes() noexcept {
    return peak;
}

void StartPeak() noexcept {
    peak = live.load();
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
    if (block != nullptr) live -= BENCH_BLOCK_SIZE(block);
    return Counted(__real_realloc(block, size));
}
void __wrap_free(void* block) {
    if (block == nullptr) return;
    live -= BENCH_BLOCK_SIZE(block);
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
