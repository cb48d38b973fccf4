#include "vectors.h"

namespace winapi {

VectorSet BestVectorSet() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    static const bool hasAvx2 =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
    return hasAvx2 ? VectorSet::avx2 : VectorSet::baseline;
#else
    return VectorSet::baseline;
#endif
}

}  // namespace winapi
