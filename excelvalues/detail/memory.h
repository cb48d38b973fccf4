// The heap of values. Every record and every buffer that the add-in builds comes from malloc and goes back
// to free, so that the two sides of a value's life always agree on the heap.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

namespace kestrolumen::detail {

// Out of memory for a record or a buffer of a value. It is std::bad_alloc to every handler; the text is the
// same in all homes, where the standard libraries differ.
class BadAllocation : public std::bad_alloc {
  public:
    [[nodiscard]] const char* what() const noexcept override { return "bad allocation"; }
};

// A block of `bytes` bytes, uninitialised; a block of no bytes is a block too. Raises std::bad_alloc.
[[nodiscard]] inline void* Malloc(std::size_t bytes) {
    void* const block = std::malloc(bytes != 0 ? bytes : 1);
    if (block == nullptr) throw BadAllocation();
    return block;
}

// A block for `count` objects of type T, uninitialised. Raises std::bad_alloc, also when the size of so many
// objects is more than a size can say.
template <typename T>
[[nodiscard]] T* MallocArray(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw BadAllocation();
    return static_cast<T*>(Malloc(count * sizeof(T)));
}

struct Free {
    void operator()(void* block) const noexcept { std::free(block); }
};

// Owner of a block until somebody else takes it over.
template <typename T>
using MallocPtr = std::unique_ptr<T, Free>;

// The same heap for the standard library.
template <typename T>
struct MallocAllocator {
    using value_type = T;

    MallocAllocator() = default;
    template <typename U>
    MallocAllocator(const MallocAllocator<U>&) noexcept {}

    [[nodiscard]] T* allocate(std::size_t count) { return MallocArray<T>(count); }
    void deallocate(T* block, std::size_t) noexcept { std::free(block); }

    friend bool operator==(const MallocAllocator&, const MallocAllocator&) noexcept { return true; }
};

}  // namespace kestrolumen::detail
