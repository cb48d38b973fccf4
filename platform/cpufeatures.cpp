#include "platform/cpufeatures.h"

#include "text/detail/compiler.h"

namespace {

constexpr bool HasBit(std::uint64_t bits, unsigned bit) noexcept {
    return (bits >> bit & 1) != 0;
}

constexpr unsigned osxsave = 27;  // in ECX of leaf 1: XGETBV may be used

void AppendBytes(std::string& text, std::uint32_t bytes) {
    for (unsigned shift = 0; shift < 32; shift += 8) text += static_cast<char>(bytes >> shift & 0xFF);
}

kestrolumen::detail::CpuRegisters Ask() {
    using kestrolumen::detail::AskCpu;
    kestrolumen::detail::CpuRegisters result;
    const kestrolumen::detail::Cpuid vendor = AskCpu(0);
    if (vendor.eax != 0) {
        for (const std::uint32_t part : {vendor.ebx, vendor.edx, vendor.ecx})
            AppendBytes(result.vendor, part);
    }
    result.ecx1 = AskCpu(1).ecx;
    result.edx1 = AskCpu(1).edx;
    result.ebx7 = AskCpu(7).ebx;
    result.xcr0 = kestrolumen::detail::SavedRegisters();
    return result;
}

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
