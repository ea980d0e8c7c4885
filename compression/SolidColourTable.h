#pragma once

#include <array>
#include <cstdint>

namespace compression {

/// For each byte that a mix of two stored values can reach exactly, the closest such pair.
class SolidColourTable {
public:
    struct Entry {
        bool valid = false;
        std::uint8_t a = 0; ///< first stored value, shifted up to the top of a byte
        std::uint8_t b = 0;
    };

    /// Built at first use, thread-safe, then constant.
    static const SolidColourTable& instance();

    /// Mix 0 reaches a, 1 reaches (a + b) / 2, 2 reaches (a + 2b + 1) / 3, of expanded values.
    const Entry& entry(int channel, int mix, int value) const {
        return entries_[static_cast<std::size_t>(channel)][static_cast<std::size_t>(mix)]
                       [static_cast<std::size_t>(value)];
    }

private:
    SolidColourTable();

    std::array<std::array<std::array<Entry, 256>, 3>, 3> entries_{};
};

} // namespace compression
