// What each compiler says in words of its own, under names of ours: GCC and Clang, and Visual Studio's. Nowhere
// else does product code tell compilers or processors apart.
//
//   KESTROLUMEN_X86              1 for x86 processors of 32 or 64 bits, else 0
//   KESTROLUMEN_SSE2             1 where every machine that the build is for has SSE2: always in 64 bits, in 32
//                                when the build says so
//   KESTROLUMEN_WIDE_REGISTERS   1 where registers of 32 bytes can be relied on. GCC does not align the stack of
//                                64-bit Windows to them (its bug 54412), so they must never be put there, which
//                                only a build without optimisation would do
//   KESTROLUMEN_ADDRESS_SANITIZER 1 where each use of memory is watched
//   KESTROLUMEN_FOR("ssse3")     in front of a function that runs only where the processor has these instructions
//                                (cpusupport.h). Set for functions and not for files: what a file takes from
//                                headers stays usable on every machine
//   KESTROLUMEN_INLINE           for a function that becomes a part of its caller, and is built for what that is
//   KESTROLUMEN_INLINE_FOR(...)  for one that is both
//
// What is declared here for x86 processors can be called on others too, and says that there is nothing.
#pragma once

#include <cstdint>

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define KESTROLUMEN_X86 1
#else
#define KESTROLUMEN_X86 0
#endif

#if defined(__SSE2__) || defined(_M_X64) || (defined(_M_IX86_FP) && _M_IX86_FP >= 2)
#define KESTROLUMEN_SSE2 1
#else
#define KESTROLUMEN_SSE2 0
#endif

#if defined(__SANITIZE_ADDRESS__)
#define KESTROLUMEN_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTROLUMEN_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef KESTROLUMEN_ADDRESS_SANITIZER
#define KESTROLUMEN_ADDRESS_SANITIZER 0
#endif

#if KESTROLUMEN_X86
#include <immintrin.h>
#endif

#if defined(__GNUC__)

#if KESTROLUMEN_X86
#include <cpuid.h>
#define KESTROLUMEN_FOR(instructions) [[gnu::target(instructions)]]
#define KESTROLUMEN_INLINE_FOR(instructions) [[gnu::target(instructions), gnu::always_inline]] inline
#else
#define KESTROLUMEN_FOR(instructions)
#endif
#define KESTROLUMEN_INLINE [[gnu::always_inline]] inline

#if KESTROLUMEN_X86 && defined(__OPTIMIZE__)
#define KESTROLUMEN_WIDE_REGISTERS 1
#else
#define KESTROLUMEN_WIDE_REGISTERS 0
#endif

#elif defined(_MSC_VER)

#include <intrin.h>
#define KESTROLUMEN_FOR(instructions)
#define KESTROLUMEN_INLINE_FOR(instructions) __forceinline
#define KESTROLUMEN_INLINE __forceinline
#define KESTROLUMEN_WIDE_REGISTERS KESTROLUMEN_X86

#else
#error "text/detail/compiler.h knows GCC, Clang and Visual Studio's compiler"
#endif

namespace kestrolumen::detail {

// The registers after CPUID; all 0 for a leaf that the processor doesn't have.
struct Cpuid {
    std::uint32_t eax = 0;
    std::uint32_t ebx = 0;
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
};

[[nodiscard]] inline Cpuid AskCpu(std::uint32_t leaf, std::uint32_t subleaf = 0) noexcept {
    Cpuid answer;
#if KESTROLUMEN_X86 && defined(__GNUC__)
    static_cast<void>(__get_cpuid_count(leaf, subleaf, &answer.eax, &answer.ebx, &answer.ecx, &answer.edx));
#elif KESTROLUMEN_X86
    int registers[4];
    __cpuid(registers, 0);
    if (static_cast<std::uint32_t>(registers[0]) < leaf) return answer;
    __cpuidex(registers, static_cast<int>(leaf), static_cast<int>(subleaf));
    answer = {static_cast<std::uint32_t>(registers[0]), static_cast<std::uint32_t>(registers[1]),
              static_cast<std::uint32_t>(registers[2]), static_cast<std::uint32_t>(registers[3])};
#else
    static_cast<void>(leaf);
    static_cast<void>(subleaf);
#endif
    return answer;
}

// The states of registers that the system keeps for each thread (XCR0). 0 where it doesn't let it be asked.
[[nodiscard]] inline std::uint64_t SavedRegisters() noexcept {
    constexpr std::uint32_t osxsave = 1U << 27;
    if ((AskCpu(1).ecx & osxsave) == 0) return 0;
#if KESTROLUMEN_X86 && defined(__GNUC__)
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return std::uint64_t{high} << 32 | low;
#elif KESTROLUMEN_X86
    return _xgetbv(0);
#else
    return 0;
#endif
}

}  // namespace kestrolumen::detail
