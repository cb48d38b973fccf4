// How much of the heap a benchmark's program has in use. Counted are malloc and its kin in all that is linked
// into the program, and operator new.
#pragma once

#include <cstddef>

namespace bench {

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
