#include "compression/PaletteBounds.h"

#include <cmath>
#include <cstring>

namespace compression {

DistanceTables::DistanceTables(const BlockContext& block)
    : pixel_count(static_cast<std::size_t>(block.count)), offers_black(block.format == 0) {
    // Pixels far from the mean come first: they soonest tell that a palette is out of reach.
    std::array<double, 3> mean{};
    for (std::size_t c = 0; c < 3; ++c) {
        weights[c] = static_cast<float>(block.weights[c]);
        for (std::size_t i = 0; i < pixel_count; ++i)
            mean[c] += block.colours[i][c] / static_cast<double>(pixel_count);
    }
    std::array<double, 16> far{};
    std::array<std::uint8_t, 16> order{};
    for (std::size_t i = 0; i < pixel_count; ++i) {
        for (std::size_t c = 0; c < 3; ++c)
            far[i] += std::abs(block.weights[c] * (block.colours[i][c] - mean[c]));
        std::size_t place = i;
        for (; place > 0 && far[order[place - 1]] < far[i]; --place)
            order[place] = order[place - 1];
        order[place] = static_cast<std::uint8_t>(i);
    }
    for (std::size_t c = 0; c < 3; ++c)
        for (std::size_t i = 0; i < pixel_count; ++i)
            bytes[c][i] = static_cast<float>(block.colours[order[i]][c] * 255.0);
}

// The bodies below are compiled once per instruction set; eight lanes become two registers of four without AVX2.
#define COMPRESSION_INLINE [[gnu::always_inline]] inline

namespace {

constexpr std::size_t pair_lanes = 8;

typedef float Lanes __attribute__((vector_size(32)));
typedef float HalfLanes __attribute__((vector_size(16)));

COMPRESSION_INLINE void load(const float* from, Lanes& to) {
    std::memcpy(&to, from, sizeof(Lanes));
}

COMPRESSION_INLINE float least(float a, float b) {
    return a < b ? a : b;
}

COMPRESSION_INLINE float sum_of(const Lanes& v) {
    HalfLanes low;
    HalfLanes high;
    std::memcpy(&low, &v, sizeof(low));
    std::memcpy(&high, reinterpret_cast<const char*>(&v) + sizeof(low), sizeof(high));
    const HalfLanes sum = low + high;
    return (sum[0] + sum[2]) + (sum[1] + sum[3]);
}

// Squared distance of `x` to the interval `low`..`high`.
COMPRESSION_INLINE float box_distance(float x, float low, float high, float weight) {
    float beyond = low - x > x - high ? low - x : x - high;
    beyond = beyond > 0.0f ? beyond : 0.0f;
    return weight * beyond * (weight * beyond);
}

COMPRESSION_INLINE void fill_body(DistanceTables& tables) {
    for (std::size_t c = 0; c < 3; ++c) {
        const float weight = tables.weights[c];
        PixelRow mask{};
        for (std::size_t i = 0; i < 16; ++i)
            mask[i] = i < tables.pixel_count ? weight : 0.0f;
        for (std::size_t byte = 0; byte < 256; ++byte) {
            PixelRow& row = tables.squared[c][byte];
            for (std::size_t i = 0; i < 16; ++i) {
                const float difference = mask[i] * (tables.bytes[c][i] - static_cast<float>(byte));
                row[i] = difference * difference;
            }
        }
    }
    for (std::size_t i = 0; i < 16; ++i)
        tables.to_black[i] = tables.squared[0][0][i] + tables.squared[1][0][i] + tables.squared[2][0][i];
}

// A third of a whole number, cut. The half keeps the product away from whole numbers.
COMPRESSION_INLINE float cut_third(int sum) {
    return static_cast<float>(static_cast<int>((static_cast<float>(sum) + 0.5f) * (1.0f / 3.0f)));
}

// The intervals of an entry between the ends i and j on one channel, by lane of j.
struct Mix {
    alignas(32) std::array<float, pair_lanes> low;
    alignas(32) std::array<float, pair_lanes> high;
};

// The entries at a third, at two thirds and at half of the way, by channel.
struct Mixes {
    std::array<Mix, 3> third;
    std::array<Mix, 3> two_thirds;
    std::array<Mix, 3> half;
};

COMPRESSION_INLINE void mix_ends(const WalkEnds& ends, std::size_t i, std::size_t first, Mixes& mixes) {
    for (std::size_t c = 0; c < 3; ++c) {
        const int low0 = ends.low[c][i];
        const int high0 = ends.high[c][i];
        for (std::size_t lane = 0; lane < pair_lanes; ++lane) {
            const int low1 = ends.low[c][first + lane];
            const int high1 = ends.high[c][first + lane];
            mixes.third[c].low[lane] = cut_third(2 * low0 + low1);
            mixes.third[c].high[lane] = cut_third(2 * high0 + high1);
            mixes.two_thirds[c].low[lane] = cut_third(low0 + 2 * low1);
            mixes.two_thirds[c].high[lane] = cut_third(high0 + 2 * high1);
            mixes.half[c].low[lane] = static_cast<float>((low0 + low1) >> 1);
            mixes.half[c].high[lane] = static_cast<float>((high0 + high1) >> 1);
        }
    }
}

// Eight pairs (i, j), until all of them are above the limit.
COMPRESSION_INLINE void bound_eight(const DistanceTables& tables, const WalkEnds& ends, std::size_t i,
                                    std::size_t first, float limit, PairBounds& bounds) {
    Mixes mixes;
    mix_ends(ends, i, first, mixes);
    alignas(32) std::array<float, pair_lanes> three{};
    alignas(32) std::array<float, pair_lanes> four{};
    const std::array<float, 3> w = tables.weights;
    for (std::size_t pixel = 0; pixel < tables.pixel_count; ++pixel) {
        const float x0 = tables.bytes[0][pixel];
        const float x1 = tables.bytes[1][pixel];
        const float x2 = tables.bytes[2][pixel];
        const float to_end0 = ends.distance[pixel][i];
        const float to_fixed = tables.offers_black ? least(to_end0, tables.to_black[pixel]) : to_end0;
        const float* to_end1 = &ends.distance[pixel][first];
        const auto to_mix = [&](const std::array<Mix, 3>& mix, std::size_t lane) __attribute__((always_inline)) {
            return box_distance(x0, mix[0].low[lane], mix[0].high[lane], w[0]) +
                   box_distance(x1, mix[1].low[lane], mix[1].high[lane], w[1]) +
                   box_distance(x2, mix[2].low[lane], mix[2].high[lane], w[2]);
        };
        for (std::size_t lane = 0; lane < pair_lanes; ++lane) {
            four[lane] +=
                least(least(to_end0, to_end1[lane]), least(to_mix(mixes.third, lane), to_mix(mixes.two_thirds, lane)));
            three[lane] += least(least(to_fixed, to_end1[lane]), to_mix(mixes.half, lane));
        }
        if (pixel % 4 == 3) {
            int left = 0;
            for (std::size_t lane = 0; lane < pair_lanes; ++lane)
                left |= static_cast<int>(least(three[lane], four[lane]) <= limit);
            if (left == 0)
                break;
        }
    }
    std::memcpy(&bounds.three[first], three.data(), sizeof(three));
    std::memcpy(&bounds.four[first], four.data(), sizeof(four));
}

COMPRESSION_INLINE void bound_pairs_body(const DistanceTables& tables, const WalkEnds& ends, int i, float limit,
                                         PairBounds& bounds) {
    const auto end0 = static_cast<std::size_t>(i);
    for (std::size_t first = (end0 + 1) / pair_lanes * pair_lanes; first < static_cast<std::size_t>(ends.count);
         first += pair_lanes)
        bound_eight(tables, ends, end0, first, limit, bounds);
}

COMPRESSION_INLINE void add_boxes_body(const DistanceTables& tables, std::size_t channel, const EntryBytes& low,
                                       const EntryBytes& high, EntryRows& rows) {
    for (std::size_t entry = 0; entry < 4; ++entry)
        for (std::size_t i = 0; i < 16; ++i)
            rows[entry][i] += i < tables.pixel_count
                                  ? box_distance(tables.bytes[channel][i], static_cast<float>(low[entry]),
                                                 static_cast<float>(high[entry]), tables.weights[channel])
                                  : 0.0f;
}

COMPRESSION_INLINE void sum_least_body(const DistanceTables& tables, std::size_t channel, const EntryRows& rows,
                                       std::span<const EntryBytes> choices, float* sums) {
    std::array<Lanes, 8> base;
    for (std::size_t entry = 0; entry < 4; ++entry)
        for (std::size_t half = 0; half < 2; ++half)
            load(&rows[entry][8 * half], base[entry * 2 + half]);
    for (const EntryBytes& bytes : choices) {
        Lanes total{};
        for (std::size_t half = 0; half < 2; ++half) {
            Lanes nearest;
            for (std::size_t entry = 0; entry < 4; ++entry) {
                Lanes distance;
                load(&tables.squared[channel][static_cast<std::size_t>(bytes[entry])][8 * half], distance);
                distance += base[entry * 2 + half];
                nearest = entry == 0 ? distance : (distance < nearest ? distance : nearest);
            }
            total += nearest;
        }
        *sums++ = sum_of(total);
    }
}

// NOLINTBEGIN(bugprone-macro-parentheses): an attribute stands in none
#define COMPRESSION_PALETTE_BOUNDS(name, target_attribute)                                                           \
    target_attribute void fill_##name(DistanceTables& tables) {                                                      \
        fill_body(tables);                                                                                           \
    }                                                                                                                \
    target_attribute void bound_pairs_##name(const DistanceTables& tables, const WalkEnds& ends, int i, float limit, \
                                             PairBounds& bounds) {                                                   \
        bound_pairs_body(tables, ends, i, limit, bounds);                                                            \
    }                                                                                                                \
    target_attribute void add_boxes_##name(const DistanceTables& tables, std::size_t channel, const EntryBytes& low, \
                                           const EntryBytes& high, EntryRows& rows) {                                \
        add_boxes_body(tables, channel, low, high, rows);                                                            \
    }                                                                                                                \
    target_attribute void sum_least_##name(const DistanceTables& tables, std::size_t channel, const EntryRows& rows, \
                                           std::span<const EntryBytes> choices, float* sums) {                       \
        sum_least_body(tables, channel, rows, choices, sums);                                                        \
    }

// NOLINTEND(bugprone-macro-parentheses)

COMPRESSION_PALETTE_BOUNDS(plain, )
#if defined(__x86_64__)
COMPRESSION_PALETTE_BOUNDS(avx2, __attribute__((target("avx2"))))
#endif

constexpr std::array kernels {
    PaletteBoundKernels{SimdLevel::scalar, fill_plain, bound_pairs_plain, add_boxes_plain, sum_least_plain},
#if defined(__x86_64__)
        PaletteBoundKernels{SimdLevel::avx2, fill_avx2, bound_pairs_avx2, add_boxes_avx2, sum_least_avx2},
#endif
};

} // namespace

std::span<const PaletteBoundKernels> palette_bound_kernels() {
    return {kernels.data(), best_simd_level() == SimdLevel::avx2 ? kernels.size() : 1};
}

} // namespace compression
