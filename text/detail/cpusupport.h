#pragma once

namespace kestrolumen::detail {

// Sets of x86 instructions that some of our code is written for.
struct CpuSupport {
    bool ssse3 = false;
    bool popcnt = false;
    bool pclmul = false;      // with sse4.1
    bool avx2 = false;        // and registers of 32 bytes, which the system keeps
    bool vpclmulqdq = false;  // with avx2
};

// What this processor has, asked once. All false on processors of other makes.
[[nodiscard]] const CpuSupport& KnownCpuSupport() noexcept;

}  // namespace kestrolumen::detail
