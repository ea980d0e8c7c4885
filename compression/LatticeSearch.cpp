#include "compression/LatticeSearch.h"

#include "compression/ColourLattice.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace compression {
namespace {

struct Candidates {
    std::array<int, 2> shifted; // stored values at the top of a byte
    std::array<int, 2> bytes;   // expanded
};

// The stored values whose expansions enclose the end.
Candidates neighbours(double end, double weight, int bits) {
    const double v = weight == 0.0 ? 0.0 : end / weight * 255.0;
    const int step = 1 << (8 - bits);
    int q = static_cast<int>(std::min(std::max(std::floor(v), 0.0), 255.0)) & ~(step - 1);
    if (q + (q >> bits) > v && q - step >= 0)
        q -= step;
    const int next = q + step >= 256 ? q : q + step;
    return {{q, next}, {q + (q >> bits), next + (next >> bits)}};
}

std::array<int, 4> mix_levels(int a, int b, int levels) {
    if (levels == 3)
        return {a, b, (a + b) / 2, 0};
    return {a, b, (2 * a + b + 1) / 3, (a + 2 * b + 1) / 3};
}

// Two candidates for each end make four combinations of a channel: end 0's in bit 1, end 1's in bit 0.
using ChannelCandidates = std::array<Candidates, 2>;

// A level's terms for every colour.
struct TermRow {
    std::array<double, 16> of_colour;
};

TermRow term_row(const DistinctColours& colours, std::size_t c, int level, double weight) {
    TermRow row;
    const double value = level * weight / 255.0;
    for (std::size_t k = 0; k < colours.count; ++k) {
        const double difference = colours.weighted[k][c] - value;
        row.of_colour[k] = colours.frequency[k] * (difference * difference);
    }
    return row;
}

// Gives `take` the row of each combination and level of a channel.
template <typename Take>
void each_term_row(const DistinctColours& colours, std::size_t c, const ChannelCandidates& candidates, int levels,
                   double weight, const Take& take) {
    for (std::size_t one = 0; one < 2; ++one) {
        const TermRow of_end0 = term_row(colours, c, candidates[0].bytes[one], weight);
        const TermRow of_end1 = term_row(colours, c, candidates[1].bytes[one], weight);
        for (std::size_t other = 0; other < 2; ++other) {
            take(one * 2 + other, 0, of_end0);
            take(other * 2 + one, 1, of_end1);
        }
    }
    for (std::size_t i = 0; i < 4; ++i) {
        const auto mixed = mix_levels(candidates[0].bytes[i >> 1], candidates[1].bytes[i & 1], levels);
        for (std::size_t level = 2; level < static_cast<std::size_t>(levels); ++level)
            take(i, level, term_row(colours, c, mixed[level], weight));
    }
}

LatticeTerms make_terms(const DistinctColours& colours, const Vector3& weights, int levels,
                        const std::array<ChannelCandidates, 3>& candidates) {
    LatticeTerms terms;
    terms.colour_count = colours.count;
    terms.levels = static_cast<std::size_t>(levels);
    each_term_row(colours, 0, candidates[0], levels, weights[0],
                  [&](std::size_t combination, std::size_t level, const TermRow& row) {
                      for (std::size_t k = 0; k < colours.count; ++k)
                          terms.red[level][k][combination] = row.of_colour[k];
                  });
    for (std::size_t c = 1; c < 3; ++c)
        each_term_row(colours, c, candidates[c], levels, weights[c],
                      [&](std::size_t combination, std::size_t level, const TermRow& row) {
                          terms.others[c - 1][combination][level] = row.of_colour;
                      });
    return terms;
}

double level_error(const LatticeTerms& terms, std::size_t winner, std::size_t level, std::size_t k) {
    return terms.red[level][k][winner & 3] + terms.others[0][winner >> 2 & 3][level][k] +
           terms.others[1][winner >> 4][level][k];
}

// The combination of the candidates next to the ends.
std::size_t nearest_combination(const ChannelCandidates& candidates, double end0, double end1, double weight) {
    const auto second = [&](const Candidates& end, double value) {
        const double v = weight == 0.0 ? 0.0 : value / weight * 255.0;
        return std::size_t{std::abs(v - end.bytes[1]) < std::abs(v - end.bytes[0])};
    };
    return second(candidates[0], end0) * 2 + second(candidates[1], end1);
}

// The walk, compiled once per instruction set: a lane per combination of red. Four lanes become two registers of two
// without AVX2.
typedef double Doubles __attribute__((vector_size(32)));
typedef std::int64_t Longs __attribute__((vector_size(32)));
#define COMPRESSION_INLINE [[gnu::always_inline]] inline
#pragma GCC diagnostic ignored "-Wpsabi" // vectors are passed between inlined functions only

COMPRESSION_INLINE Doubles smaller(Doubles a, Doubles b) {
    const Doubles difference = a - b;
    Longs bits;
    std::memcpy(&bits, &difference, sizeof(bits));
    bits &= INT64_MAX;
    Doubles absolute;
    std::memcpy(&absolute, &bits, sizeof(bits));
    return (a + b - absolute) * 0.5;
}

struct RedGreen {
    std::array<std::array<Doubles, 16>, 4> by_level;
};

COMPRESSION_INLINE void add_green(const LatticeTerms& terms, std::size_t green, RedGreen& sums) {
    for (std::size_t level = 0; level < terms.levels; ++level)
        for (std::size_t k = 0; k < terms.colour_count; ++k) {
            Doubles red;
            std::memcpy(&red, &terms.red[level][k], sizeof(red));
            sums.by_level[level][k] = red + terms.others[0][green][level][k];
        }
}

// Offers the four pairs of one green and one blue. Terms are never negative, so partial sums only grow.
COMPRESSION_INLINE void offer_reds(const LatticeTerms& terms, const RedGreen& sums, std::size_t green, std::size_t blue,
                                   LatticeWinner& best) {
    const auto& of_blue = terms.others[1][blue];
    Doubles error{};
    for (std::size_t k = 0; k < terms.colour_count; ++k) {
        Doubles least = smaller(sums.by_level[0][k] + of_blue[0][k], sums.by_level[1][k] + of_blue[1][k]);
        least = smaller(least, sums.by_level[2][k] + of_blue[2][k]);
        if (terms.levels == 4)
            least = smaller(least, sums.by_level[3][k] + of_blue[3][k]);
        error += least;
        const Longs left = error <= best.error;
        if (k % 4 == 3 && (left[0] | left[1] | left[2] | left[3]) == 0)
            return;
    }
    for (std::size_t red = 0; red < 4; ++red) {
        const std::size_t combination = red | green << 2 | blue << 4;
        if (error[red] < best.error || (error[red] == best.error && combination < best.combination))
            best = {error[red], combination};
    }
}

COMPRESSION_INLINE LatticeWinner walk_body(const LatticeTerms& terms, std::size_t guess) {
    LatticeWinner best{std::numeric_limits<double>::infinity(), 0};
    // From the guess on, so that most others stop early. Equal errors are decided by the place in the plain order.
    for (std::size_t g = 0; g < 4; ++g) {
        const std::size_t green = g ^ (guess >> 2 & 3);
        RedGreen sums;
        add_green(terms, green, sums);
        for (std::size_t b = 0; b < 4; ++b)
            offer_reds(terms, sums, green, b ^ (guess >> 4), best);
    }
    return best;
}

LatticeWinner walk_plain(const LatticeTerms& terms, std::size_t guess) {
    return walk_body(terms, guess);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) LatticeWinner walk_avx2(const LatticeTerms& terms, std::size_t guess) {
    return walk_body(terms, guess);
}
#endif

constexpr std::array kernels {
    LatticeKernel{SimdLevel::scalar, walk_plain},
#if defined(__x86_64__)
        LatticeKernel{SimdLevel::avx2, walk_avx2},
#endif
};

} // namespace

std::span<const LatticeKernel> lattice_kernels() {
    return {kernels.data(), best_simd_level() == SimdLevel::avx2 ? kernels.size() : 1};
}

LatticeResult lattice_search(const DistinctColours& colours, const Vector3& weights, int levels, const Vector3& end0,
                             const Vector3& end1) {
    return lattice_search(colours, weights, levels, end0, end1, lattice_kernels().back());
}

LatticeResult lattice_search(const DistinctColours& colours, const Vector3& weights, int levels, const Vector3& end0,
                             const Vector3& end1, const LatticeKernel& kernel) {
    std::array<ChannelCandidates, 3> candidates{};
    std::size_t guess = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        candidates[c] = {neighbours(end0[c], weights[c], channel_bits[c]),
                         neighbours(end1[c], weights[c], channel_bits[c])};
        guess |= nearest_combination(candidates[c], end0[c], end1[c], weights[c]) << (2 * c);
    }
    const LatticeTerms terms = make_terms(colours, weights, levels, candidates);
    const LatticeWinner winner = kernel.walk(terms, guess);

    LatticeResult result;
    result.error = winner.error;
    result.levels = levels;
    for (std::size_t c = 0; c < 3; ++c) {
        const std::size_t combination = winner.combination >> (2 * c) & 3;
        result.end0[c] = candidates[c][0].shifted[combination >> 1] >> (8 - channel_bits[c]);
        result.end1[c] = candidates[c][1].shifted[combination & 1] >> (8 - channel_bits[c]);
    }
    for (std::size_t k = 0; k < colours.count; ++k)
        for (std::size_t level = 1; level < terms.levels; ++level)
            if (level_error(terms, winner.combination, level, k) <
                level_error(terms, winner.combination, result.indices[k], k))
                result.indices[k] = static_cast<std::uint8_t>(level);
    return result;
}

} // namespace compression
