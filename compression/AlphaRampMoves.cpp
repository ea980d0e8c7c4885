#include "compression/AlphaRampMoves.h"

#include <algorithm>

namespace compression {
namespace {

// The samples of one bin: their number and the places of the largest and the smallest, the first of equal ones.
struct Bin {
    int samples = 0;
    std::size_t largest = 0;
    std::size_t smallest = 0;
};

std::array<Bin, 8> collect_bins(const BinnedRamp& binned) {
    std::array<Bin, 8> bins;
    for (std::size_t i = 0; i < binned.count; ++i) {
        Bin& bin = bins[binned.bins[i]];
        if (bin.samples == 0 || binned.values[i] > binned.values[bin.largest])
            bin.largest = i;
        if (bin.samples == 0 || binned.values[i] < binned.values[bin.smallest])
            bin.smallest = i;
        ++bin.samples;
    }
    return bins;
}

struct BinSums {
    int t = 0;     // of the bins
    int tt = 0;    // of their squares
    double tx = 0; // of bin times value, in the order of the samples
};

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
    const std::array<Bin, 8> bins = collect_bins(binned);
    const auto in_use = std::count_if(bins.begin(), bins.end(), [](const Bin& bin) { return bin.samples > 0; });
    const BinSums sums = sum_bins(binned);
    const double limit = binned.error + ramp_move_margin * (1 + sums.tx * sums.tx / spread(sums, binned.count));
    for (const int direction : {1, -1})
        for (int from = 0; from < binned.steps; ++from) {
            const Bin& bin = bins[static_cast<std::size_t>(from)];
            const int next = from + direction;
            if (bin.samples == 0 || next < 0 || next >= binned.steps || (bin.samples == 1 && in_use <= 2))
                continue;
            const std::size_t sample = direction > 0 ? bin.largest : bin.smallest;
            const BinSums moved{sums.t + direction, sums.tt + next * next - from * from,
                                sums.tx + direction * binned.values[sample]};
            // No ramp does better than the free one.
            const bool may_improve = -(moved.tx * moved.tx) < limit * spread(moved, binned.count);
            if (may_improve && try_move(binned, sample, next))
                return true;
        }
    return false;
}

} // namespace compression
