#include "compression/SimdLevel.h"

namespace compression {

SimdLevel best_simd_level() {
#if !defined(MOSAICER_FORCE_SCALAR) && defined(__x86_64__)
    static const SimdLevel level = __builtin_cpu_supports("avx2") ? SimdLevel::avx2 : SimdLevel::sse2;
    return level;
#else
    return SimdLevel::scalar;
#endif
}

} // namespace compression
