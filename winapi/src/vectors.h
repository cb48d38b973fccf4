// The choice of vector instructions, made once for the whole process. Where the compiler's own target has
// SSE2 it is used without asking; AVX2 is used on machines that have it. Everything also runs without both.
#pragma once

#include <cstddef>

namespace winapi {

enum class VectorSet { baseline, avx2 };

// The best that this machine has.
[[nodiscard]] VectorSet BestVectorSet() noexcept;

// How far a step of a conversion came.
struct Progress {
    std::size_t read;
    std::size_t written;
};

}  // namespace winapi
