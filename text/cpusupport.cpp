#include "text/detail/cpusupport.h"

#include "text/detail/compiler.h"

namespace kestrolumen::detail {

const CpuSupport& KnownCpuSupport() noexcept {
    static const CpuSupport support = [] {
        const auto has = [](std::uint32_t bits, unsigned bit) { return (bits >> bit & 1) != 0; };
        constexpr std::uint64_t registersOf32Bytes = 0b110;
        const Cpuid basic = AskCpu(1);
        const Cpuid extended = AskCpu(7);
        CpuSupport result;
        result.ssse3 = has(basic.ecx, 9);
        result.popcnt = has(basic.ecx, 23);
        result.pclmul = has(basic.ecx, 1) && has(basic.ecx, 19);
        result.avx2 = has(extended.ebx, 5) && (SavedRegisters() & registersOf32Bytes) == registersOf32Bytes;
        result.vpclmulqdq = result.avx2 && has(extended.ecx, 10);
        return result;
    }();
    return support;
}

}  // namespace kestrolumen::detail
