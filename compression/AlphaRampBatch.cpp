#include "compression/AlphaRampBatch.h"

#include "compression/AlphaRampMoves.h"

#include <cstdint>
#include <cstring>
#include <limits>

// Bins by the ramp's thresholds and fits the ramp to the bins, in turn, until the bins stay and no move of one sample
// improves them. Four fits go through the same rounds, and each lane has the operations and the order of sums of a fit
// of its own; a lane that has come to its end keeps its ramp. What few fits need (ends beyond 0 or 1, a move of a
// sample) is done one by one.
//
// Whether any move is worth trying is asked for all samples at once. With E the present error, a sample x that goes from
// bin b to b + 1 leaves the sums t + 1, tt + 2 b + 1 and tx + x, so it can help only if
//   (tx + x)(tx + x) + E v > 0      v = tt + 2 b + 1 - (t + 1)(t + 1) / f
// and likewise downwards. Nearly all fits end here.

#define COMPRESSION_INLINE [[gnu::always_inline]] inline
#pragma GCC diagnostic ignored "-Wpsabi" // vectors are passed between inlined functions only

namespace compression {
namespace {

constexpr int round_limit = 64;

typedef double Doubles __attribute__((vector_size(32)));
typedef std::int64_t Longs __attribute__((vector_size(32)));
typedef std::int32_t Ints __attribute__((vector_size(16)));
typedef float Floats __attribute__((vector_size(16)));

using Values = std::array<Doubles, 16>;

COMPRESSION_INLINE Doubles load(const RampLane& from) {
    Doubles v;
    std::memcpy(&v, from.data(), sizeof(v));
    return v;
}

COMPRESSION_INLINE Doubles load(const std::array<float, ramp_lanes>& from) {
    Floats v;
    std::memcpy(&v, from.data(), sizeof(v));
    return __builtin_convertvector(v, Doubles);
}

COMPRESSION_INLINE void store(Doubles v, RampLane& to) {
    std::memcpy(to.data(), &v, sizeof(v));
}

// 0 where the mask is not set.
COMPRESSION_INLINE Doubles keep(Longs mask, Doubles v) {
    Longs bits;
    std::memcpy(&bits, &v, sizeof(bits));
    bits &= mask;
    std::memcpy(&v, &bits, sizeof(v));
    return v;
}

COMPRESSION_INLINE bool any(Longs mask) {
    return (mask[0] | mask[1] | mask[2] | mask[3]) != 0;
}

COMPRESSION_INLINE Doubles smaller(Doubles a, Doubles b) {
    return b < a ? b : a;
}

COMPRESSION_INLINE Doubles larger(Doubles a, Doubles b) {
    return a < b ? b : a;
}

COMPRESSION_INLINE Doubles magnitude(Doubles v) {
    return keep(Longs{} + std::numeric_limits<std::int64_t>::max(), v);
}

// A mask's -1 counts as one: whole numbers below 2^51 into the low bits of 2^52.
COMPRESSION_INLINE Doubles to_doubles(Longs small) {
    constexpr double two_52 = 4503599627370496.0;
    Doubles v = Doubles{} + two_52;
    Longs bits;
    std::memcpy(&bits, &v, sizeof(bits));
    bits |= small;
    std::memcpy(&v, &bits, sizeof(v));
    return v - two_52;
}

// The whole part of 0 to 255.
COMPRESSION_INLINE Doubles whole(Doubles v) {
    return __builtin_convertvector(__builtin_convertvector(v, Ints), Doubles);
}

COMPRESSION_INLINE Doubles to_byte(Doubles v) {
    return whole(smaller(larger(Doubles{}, v * 255.0 + 0.5), Doubles{} + 255.0));
}

struct Fit4 {
    Values values; // less the mean
    Doubles count;
    Doubles last; // steps - 1
    Doubles mean;
    Doubles end0;
    Doubles end1;
};

struct Sums4 {
    Doubles t, tt, tx, v;
};

COMPRESSION_INLINE Fit4 start(const RampBatch& batch, RampBatchResult& result) {
    Fit4 fit;
    fit.count = load(batch.count);
    fit.last = load(batch.steps) - 1.0;
    Longs zero{};
    Longs one{};
    Doubles sum{};
    Doubles smallest = load(batch.samples[0]);
    Doubles largest = smallest;
    for (std::size_t i = 0; i < 16; ++i) {
        const Doubles sample = load(batch.samples[i]);
        sum += keep(fit.count > static_cast<double>(i), sample);
        zero |= sample == 0.0;
        one |= sample == 1.0;
        smallest = smaller(smallest, sample);
        largest = larger(largest, sample);
    }
    std::memcpy(result.zero.data(), &zero, sizeof(zero));
    std::memcpy(result.one.data(), &one, sizeof(one));
    fit.mean = sum / fit.count;
    for (std::size_t i = 0; i < 16; ++i)
        fit.values[i] = load(batch.samples[i]) - fit.mean;
    fit.end0 = smallest - fit.mean;
    fit.end1 = largest - fit.mean;
    return fit;
}

// The first threshold that a value does not exceed. Of rising thresholds it is the number of those below the value; of
// falling ones the first, the highest, or none.
COMPRESSION_INLINE void find_bins(const Fit4& fit, Values& bins) {
    constexpr double none = std::numeric_limits<double>::infinity();
    const Doubles length = fit.end1 - fit.end0;
    std::array<Doubles, 7> thresholds;
    for (std::size_t j = 0; j < 7; ++j) {
        const Doubles threshold = fit.end0 + (static_cast<double>(j) + 0.5) * length / fit.last;
        const Doubles reached = length < 0.0 && j > 0 ? thresholds[0] : threshold;
        thresholds[j] = fit.last > static_cast<double>(j) ? reached : Doubles{} + none;
    }
    for (std::size_t i = 0; i < 16; ++i) {
        Longs below{};
        for (std::size_t j = 0; j < 7; ++j)
            below -= fit.values[i] > thresholds[j];
        bins[i] = to_doubles(below);
    }
}

COMPRESSION_INLINE Sums4 sum_bins(const Fit4& fit, const Values& bins) {
    Sums4 sums{};
    for (std::size_t i = 0; i < 16; ++i) {
        const Doubles bin = keep(fit.count > static_cast<double>(i), bins[i]);
        sums.t += bin;
        sums.tt += bin * bin;
        sums.tx += bin * fit.values[i];
    }
    sums.v = sums.tt - sums.t * sums.t / fit.count;
    return sums;
}

COMPRESSION_INLINE Longs differing(const Values& a, const Values& b) {
    Longs different{};
    for (std::size_t i = 0; i < 16; ++i)
        different |= a[i] != b[i];
    return different;
}

COMPRESSION_INLINE Longs several_bins(const Values& bins) {
    Longs different{};
    for (std::size_t i = 1; i < 16; ++i)
        different |= bins[i] != bins[0];
    return different;
}

// Gives the live lanes the ramps of the sums; returns the errors.
COMPRESSION_INLINE Doubles fit_ramps(Fit4& fit, const Sums4& sums, Longs live) {
    const Doubles lower = 0.0 - fit.mean;
    const Doubles upper = 1.0 - fit.mean;
    const Doubles mean_t = sums.t / fit.count;
    const Doubles end0 = -mean_t * sums.tx / sums.v;
    const Doubles end1 = (fit.last - mean_t) * sums.tx / sums.v;
    Doubles error = -(sums.tx * sums.tx) / sums.v;
    fit.end0 = live ? end0 : fit.end0;
    fit.end1 = live ? end1 : fit.end1;
    const Longs inside = (end0 >= lower) & (end0 <= upper) & (end1 >= lower) & (end1 <= upper);
    const Longs outside = live & ~inside;
    if (any(outside))
        for (int lane = 0; lane < static_cast<int>(ramp_lanes); ++lane)
            if (outside[lane] != 0) {
                const Ramp ramp = fit_bounded_ramp({fit.count[lane], sums.t[lane], sums.v[lane], sums.tx[lane]},
                                                   fit.last[lane], lower[lane], upper[lane]);
                fit.end0[lane] = ramp.end0;
                fit.end1[lane] = ramp.end1;
                error[lane] = ramp.gain / sums.v[lane];
            }
    return error;
}

// The lanes in which some sample may gain by moving to a neighbouring bin.
COMPRESSION_INLINE Longs movable(const Fit4& fit, const Values& bins, const Sums4& sums, Doubles error) {
    const Doubles limit = error + ramp_move_margin * (1.0 + sums.tx * sums.tx / sums.v);
    const Doubles up = limit * (sums.tt + 1.0 - (sums.t + 1.0) * (sums.t + 1.0) / fit.count);
    const Doubles down = limit * (sums.tt + 1.0 - (sums.t - 1.0) * (sums.t - 1.0) / fit.count);
    Longs found{};
    for (std::size_t i = 0; i < 16; ++i) {
        const Doubles step = 2.0 * limit * bins[i];
        const Doubles higher = sums.tx + fit.values[i];
        const Doubles lower = sums.tx - fit.values[i];
        found |= (higher * higher + (up + step) > 0.0) & (bins[i] < fit.last);
        found |= (lower * lower + (down - step) > 0.0) & (bins[i] > 0.0);
    }
    return found;
}

// Tries the moves of one lane; true if one improved its ramp. Shared by the kernels, so no vector goes in by value.
bool move_in_lane(Fit4& fit, Values& bins, double error, int lane) {
    BinnedRamp binned;
    binned.steps = static_cast<int>(fit.last[lane]) + 1;
    binned.count = static_cast<std::size_t>(fit.count[lane]);
    binned.mean = fit.mean[lane];
    binned.error = error;
    for (std::size_t i = 0; i < binned.count; ++i) {
        binned.values[i] = fit.values[i][lane];
        binned.bins[i] = static_cast<std::uint8_t>(bins[i][lane]);
    }
    if (!move_one_sample(binned))
        return false;
    fit.end0[lane] = binned.ramp.end0;
    fit.end1[lane] = binned.ramp.end1;
    for (std::size_t i = 0; i < 16; ++i)
        bins[i][lane] = binned.bins[i < binned.count ? i : 0];
    return true;
}

COMPRESSION_INLINE void run(Fit4& fit) {
    Values before{};
    Values bins;
    Longs live = Longs{} - 1;
    for (int round = 0; round < round_limit; ++round) {
        find_bins(fit, bins);
        live &= several_bins(bins);
        if (!any(live))
            return;
        const Sums4 sums = sum_bins(fit, bins);
        const Doubles error = fit_ramps(fit, sums, live);
        if (round > 0) {
            const Longs settled = live & ~differing(bins, before);
            const Longs candidates = settled & movable(fit, bins, sums, error);
            live &= ~settled;
            if (any(candidates))
                for (int lane = 0; lane < static_cast<int>(ramp_lanes); ++lane)
                    if (candidates[lane] != 0 && move_in_lane(fit, bins, error[lane], lane))
                        live[lane] = -1;
        }
        before = bins;
    }
}

// The levels of the codes. Those past a ramp of six repeat code 0.
COMPRESSION_INLINE std::array<Doubles, 8> ramp_levels(Doubles last, Doubles alpha0, Doubles alpha1) {
    std::array<Doubles, 8> levels{alpha0, alpha1};
    const Doubles inverse = 1.0 / last;
    const Doubles half = (last - 1.0) / 2.0;
    for (std::size_t i = 2; i < 8; ++i) {
        const auto code = static_cast<double>(i);
        const Doubles mixed = (last + 1.0 - code) * alpha0 + (code - 1.0) * alpha1 + half;
        // The quotient of whole numbers by 7 or 5, rounded down; half a unit keeps clear of rounding.
        levels[i] = code <= last ? whole((mixed + 0.5) * inverse) : alpha0;
    }
    return levels;
}

COMPRESSION_INLINE void measure(const Fit4& fit, const RampBatch& batch, RampBatchResult& result) {
    constexpr double to_whole = 6755399441055744.0; // 1.5 * 2^52: adding it rounds
    const Doubles alpha0 = to_byte(fit.mean + fit.end0);
    const Doubles alpha1 = to_byte(fit.mean + fit.end1);
    const std::array<Doubles, 8> levels = ramp_levels(fit.last, alpha0, alpha1);
    Doubles error{};
    Doubles least_error{};
    Longs codes{};
    for (std::size_t i = 0; i < 16; ++i) {
        const Longs used = fit.count > static_cast<double>(i);
        const Doubles value = load(batch.samples[i]) * 255.0;
        Doubles least = magnitude(value - levels[0]);
        Longs code{};
        for (std::size_t level = 1; level < 8; ++level) {
            const Doubles distance = magnitude(value - levels[level]);
            code = distance < least ? Longs{} + static_cast<std::int64_t>(level) : code;
            least = smaller(least, distance);
        }
        error += keep(used, least * least);
        codes |= (code & used) << static_cast<std::int64_t>(3 * i);
        const Doubles fraction = value - ((value + to_whole) - to_whole);
        least_error += keep(used, fraction * fraction);
    }
    store(alpha0, result.alpha0);
    store(alpha1, result.alpha1);
    store(error, result.error);
    store(least_error, result.least_error);
    std::memcpy(result.codes.data(), &codes, sizeof(codes));
}

COMPRESSION_INLINE void fit_lanes(const RampBatch& batch, RampBatchResult& result) {
    Fit4 fit = start(batch, result);
    run(fit);
    measure(fit, batch, result);
}

void fit_baseline(const RampBatch& batch, RampBatchResult& result) {
    fit_lanes(batch, result);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void fit_avx2(const RampBatch& batch, RampBatchResult& result) {
    fit_lanes(batch, result);
}
#endif

constexpr std::array kernels {
    RampBatchKernel{SimdLevel::scalar, fit_baseline},
#if defined(__x86_64__)
        RampBatchKernel{SimdLevel::avx2, fit_avx2},
#endif
};

} // namespace

std::span<const RampBatchKernel> ramp_batch_kernels() {
    return {kernels.data(), best_simd_level() == SimdLevel::avx2 ? kernels.size() : 1};
}

} // namespace compression
