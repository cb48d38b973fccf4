// What the processor can do, asked once and kept for the life of the process. Any thread may ask: the answers
// are filled in before the first of them is given, and never change.
//
// The leaves and bits are those of Intel's and AMD's manuals of the CPUID instruction. On other machines than
// x86 there is no vendor and every feature is absent.
#pragma once

#include <cstdint>
#include <string>

// The twelve characters of CPUID leaf 0, as "GenuineIntel".
[[nodiscard]] std::string CpuVendor();

[[nodiscard]] bool CpuHasSse2() noexcept;

// These three count for Intel's processors alone, and if the system keeps the wide registers of each thread.
[[nodiscard]] bool CpuHasAvx() noexcept;
[[nodiscard]] bool CpuHasAvx2() noexcept;
[[nodiscard]] bool CpuHasFma() noexcept;

namespace kestrolumen::detail {

// What CPUID says; 0 for a leaf that the processor doesn't have.
struct CpuRegisters {
    std::string vendor;
    std::uint32_t ecx1 = 0;  // of leaf 1
    std::uint32_t edx1 = 0;
    std::uint32_t ebx7 = 0;  // of leaf 7, subleaf 0
    std::uint64_t xcr0 = 0;  // of XGETBV; 0 where the system doesn't let it be asked
};

struct CpuFeatures {
    bool sse2;
    bool avx;
    bool avx2;
    bool fma;

    friend bool operator==(const CpuFeatures&, const CpuFeatures&) = default;
};

[[nodiscard]] CpuFeatures FeaturesOf(const CpuRegisters& registers) noexcept;

}  // namespace kestrolumen::detail
