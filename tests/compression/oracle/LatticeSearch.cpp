#include "tests/compression/oracle/Searches.h"

#include "compression/ColourLattice.h"

#include <algorithm>
#include <cmath>

namespace compression::oracle {
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

double smaller(double a, double b) {
    return (a + b - std::abs(a - b)) / 2;
}

// terms[channel][combination][level][colour]
using Terms = std::array<std::array<std::array<std::array<double, 16>, 4>, 4>, 3>;

double level_error(const Terms& terms, const std::array<std::size_t, 3>& combination, std::size_t level,
                   std::size_t k) {
    return terms[0][combination[0]][level][k] + terms[1][combination[1]][level][k] + terms[2][combination[2]][level][k];
}

} // namespace

LatticeResult lattice_search(const DistinctColours& colours, const Vector3& weights, int levels, const Vector3& end0,
                             const Vector3& end1) {
    const auto level_count = static_cast<std::size_t>(levels);
    std::array<std::array<Candidates, 2>, 3> candidates{};
    Terms terms{};
    for (std::size_t c = 0; c < 3; ++c) {
        candidates[c] = {neighbours(end0[c], weights[c], channel_bits[c]),
                         neighbours(end1[c], weights[c], channel_bits[c])};
        for (std::size_t i = 0; i < 4; ++i) {
            const auto mixed = mix_levels(candidates[c][0].bytes[i >> 1], candidates[c][1].bytes[i & 1], levels);
            for (std::size_t level = 0; level < level_count; ++level)
                for (std::size_t k = 0; k < colours.count; ++k) {
                    const double difference = colours.weighted[k][c] - mixed[level] * weights[c] / 255.0;
                    terms[c][i][level][k] = colours.frequency[k] * (difference * difference);
                }
        }
    }

    double best = 0;
    std::size_t winner = 64;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::array<std::size_t, 3> combination{i & 3, i >> 2 & 3, i >> 4};
        double error = 0;
        for (std::size_t k = 0; k < colours.count; ++k) {
            double least = level_error(terms, combination, 0, k);
            for (std::size_t level = 1; level < level_count; ++level)
                least = smaller(least, level_error(terms, combination, level, k));
            error += least;
        }
        if (winner == 64 || error < best) {
            best = error;
            winner = i;
        }
    }

    LatticeResult result;
    result.error = best;
    result.levels = levels;
    const std::array<std::size_t, 3> combination{winner & 3, winner >> 2 & 3, winner >> 4};
    for (std::size_t c = 0; c < 3; ++c) {
        result.end0[c] = candidates[c][0].shifted[combination[c] >> 1] >> (8 - channel_bits[c]);
        result.end1[c] = candidates[c][1].shifted[combination[c] & 1] >> (8 - channel_bits[c]);
    }
    for (std::size_t k = 0; k < colours.count; ++k)
        for (std::size_t level = 1; level < level_count; ++level)
            if (level_error(terms, combination, level, k) < level_error(terms, combination, result.indices[k], k))
                result.indices[k] = static_cast<std::uint8_t>(level);
    return result;
}

} // namespace compression::oracle
