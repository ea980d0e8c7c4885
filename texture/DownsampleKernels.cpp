#include "texture/DownsampleKernels.h"

#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace mosaicer {
namespace {

/// One lane, the form that defines the results.
struct ScalarLanes {
    static constexpr std::size_t lanes = 1;
    using Doubles = double;
    using Floats = float;
    static Floats to_floats(Doubles value) { return static_cast<float>(value); }
    static Doubles to_doubles(Floats value) { return static_cast<double>(value); }
};

/// Two lanes in the compiler's own vectors: SSE2 on x86-64, which every such processor has.
struct PairLanes {
    static constexpr std::size_t lanes = 2;
    using Doubles = double __attribute__((vector_size(16)));
    using Floats = float __attribute__((vector_size(8)));
    static Floats to_floats(Doubles value) { return __builtin_convertvector(value, Floats); }
    static Doubles to_doubles(Floats value) { return __builtin_convertvector(value, Doubles); }
};

template <class Lanes>
struct Kernels {
    using Doubles = typename Lanes::Doubles;
    using Floats = typename Lanes::Floats;

    static Doubles load(const double* from) {
        Doubles value;
        std::memcpy(&value, from, sizeof(value));
        return value;
    }
    static void store(double* to, Doubles value) { std::memcpy(to, &value, sizeof(value)); }
    static Doubles load_floats(const float* from) {
        Floats value;
        std::memcpy(&value, from, sizeof(value));
        return Lanes::to_doubles(value);
    }
    static void store_floats(float* to, Doubles value) {
        const Floats floats = Lanes::to_floats(value);
        std::memcpy(to, &floats, sizeof(floats));
    }

    /// Sums of A outputs over R vectors of rows.
    template <std::size_t A, std::size_t R>
    static void sweep_rows(const RowSweep& sweep) {
        Doubles sums[A][R];
#pragma GCC unroll 16
        for (std::size_t a = 0; a < A; ++a)
#pragma GCC unroll 16
            for (std::size_t r = 0; r < R; ++r)
                sums[a][r] = load(sweep.sums + a * sweep.group_rows + r * Lanes::lanes);
        const std::int32_t* position = sweep.positions;
        float* output = sweep.outputs;
        for (std::size_t b = 0; b < sweep.blocks; ++b) {
            const double* taps = sweep.taps;
            for (std::size_t p = 0; p < sweep.block; ++p, ++position, taps += sweep.segments) {
                const double* samples = sweep.samples + static_cast<std::size_t>(*position) * sweep.group_rows;
#pragma GCC unroll 16
                for (std::size_t a = 0; a < A; ++a)
#pragma GCC unroll 16
                    for (std::size_t r = 0; r < R; ++r)
                        sums[a][r] += load(samples + r * Lanes::lanes) * taps[A - 1 - a];
            }
            if (!sweep.completes)
                continue;
#pragma GCC unroll 16
            for (std::size_t r = 0; r < R; ++r) {
                store_floats(output + r * Lanes::lanes, sums[0][r]);
#pragma GCC unroll 16
                for (std::size_t a = 1; a < A; ++a)
                    sums[a - 1][r] = sums[a][r];
                sums[A - 1][r] = Doubles{};
            }
            output += sweep.group_rows;
        }
#pragma GCC unroll 16
        for (std::size_t a = 0; a < A; ++a)
#pragma GCC unroll 16
            for (std::size_t r = 0; r < R; ++r)
                store(sweep.sums + a * sweep.group_rows + r * Lanes::lanes, sums[a][r]);
    }

    template <std::size_t C>
    static void sweep_columns_at(const ColumnSweep& sweep, std::size_t column) {
        Doubles sums[C] = {};
        for (std::size_t k = 0; k < sweep.tap_count; ++k) {
            const float* row = sweep.rows + static_cast<std::size_t>(sweep.positions[k]) * sweep.pitch + column;
#pragma GCC unroll 16
            for (std::size_t c = 0; c < C; ++c)
                sums[c] += load_floats(row + c * Lanes::lanes) * sweep.taps[k];
        }
#pragma GCC unroll 16
        for (std::size_t c = 0; c < C; ++c)
            store_floats(sweep.outputs + column + c * Lanes::lanes, sums[c]);
    }

    static void sweep_columns(const ColumnSweep& sweep) {
        std::size_t column = 0;
        for (; column + 8 * Lanes::lanes <= sweep.pitch; column += 8 * Lanes::lanes)
            sweep_columns_at<8>(sweep, column);
        for (; column < sweep.pitch; column += 4)
            sweep_columns_at<4 / Lanes::lanes>(sweep, column);
    }
};

#if defined(__x86_64__)

#define MOSAICER_AVX2 __attribute__((target("avx2")))

struct Avx2Lanes {
    static constexpr std::size_t lanes = 4;
};

template <>
struct Kernels<Avx2Lanes> {
    template <std::size_t A, std::size_t R>
    MOSAICER_AVX2 static void sweep_rows(const RowSweep& sweep) {
        // The shortest blocks end so often that their loop is worth unrolling.
        if (A == max_segments && sweep.block == 2)
            sweep_blocks<A, R>(sweep, std::integral_constant<std::size_t, 2>());
        else if (A == max_segments && sweep.block == 4)
            sweep_blocks<A, R>(sweep, std::integral_constant<std::size_t, 4>());
        else
            sweep_blocks<A, R>(sweep, sweep.block);
    }

    template <std::size_t A, std::size_t R, class Block>
    MOSAICER_AVX2 static void sweep_blocks(const RowSweep sweep, const Block block) {
        __m256d sums[A][R];
#pragma GCC unroll 16
        for (std::size_t a = 0; a < A; ++a)
#pragma GCC unroll 16
            for (std::size_t r = 0; r < R; ++r)
                sums[a][r] = _mm256_loadu_pd(sweep.sums + a * sweep.group_rows + r * 4);
        const std::int32_t* position = sweep.positions;
        float* output = sweep.outputs;
        for (std::size_t b = 0; b < sweep.blocks; ++b) {
            const double* taps = sweep.taps;
            for (std::size_t p = 0; p < block; ++p, ++position, taps += sweep.segments) {
                const double* samples = sweep.samples + static_cast<std::size_t>(*position) * sweep.group_rows;
                __m256d sample[R];
#pragma GCC unroll 16
                for (std::size_t r = 0; r < R; ++r)
                    sample[r] = _mm256_loadu_pd(samples + r * 4);
#pragma GCC unroll 16
                for (std::size_t a = 0; a < A; ++a) {
                    const __m256d tap = _mm256_broadcast_sd(taps + (A - 1 - a));
#pragma GCC unroll 16
                    for (std::size_t r = 0; r < R; ++r)
                        sums[a][r] = _mm256_add_pd(sums[a][r], _mm256_mul_pd(sample[r], tap));
                }
            }
            if (!sweep.completes)
                continue;
#pragma GCC unroll 16
            for (std::size_t r = 0; r < R; ++r) {
                _mm_storeu_ps(output + r * 4, _mm256_cvtpd_ps(sums[0][r]));
#pragma GCC unroll 16
                for (std::size_t a = 1; a < A; ++a)
                    sums[a - 1][r] = sums[a][r];
                sums[A - 1][r] = _mm256_setzero_pd();
            }
            output += sweep.group_rows;
        }
#pragma GCC unroll 16
        for (std::size_t a = 0; a < A; ++a)
#pragma GCC unroll 16
            for (std::size_t r = 0; r < R; ++r)
                _mm256_storeu_pd(sweep.sums + a * sweep.group_rows + r * 4, sums[a][r]);
    }

    template <std::size_t C>
    MOSAICER_AVX2 static void sweep_columns_at(const ColumnSweep& sweep, std::size_t column) {
        __m256d sums[C];
#pragma GCC unroll 16
        for (std::size_t c = 0; c < C; ++c)
            sums[c] = _mm256_setzero_pd();
        for (std::size_t k = 0; k < sweep.tap_count; ++k) {
            const float* row = sweep.rows + static_cast<std::size_t>(sweep.positions[k]) * sweep.pitch + column;
            const __m256d tap = _mm256_broadcast_sd(sweep.taps + k);
#pragma GCC unroll 16
            for (std::size_t c = 0; c < C; ++c)
                sums[c] = _mm256_add_pd(sums[c], _mm256_mul_pd(_mm256_cvtps_pd(_mm_loadu_ps(row + c * 4)), tap));
        }
#pragma GCC unroll 16
        for (std::size_t c = 0; c < C; ++c)
            _mm_storeu_ps(sweep.outputs + column + c * 4, _mm256_cvtpd_ps(sums[c]));
    }

    MOSAICER_AVX2 static void sweep_columns(const ColumnSweep& sweep) {
        std::size_t column = 0;
        for (; column + 32 <= sweep.pitch; column += 32)
            sweep_columns_at<8>(sweep, column);
        for (; column < sweep.pitch; column += 4)
            sweep_columns_at<1>(sweep, column);
    }
};

#endif

template <class Lanes, std::size_t... A>
constexpr DownsampleKernels make_kernels(std::index_sequence<A...>) {
    using K = Kernels<Lanes>;
    return {{{{&K::template sweep_rows<A + 1, 1>, &K::template sweep_rows<A + 1, 2>,
               &K::template sweep_rows<A + 1, 4>}...}},
            Lanes::lanes,
            &K::sweep_columns};
}

template <class Lanes>
constexpr DownsampleKernels kernels = make_kernels<Lanes>(std::make_index_sequence<max_segments>());

} // namespace

const DownsampleKernels& downsample_kernels(compression::SimdLevel level) {
#if defined(__x86_64__)
    if (level == compression::SimdLevel::avx2)
        return kernels<Avx2Lanes>;
#endif
    return level == compression::SimdLevel::scalar ? kernels<ScalarLanes> : kernels<PairLanes>;
}

} // namespace mosaicer
