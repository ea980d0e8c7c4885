#include "compression/SolidColour.h"

#include "compression/ColourLattice.h"
#include "compression/GreyColourTables.h"
#include "compression/SolidColourTable.h"

#include <algorithm>
#include <cmath>

namespace compression {
namespace {

// The byte that all channels of all pixels share, or -1.
int grey_byte(const BlockContext& block) {
    const auto byte = [](double value) { return round_half_up(value * 255.0); };
    const int grey = byte(block.colours[0][0]);
    for (std::size_t i = 0; i < static_cast<std::size_t>(block.count); ++i)
        for (const double channel : block.colours[i])
            if (byte(channel) != grey)
                return -1;
    return grey;
}

void take_grey_row(BlockContext& block, const GreyRow& row) {
    std::copy(row.end0.begin(), row.end0.end(), block.end0.begin());
    std::copy(row.end1.begin(), row.end1.end(), block.end1.begin());
    block.colour_count = row.colour_count;
    block.indices.fill(row.index);
}

struct Reached {
    int value = -1; // -1: none
    double error = 0;
};

// One channel of the block's colour against what one mix can reach.
class ChannelMix {
public:
    ChannelMix(int channel, int mix, double weighted, double weight, int pixels)
        : channel_(channel),
          mix_(mix),
          weighted_(weighted),
          weight_(weight),
          pixels_(pixels),
          exact_(weight == 0.0 ? 0.0 : weighted * 255.0 / weight) {}

    Reached nearest() const {
        const int target = static_cast<int>(std::min(std::max(std::floor(exact_ + 0.5), 0.0), 255.0));
        const Reached upper = reach(is_valid(target) && exact_ <= target ? target : next_valid(target, 1));
        const Reached lower = reach(is_valid(target) && exact_ >= target ? target : next_valid(target, -1));
        if (upper.value < 0 || lower.value < 0)
            return upper.value < 0 ? lower : upper;
        if (upper.error == lower.error)
            return target % 2 == 0 ? lower : upper;
        return upper.error < lower.error ? upper : lower;
    }

private:
    bool is_valid(int value) const { return SolidColourTable::instance().entry(channel_, mix_, value).valid; }

    int next_valid(int value, int direction) const {
        for (value += direction; value >= 0 && value <= 255; value += direction)
            if (is_valid(value))
                return value;
        return -1;
    }

    Reached reach(int value) const {
        Reached reached{value, 0};
        for (int pixel = 0; pixel < pixels_; ++pixel) {
            const double difference = value * weight_ - weighted_ * 255.0;
            reached.error += difference * difference;
        }
        return reached;
    }

    int channel_;
    int mix_;
    double weighted_;
    double weight_;
    int pixels_;
    double exact_;
};

struct MixResult {
    double error = 0;
    std::array<int, 3> values{};
};

int choose_mix(const std::array<MixResult, 3>& mixes, bool four_forced, int colour_limit) {
    const double e0 = mixes[0].error;
    const double e1 = mixes[1].error;
    const double e2 = mixes[2].error;
    if (colour_limit == 3)
        return e0 <= e1 ? 0 : 1;
    if (four_forced || e0 <= e1)
        return e0 <= e2 ? 0 : 2;
    return e1 <= e2 ? 1 : 2;
}

} // namespace

void fit_solid_colour(BlockContext& block, const Vector3& weighted, int colour_limit) {
    const bool four_forced = block.colour_mode == COLOUR_MODE_FOUR;
    if (const int grey = grey_byte(block); grey >= 0) {
        const GreyColourTables& tables = GreyColourTables::instance();
        return take_grey_row(block, (four_forced ? tables.four : tables.free)[static_cast<std::size_t>(grey)]);
    }
    std::array<MixResult, 3> mixes;
    for (int mix = 0; mix <= colour_limit - 2; ++mix)
        for (std::size_t c = 0; c < 3; ++c) {
            const Reached reached =
                ChannelMix(static_cast<int>(c), mix, weighted[c], block.weights[c], block.count).nearest();
            MixResult& result = mixes[static_cast<std::size_t>(mix)];
            result.values[c] = reached.value;
            result.error += reached.error;
        }
    const int mix = choose_mix(mixes, four_forced, colour_limit);
    for (std::size_t c = 0; c < 3; ++c) {
        const auto& entry = SolidColourTable::instance().entry(static_cast<int>(c), mix,
                                                               mixes[static_cast<std::size_t>(mix)].values[c]);
        block.end0[c] = entry.a >> (8 - channel_bits[c]);
        block.end1[c] = entry.b >> (8 - channel_bits[c]);
    }
    block.indices.fill(static_cast<std::uint8_t>(mix + 1));
    if (mix != 0)
        block.colour_count = mix + 2;
}

} // namespace compression
