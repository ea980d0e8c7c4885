#include "compression/SplitWalk.h"

#include <cstdint>
#include <cstring>

#define COMPRESSION_INLINE [[gnu::always_inline]] inline
#pragma GCC diagnostic ignored "-Wpsabi" // vectors are passed between inlined functions only

namespace compression {
namespace {

typedef double Doubles __attribute__((vector_size(32)));
typedef std::int64_t Longs __attribute__((vector_size(32)));

constexpr std::size_t lanes = 4;
constexpr double near_best = 1 - 1e-10;

template <typename Value>
struct SplitSums {
    Value x{}, y{}, z{}; // sum of f t Q
    Value t1{};          // sum of f t
    Value v{};           // sum of f t t, less t1 squared
};

// The colour at a place goes from group t to t + 1, where `constant` is 2 t + 1.
template <typename Value>
COMPRESSION_INLINE void advance(SplitSums<Value>& sums, const SplitLine& line, std::size_t place, double constant) {
    const double f = line.frequency[place];
    sums.v += (constant - 2 * sums.t1 - f) * f;
    sums.t1 += f;
    sums.x += line.scaled[0][place];
    sums.y += line.scaled[1][place];
    sums.z += line.scaled[2][place];
}

// The heads of the chains: group 1 from place i on, by i - 1.
struct Heads {
    alignas(32) std::array<std::array<double, 16>, 5> sums{};
};

Heads make_heads(const SplitLine& line) {
    Heads heads;
    SplitSums<double> sums;
    for (std::size_t i = line.count; i > 0; --i) {
        heads.sums[0][i - 1] = sums.x;
        heads.sums[1][i - 1] = sums.y;
        heads.sums[2][i - 1] = sums.z;
        heads.sums[3][i - 1] = sums.t1;
        heads.sums[4][i - 1] = sums.v;
        advance(sums, line, i - 1, 1);
    }
    return heads;
}

COMPRESSION_INLINE Doubles load(const double* from) {
    Doubles v;
    std::memcpy(&v, from, sizeof(v));
    return v;
}

// All scores of a walk, four i at a time. 16 colours have 136 + 78 + 36 + 10 such groups.
struct Scores {
    struct Group {
        std::uint8_t first, j, k; // lane n stands for i = first + n + 1
    };
    static constexpr std::size_t chunk = 8;
    static constexpr std::size_t limit = 264;

    std::array<Doubles, limit> numerators;
    std::array<Doubles, limit> denominators;
    std::array<Group, limit> groups;
    std::size_t count = 0;
    Doubles best_numerator{};
    Doubles best_denominator = Doubles{} + 1.0;

    COMPRESSION_INLINE void add(const Group& group, Doubles numerator, Doubles denominator) {
        groups[count] = group;
        numerators[count] = numerator;
        denominators[count++] = denominator;
        const Longs better = numerator * best_denominator > best_numerator * denominator;
        best_numerator = better ? numerator : best_numerator;
        best_denominator = better ? denominator : best_denominator;
    }
    // Fills the last chunk with what is never near the best.
    COMPRESSION_INLINE void pad() {
        for (std::size_t group = count; group % chunk != 0; ++group) {
            numerators[group] = Doubles{} - 1.0;
            denominators[group] = Doubles{} + 1.0;
        }
    }
};

COMPRESSION_INLINE std::size_t last_k(const SplitLine& line, std::size_t j) {
    return line.step_limit == 3 ? j : line.count;
}

COMPRESSION_INLINE void score_all(const SplitLine& line, const Heads& heads, Scores& scores) {
    const std::size_t count = line.count;
    const Longs lane_number{0, 1, 2, 3};
    for (std::size_t first = 0; first < count; first += lanes) {
        SplitSums<Doubles> at_j{load(&heads.sums[0][first]), load(&heads.sums[1][first]), load(&heads.sums[2][first]),
                                load(&heads.sums[3][first]), load(&heads.sums[4][first])};
        for (std::size_t j = count;; --j) {
            // i goes no further than j.
            const Longs legal = lane_number + static_cast<std::int64_t>(first) < static_cast<std::int64_t>(j);
            SplitSums<Doubles> at_k = at_j;
            for (std::size_t k = count;; --k) {
                const Doubles squared = at_k.x * at_k.x + at_k.y * at_k.y + at_k.z * at_k.z;
                scores.add(
                    {static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(j), static_cast<std::uint8_t>(k)},
                    legal ? squared : Doubles{}, legal ? at_k.v : Doubles{} + 1.0);
                if (k == last_k(line, j))
                    break;
                advance(at_k, line, k - 1, 5);
            }
            if (j == first + 1)
                break;
            advance(at_j, line, j - 1, 3);
        }
    }
}

COMPRESSION_INLINE double best_score(const Scores& scores) {
    double numerator = 0;
    double denominator = 1;
    for (std::size_t lane = 0; lane < lanes; ++lane)
        if (scores.best_numerator[lane] * denominator > numerator * scores.best_denominator[lane]) {
            numerator = scores.best_numerator[lane];
            denominator = scores.best_denominator[lane];
        }
    return numerator / denominator;
}

// Lists the splits of one chunk of groups that reach the limit.
bool collect(const Scores& scores, std::size_t chunk, double limit, NearBestSplits& splits) {
    for (std::size_t n = chunk; n < chunk + Scores::chunk && n < scores.count; ++n) {
        const Scores::Group& group = scores.groups[n];
        for (std::size_t lane = 0; lane < lanes && group.first + lane < group.j; ++lane) {
            const double numerator = scores.numerators[n][lane];
            const double denominator = scores.denominators[n][lane];
            if (numerator < limit * denominator)
                continue;
            if (splits.count == splits.splits.size())
                return false;
            splits.splits[splits.count++] = {{group.first + lane + 1, group.j, group.k}, numerator, denominator};
        }
    }
    return true;
}

COMPRESSION_INLINE bool walk_body(const SplitLine& line, NearBestSplits& splits) {
    Scores scores;
    score_all(line, make_heads(line), scores);
    scores.pad();
    const double limit = best_score(scores) * near_best;
    splits.count = 0;
    for (std::size_t chunk = 0; chunk < scores.count; chunk += Scores::chunk) {
        Longs near{};
        for (std::size_t n = chunk; n < chunk + Scores::chunk; ++n)
            near |= scores.numerators[n] >= limit * scores.denominators[n];
        if ((near[0] | near[1] | near[2] | near[3]) != 0 && !collect(scores, chunk, limit, splits))
            return false;
    }
    return true;
}

bool walk_plain(const SplitLine& line, NearBestSplits& splits) {
    return walk_body(line, splits);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) bool walk_avx2(const SplitLine& line, NearBestSplits& splits) {
    return walk_body(line, splits);
}
#endif

constexpr std::array kernels {
    SplitWalkKernel{SimdLevel::scalar, walk_plain},
#if defined(__x86_64__)
        SplitWalkKernel{SimdLevel::avx2, walk_avx2},
#endif
};

} // namespace

std::span<const SplitWalkKernel> split_walk_kernels() {
    return {kernels.data(), best_simd_level() == SimdLevel::avx2 ? kernels.size() : 1};
}

} // namespace compression
