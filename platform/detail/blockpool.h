// Small blocks that are asked for and given back all the time: what holds an object of the object model, the counts of
// a handle to Excel's answer. Here a pair of calls takes a fifth of what the heap takes for it.
#pragma once

#include "text/detail/compiler.h"

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace kestrolumen::detail {

// 32 blocks of 64 bytes, one for each bit of a word: those that are free are set. Any thread may take a block and any
// give it back, without a lock. While all are taken, and for whatever is larger, there is the heap.
//
// A block takes a processor's cache line of its own, so that counts that change on two threads don't meet in one.
class BlockPool {
  public:
    static constexpr std::size_t blockSize = 64;
    static constexpr std::size_t blockCount = 32;

    // At least `bytes` bytes, aligned for every type whose alignment isn't more than usual. Raises std::bad_alloc.
    [[nodiscard]] void* Take(std::size_t bytes) {
        std::uint32_t free = bytes <= blockSize ? free_.load(std::memory_order_relaxed) : 0;
        while (free != 0) {
            const std::uint32_t withoutLowest = free & (free - 1);
            if (free_.compare_exchange_weak(free, withoutLowest, std::memory_order_acquire,
                                            std::memory_order_relaxed)) {
                return blocks_[std::countr_zero(free)];
            }
        }
        return ::operator new(bytes);
    }

    // A block that Take gave.
    void GiveBack(void* block) noexcept {
        const auto offset =
            reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(blocks_);
        if (offset < sizeof blocks_) {
            free_.fetch_or(std::uint32_t{1} << (offset / blockSize), std::memory_order_release);
        } else {
            ::operator delete(block);
        }
    }

  private:
    // The address sanitizer watches the heap's blocks and not these: where it is, all are taken.
    std::atomic<std::uint32_t> free_ = KESTROLUMEN_ADDRESS_SANITIZER ? 0 : ~std::uint32_t{0};
    alignas(blockSize) std::byte blocks_[blockCount][blockSize] = {};
};

// There before any code runs and until the module goes.
inline constinit BlockPool blockPool;

// For the standard library's classes.
template <typename T>
struct PooledAllocator {
    using value_type = T;

    PooledAllocator() = default;
    template <typename U>
    PooledAllocator(const PooledAllocator<U>&) noexcept {}

    [[nodiscard]] T* allocate(std::size_t count) {
        return static_cast<T*>(blockPool.Take(count * sizeof(T)));
    }
    void deallocate(T* block, std::size_t) noexcept { blockPool.GiveBack(block); }

    friend bool operator==(const PooledAllocator&, const PooledAllocator&) noexcept { return true; }
};

// std::make_shared, with the object and its counts in one such block.
template <typename Object, typename... Arguments>
[[nodiscard]] std::shared_ptr<Object> MakePooled(Arguments&&... arguments) {
    return std::allocate_shared<Object>(PooledAllocator<Object>(), std::forward<Arguments>(arguments)...);
}

}  // namespace kestrolumen::detail
