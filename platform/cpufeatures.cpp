#include "platform/cpufeatures.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace {

constexpr bool HasBit(std::uint64_t bits, unsigned bit) noexcept {
    return (bits >> bit & 1) != 0;
}

constexpr unsigned osxsave = 27;  // in ECX of leaf 1: XGETBV may be used

#if defined(__x86_64__) || defined(__i386__)

std::uint64_t ReadXcr0() noexcept {
    std::uint32_t low = 0, high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return std::uint64_t{high} << 32 | low;
}

void AppendBytes(std::string& text, std::uint32_t bytes) {
    for (unsigned shift = 0; shift < 32; shift += 8) text += static_cast<char>(bytes >> shift & 0xFF);
}

kestrolumen::detail::CpuRegisters Ask() {
    kestrolumen::detail::CpuRegisters result;
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(0, &eax, &ebx, &ecx, &edx) != 0) {
        for (const unsigned part : {ebx, edx, ecx}) AppendBytes(result.vendor, part);
    }
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0) {
        result.ecx1 = ecx;
        result.edx1 = edx;
    }
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0) result.ebx7 = ebx;
    if (HasBit(result.ecx1, osxsave)) result.xcr0 = ReadXcr0();
    return result;
}

#else

kestrolumen::detail::CpuRegisters Ask() {
    return {};
}

#endif

struct Cpu {
    std::string vendor;
    kestrolumen::detail::CpuFeatures features;

    explicit Cpu(const kestrolumen::detail::CpuRegisters& registers)
        : vendor(registers.vendor), features(kestrolumen::detail::FeaturesOf(registers)) {}
};

const Cpu& KnownCpu() {
    static const Cpu cpu(Ask());
    return cpu;
}

}  // namespace

kestrolumen::detail::CpuFeatures kestrolumen::detail::FeaturesOf(const CpuRegisters& registers) noexcept {
    constexpr unsigned sse2 = 26, fma = 12, avx = 28, avx2 = 5;
    constexpr std::uint64_t wideRegisters = 0b110;  // of XCR0: SSE and AVX state
    CpuFeatures features{};
    features.sse2 = HasBit(registers.edx1, sse2);
    features.avx = registers.vendor == "GenuineIntel" && HasBit(registers.ecx1, osxsave) &&
                   HasBit(registers.ecx1, avx) && (registers.xcr0 & wideRegisters) != 0;
    features.avx2 = features.avx && HasBit(registers.ebx7, avx2);
    features.fma = features.avx && HasBit(registers.ecx1, fma);
    return features;
}

std::string CpuVendor() {
    return KnownCpu().vendor;
}

bool CpuHasSse2() noexcept {
    return KnownCpu().features.sse2;
}

bool CpuHasAvx() noexcept {
    return KnownCpu().features.avx;
}

bool CpuHasAvx2() noexcept {
    return KnownCpu().features.avx2;
}

bool CpuHasFma() noexcept {
    return KnownCpu().features.fma;
}
