// How often a benchmark's program asks for memory, and how much it has in use. Counted are malloc and its kin in
// all that is linked into the program, and operator new. Automation's own blocks, of BSTRs and arrays, count
// where the stand-in makes them and not on Windows, where they are of another heap.
#pragma once

#include <cstddef>

namespace bench {

// Blocks that were asked for since the program began.
[[nodiscard]] std::size_t HeapCalls() noexcept;

// Bytes in blocks that are alive now.
[[nodiscard]] std::size_t LiveBytes() noexcept;

// The most since StartPeak.
[[nodiscard]] std::size_t PeakBytes() noexcept;
void StartPeak() noexcept;

// Runs `body`, and gives how many bytes more than before it were in use at most.
template <typename Body>
[[nodiscard]] std::size_t PeakBytesOf(Body body) {
    const std::size_t before = LiveBytes();
    StartPeak();
    body();
    return PeakBytes() - before;
}

}  // namespace bench
