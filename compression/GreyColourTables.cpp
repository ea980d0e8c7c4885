#include "compression/GreyColourTables.h"

#include "compression/ColourLattice.h"
#include "compression/CompressionOptions.h"

#include <cstdlib>
#include <tuple>

// A row is the palette entry nearest to its grey under the default weights, over all pairs of ends and all entries.
// Equally near ones are decided by the lower ends (the first end's red, green, blue, then the second's), then by four
// colours before three, then by the lower index. The channels of an entry do not depend on each other, so the best pair
// of each channel makes the best pair of ends.

namespace compression {
namespace {

struct Entry {
    int colour_count;
    int index;
};
constexpr std::array entries{Entry{4, 0}, Entry{4, 1}, Entry{4, 2}, Entry{4, 3}, Entry{3, 2}};

constexpr int mix(const Entry& entry, int p0, int p1) {
    if (entry.index < 2)
        return entry.index == 0 ? p0 : p1;
    if (entry.colour_count == 3)
        return (p0 + p1) / 2;
    return entry.index == 2 ? (2 * p0 + p1) / 3 : (p0 + 2 * p1) / 3;
}

// The lowest pair of stored values that reaches each byte through one entry.
struct Pair {
    bool reached = false;
    std::uint8_t stored0 = 0;
    std::uint8_t stored1 = 0;
};
using PairTable = std::array<Pair, 256>;

PairTable lowest_pairs(const Entry& entry, std::size_t channel) {
    PairTable pairs;
    for (int stored0 = 0; stored0 <= channel_max[channel]; ++stored0)
        for (int stored1 = 0; stored1 <= channel_max[channel]; ++stored1) {
            const int value =
                mix(entry, expand_bits(stored0, channel_bits[channel]), expand_bits(stored1, channel_bits[channel]));
            Pair& pair = pairs[static_cast<std::size_t>(value)];
            if (!pair.reached)
                pair = {true, static_cast<std::uint8_t>(stored0), static_cast<std::uint8_t>(stored1)};
        }
    return pairs;
}

struct Nearest {
    int distance = 256;
    Pair pair;
};

Nearest nearest_pair(const PairTable& pairs, int grey) {
    Nearest nearest;
    for (int value = 0; value < 256; ++value) {
        const Pair& pair = pairs[static_cast<std::size_t>(value)];
        const int distance = std::abs(value - grey);
        if (!pair.reached || distance > nearest.distance)
            continue;
        const bool lower = std::tie(pair.stored0, pair.stored1) < std::tie(nearest.pair.stored0, nearest.pair.stored1);
        if (distance < nearest.distance || lower)
            nearest = {distance, pair};
    }
    return nearest;
}

struct Candidate {
    double error = 0;
    GreyRow row;

    bool operator<(const Candidate& other) const {
        return std::tie(error, row.end0, row.end1) < std::tie(other.error, other.row.end0, other.row.end1);
    }
};

using EntryPairs = std::array<PairTable, 3>;

Candidate nearest_ends(const Entry& entry, const EntryPairs& pairs, int grey) {
    const CompressionOptions defaults;
    Candidate candidate;
    candidate.row.colour_count = static_cast<std::uint8_t>(entry.colour_count);
    candidate.row.index = static_cast<std::uint8_t>(entry.index);
    for (std::size_t c = 0; c < 3; ++c) {
        const Nearest nearest = nearest_pair(pairs[c], grey);
        const double difference = static_cast<double>(defaults.colour_weights[c]) * nearest.distance;
        candidate.error += difference * difference;
        candidate.row.end0[c] = nearest.pair.stored0;
        candidate.row.end1[c] = nearest.pair.stored1;
    }
    return candidate;
}

GreyColourTables build_tables() {
    std::array<EntryPairs, entries.size()> pairs;
    for (std::size_t e = 0; e < entries.size(); ++e)
        for (std::size_t c = 0; c < 3; ++c)
            pairs[e][c] = lowest_pairs(entries[e], c);

    GreyColourTables tables;
    for (int grey = 0; grey < 256; ++grey) {
        Candidate free = nearest_ends(entries[0], pairs[0], grey);
        Candidate four = free;
        for (std::size_t e = 1; e < entries.size(); ++e) {
            const Candidate candidate = nearest_ends(entries[e], pairs[e], grey);
            if (candidate < free)
                free = candidate;
            if (entries[e].colour_count == 4 && candidate < four)
                four = candidate;
        }
        tables.free[static_cast<std::size_t>(grey)] = free.row;
        tables.four[static_cast<std::size_t>(grey)] = four.row;
    }
    return tables;
}

} // namespace

const GreyColourTables& GreyColourTables::instance() {
    static const GreyColourTables tables = build_tables();
    return tables;
}

} // namespace compression
