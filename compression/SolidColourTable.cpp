#include "compression/SolidColourTable.h"

#include "compression/ColourLattice.h"

#include <cstdlib>

namespace compression {

const SolidColourTable& SolidColourTable::instance() {
    static const SolidColourTable table;
    return table;
}

// Pairs run from high to low, so that of pairs equally far apart the higher one stays.
SolidColourTable::SolidColourTable() {
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const int bits = channel_bits[channel];
        const int up = 8 - bits;
        for (int i = channel_max[channel]; i >= 0; --i)
            for (int j = channel_max[channel]; j >= 0; --j) {
                const int a = expand_bits(i, bits);
                const int b = expand_bits(j, bits);
                const std::array<int, 3> reached{a, (a + b) / 2, (a + 2 * b + 1) / 3};
                for (std::size_t mix = 0; mix < 3; ++mix) {
                    Entry& entry = entries_[channel][mix][static_cast<std::size_t>(reached[mix])];
                    const int distance = std::abs(expand_bits(entry.a >> up, bits) - expand_bits(entry.b >> up, bits));
                    if (!entry.valid || distance > std::abs(a - b))
                        entry = {true, static_cast<std::uint8_t>(i << up), static_cast<std::uint8_t>(j << up)};
                }
            }
    }
}

} // namespace compression
