// How often a piece of a benchmark's program asks for memory, and how much it has in use. Counted are malloc and its
// kin in all that is linked into the program, and operator new, on every thread. Automation's own blocks, of BSTRs and
// arrays, count where the stand-in makes them and not on Windows, where they are of another heap.
//
// Counting costs more than a small block does, so that it is done only where it was asked for, and never in what
// is timed.
#pragma once

#include <cstddef>

namespace bench {

struct HeapUse {
    std::size_t calls = 0;    // blocks that were asked for
    std::ptrdiff_t kept = 0;  // bytes in use at the end, more than at the beginning
    std::ptrdiff_t peak = 0;  // the most of them on the way
};

void StartCounting() noexcept;
[[nodiscard]] HeapUse StopCounting() noexcept;

// What `body` asks for, kept until it ends.
template <typename Body>
[[nodiscard]] HeapUse HeapUseOf(Body body) {
    StartCounting();
    body();
    return StopCounting();
}

}  // namespace bench
