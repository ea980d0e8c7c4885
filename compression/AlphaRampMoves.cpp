#include "compression/AlphaRampMoves.h"

namespace compression {
namespace {

struct BinCounts {
    std::array<int, 8> samples{};
    int in_use = 0;
};

struct BinSums {
    int t = 0;     // of the bins
    int tt = 0;    // of their squares
    double tx = 0; // of bin times value, in the order of the samples
};

BinCounts count_bins(const BinnedRamp& binned) {
    BinCounts counts;
    for (std::size_t i = 0; i < binned.count; ++i)
        counts.in_use += counts.samples[binned.bins[i]]++ == 0 ? 1 : 0;
    return counts;
}

BinSums sum_bins(const BinnedRamp& binned) {
    BinSums sums;
    for (std::size_t i = 0; i < binned.count; ++i) {
        const int bin = binned.bins[i];
        sums.t += bin;
        sums.tt += bin * bin;
        sums.tx += bin * binned.values[i];
    }
    return sums;
}

double spread(const BinSums& sums, std::size_t count) {
    const auto t = static_cast<double>(sums.t);
    return sums.tt - t * t / static_cast<double>(count);
}

// False where the move cannot lower the error: no ramp does better than the free one.
bool may_improve(const BinSums& moved, const BinnedRamp& binned) {
    return -(moved.tx * moved.tx) < (binned.error + ramp_move_margin) * spread(moved, binned.count);
}

// The bin's largest sample for direction 1, its smallest for -1; the first of equal ones.
std::size_t outermost(const BinnedRamp& binned, int bin, int direction) {
    std::size_t found = binned.count;
    for (std::size_t i = 0; i < binned.count; ++i)
        if (binned.bins[i] == bin &&
            (found == binned.count || direction * binned.values[i] > direction * binned.values[found]))
            found = i;
    return found;
}

// Takes the sample's new bin and its ramp if the error is lower.
bool try_move(BinnedRamp& binned, std::size_t sample, int bin) {
    const std::uint8_t before = binned.bins[sample];
    binned.bins[sample] = static_cast<std::uint8_t>(bin);
    const BinSums sums = sum_bins(binned);
    const double v = spread(sums, binned.count);
    const Ramp ramp = fit_bounded_ramp({static_cast<double>(binned.count), static_cast<double>(sums.t), v, sums.tx},
                                       binned.steps - 1, 0.0 - binned.mean, 1.0 - binned.mean);
    if (ramp.gain / v < binned.error) {
        binned.ramp = ramp;
        return true;
    }
    binned.bins[sample] = before;
    return false;
}

} // namespace

bool move_one_sample(BinnedRamp& binned) {
    const BinCounts counts = count_bins(binned);
    const BinSums sums = sum_bins(binned);
    for (const int direction : {1, -1})
        for (int bin = 0; bin < binned.steps; ++bin) {
            const int next = bin + direction;
            const int in_bin = counts.samples[static_cast<std::size_t>(bin)];
            if (in_bin == 0 || next < 0 || next >= binned.steps || (in_bin == 1 && counts.in_use <= 2))
                continue;
            const std::size_t sample = outermost(binned, bin, direction);
            const BinSums moved{sums.t + direction, sums.tt + next * next - bin * bin,
                                sums.tx + direction * binned.values[sample]};
            if (may_improve(moved, binned) && try_move(binned, sample, next))
                return true;
        }
    return false;
}

} // namespace compression
