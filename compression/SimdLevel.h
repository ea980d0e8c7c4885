#pragma once

namespace compression {

/// The instruction sets that kernels are written for, in rising order. Every level gives the same bytes; `scalar` is
/// the one that defines them.
enum class SimdLevel { scalar, sse2, avx2 };

/// The best level that this processor runs. Always `scalar` in a build with MOSAICER_FORCE_SCALAR.
SimdLevel best_simd_level();

} // namespace compression
