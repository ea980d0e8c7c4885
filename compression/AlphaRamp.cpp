#include "compression/AlphaRamp.h"

#include "compression/BoundedRamp.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace compression {
namespace {

constexpr int round_limit = 64;

using Bins = std::array<std::uint8_t, 16>;

// The fit of one ramp: samples less their mean, each in one of `steps` bins.
class RampFit {
public:
    RampFit(int steps, std::span<const float> samples) : steps_(steps), count_(samples.size()) {
        double sum = 0;
        auto smallest = static_cast<double>(samples[0]);
        double largest = smallest;
        for (const float narrow : samples) {
            const auto sample = static_cast<double>(narrow);
            sum += sample;
            smallest = std::min(smallest, sample);
            largest = std::max(largest, sample);
        }
        mean_ = sum / static_cast<double>(count_);
        for (std::size_t i = 0; i < count_; ++i)
            values_[i] = static_cast<double>(samples[i]) - mean_;
        ramp_ = {smallest - mean_, largest - mean_, 0};
    }

    /// Bins by the ramp's thresholds and fits the ramp to the bins, in turn, until nothing improves.
    void run() {
        Bins before{};
        for (int round = 0; round < round_limit; ++round) {
            Bins bins = nearest_bins();
            const BinCounts counts = count_bins(bins);
            if (counts.in_use == 1)
                return;
            const Sums sums = sum_bins(bins);
            const Objective fitted = fit(sums);
            ramp_ = fitted.ramp;
            if (round > 0 && bins == before && !perturb(bins, counts, sums, fitted.error))
                return;
            before = bins;
        }
    }

    double end0() const { return mean_ + ramp_.end0; }
    double end1() const { return mean_ + ramp_.end1; }

private:
    struct Objective {
        Ramp ramp;
        double error; // less the constant sum of squares
    };

    struct BinCounts {
        std::array<int, 8> samples{};
        int in_use = 0;
    };

    struct Sums {
        int t = 0;     // of the bins
        int tt = 0;    // of their squares
        double tx = 0; // of bin times value, in the order of the samples
    };

    Bins nearest_bins() const {
        std::array<double, 7> thresholds;
        thresholds.fill(std::numeric_limits<double>::infinity());
        const auto last = static_cast<std::size_t>(steps_ - 1);
        for (std::size_t j = 0; j < last; ++j)
            thresholds[j] =
                ramp_.end0 + (static_cast<double>(j) + 0.5) * (ramp_.end1 - ramp_.end0) / static_cast<double>(last);
        return thresholds[0] <= thresholds[last - 1] ? rising_bins(thresholds) : falling_bins(thresholds[0]);
    }

    // The first threshold that a value does not exceed: with rising thresholds, the number of those below it.
    Bins rising_bins(const std::array<double, 7>& thresholds) const {
        std::array<std::int64_t, 16> bins{};
        for (const double threshold : thresholds)
            for (std::size_t i = 0; i < 16; ++i)
                bins[i] += values_[i] <= threshold ? 0 : 1;
        Bins narrow{};
        for (std::size_t i = 0; i < count_; ++i)
            narrow[i] = static_cast<std::uint8_t>(bins[i]);
        return narrow;
    }

    // With falling thresholds it is the highest, the first one, or none.
    Bins falling_bins(double highest) const {
        Bins bins{};
        for (std::size_t i = 0; i < count_; ++i)
            bins[i] = values_[i] <= highest ? 0 : static_cast<std::uint8_t>(steps_ - 1);
        return bins;
    }

    BinCounts count_bins(const Bins& bins) const {
        BinCounts counts;
        for (std::size_t i = 0; i < count_; ++i)
            counts.in_use += counts.samples[bins[i]]++ == 0 ? 1 : 0;
        return counts;
    }

    Sums sum_bins(const Bins& bins) const {
        Sums sums;
        for (std::size_t i = 0; i < count_; ++i) {
            const int bin = bins[i];
            sums.t += bin;
            sums.tt += bin * bin;
            sums.tx += bin * values_[i];
        }
        return sums;
    }

    double spread(const Sums& sums) const {
        const auto t = static_cast<double>(sums.t);
        return sums.tt - t * t / static_cast<double>(count_);
    }

    Objective fit(const Sums& sums) const {
        const RampSums ramp_sums{static_cast<double>(count_), static_cast<double>(sums.t), spread(sums), sums.tx};
        const Ramp ramp = fit_bounded_ramp(ramp_sums, steps_ - 1, 0.0 - mean_, 1.0 - mean_);
        return {ramp, ramp.gain / ramp_sums.v};
    }

    // False where moving a sample between bins cannot lower the error: no ramp does better than the free one, and the
    // margin is far above the rounding of the sums.
    bool may_improve(const Sums& sums, double error) const {
        return -(sums.tx * sums.tx) < (error + 1e-9) * spread(sums);
    }

    // Moves the outermost sample of some bin into the next bin, the first such move that lowers the error.
    bool perturb(Bins& bins, const BinCounts& counts, const Sums& sums, double error) {
        for (const int direction : {1, -1})
            for (int bin = 0; bin < steps_; ++bin) {
                const int next = bin + direction;
                const int in_bin = counts.samples[static_cast<std::size_t>(bin)];
                if (in_bin == 0 || next < 0 || next >= steps_ || (in_bin == 1 && counts.in_use <= 2))
                    continue;
                const std::size_t moved = outermost(bins, bin, direction);
                if (!may_improve(
                        {sums.t + direction, sums.tt + next * next - bin * bin, sums.tx + direction * values_[moved]},
                        error))
                    continue;
                bins[moved] = static_cast<std::uint8_t>(next);
                const Objective fitted = fit(sum_bins(bins));
                if (fitted.error < error) {
                    ramp_ = fitted.ramp;
                    return true;
                }
                bins[moved] = static_cast<std::uint8_t>(bin);
            }
        return false;
    }

    // The bin's largest sample for direction 1, its smallest for -1; the first of equal ones.
    std::size_t outermost(const Bins& bins, int bin, int direction) const {
        std::size_t found = count_;
        for (std::size_t i = 0; i < count_; ++i)
            if (bins[i] == bin && (found == count_ || direction * values_[i] > direction * values_[found]))
                found = i;
        return found;
    }

    int steps_;
    std::size_t count_;
    double mean_ = 0;
    std::array<double, 16> values_{};
    Ramp ramp_;
};

int to_byte(double value) {
    return std::clamp(static_cast<int>(std::floor(value * 255.0 + 0.5)), 0, 255);
}

std::array<int, 8> ramp_levels(int steps, int alpha0, int alpha1) {
    std::array<int, 8> levels{alpha0, alpha1};
    for (int i = 2; i < steps; ++i)
        levels[static_cast<std::size_t>(i)] = ((steps - i) * alpha0 + (i - 1) * alpha1 + (steps - 2) / 2) / (steps - 1);
    return levels;
}

// Which samples a variant leaves to the fixed codes.
struct Variant {
    int steps;
    bool fixed_zero;
    bool fixed_one;
};
constexpr std::array variants{Variant{8, false, false}, Variant{6, false, false}, Variant{6, true, false},
                              Variant{6, false, true}, Variant{6, true, true}};

// The code of a sample that the variant does not fit, or -1.
int fixed_code(const Variant& variant, float sample) {
    if (variant.fixed_zero && sample == 0.0f)
        return 6;
    return variant.fixed_one && sample == 1.0f ? 7 : -1;
}

AlphaRamp fit_variant(const Variant& variant, const AlphaContext& alpha) {
    std::array<float, 16> fitted{};
    std::size_t count = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(alpha.count); ++i)
        if (fixed_code(variant, alpha.samples[i]) < 0)
            fitted[count++] = alpha.samples[i];
    return fit_alpha_ramp(variant.steps, {fitted.data(), count});
}

void take(AlphaContext& alpha, const Variant& variant, const AlphaRamp& ramp) {
    alpha.steps = variant.steps;
    alpha.alpha0 = ramp.alpha0;
    alpha.alpha1 = ramp.alpha1;
    std::size_t next = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(alpha.count); ++i) {
        const int fixed = fixed_code(variant, alpha.samples[i]);
        alpha.codes[i] = fixed < 0 ? ramp.codes[next++] : static_cast<std::uint8_t>(fixed);
    }
}

} // namespace

AlphaRamp fit_alpha_ramp(int steps, std::span<const float> samples) {
    AlphaRamp ramp;
    if (samples.empty())
        return ramp;
    RampFit fit(steps, samples);
    fit.run();
    ramp.alpha0 = to_byte(fit.end0());
    ramp.alpha1 = to_byte(fit.end1());
    const auto levels = ramp_levels(steps, ramp.alpha0, ramp.alpha1);
    std::array<double, 16> values{};
    for (std::size_t i = 0; i < samples.size(); ++i)
        values[i] = static_cast<double>(samples[i]) * 255.0;
    std::array<double, 16> least;
    std::array<std::int64_t, 16> codes{}; // as wide as the distances, so that both select in the same registers
    for (std::size_t i = 0; i < 16; ++i)
        least[i] = std::abs(values[i] - levels[0]);
    for (std::size_t level = 1; level < static_cast<std::size_t>(steps); ++level)
        for (std::size_t i = 0; i < 16; ++i) {
            const double distance = std::abs(values[i] - levels[level]);
            const bool nearer = distance < least[i];
            codes[i] = nearer ? static_cast<std::int64_t>(level) : codes[i];
            least[i] = nearer ? distance : least[i];
        }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ramp.codes[i] = static_cast<std::uint8_t>(codes[i]);
        ramp.error += least[i] * least[i];
    }
    return ramp;
}

void solve_alpha(AlphaContext& alpha) {
    const std::span samples(alpha.samples.data(), static_cast<std::size_t>(alpha.count));
    if (std::all_of(samples.begin(), samples.end(), [&](float sample) { return sample == samples[0]; })) {
        // One bin takes all, every variant's ends are equal, and the first variant wins.
        alpha.steps = variants[0].steps;
        alpha.alpha0 = alpha.alpha1 = to_byte(RampFit(alpha.steps, samples).end0());
        alpha.codes.fill(0);
        return;
    }
    const bool zero = std::find(samples.begin(), samples.end(), 0.0f) != samples.end();
    const bool one = std::find(samples.begin(), samples.end(), 1.0f) != samples.end();
    const Variant* winner = nullptr;
    AlphaRamp best;
    for (const Variant& variant : variants) {
        if (winner != nullptr && best.error == 0)
            break; // no later one can do better
        if ((variant.fixed_zero || variant.fixed_one) && !(variant.fixed_zero && zero) && !(variant.fixed_one && one))
            continue;
        const AlphaRamp ramp = fit_variant(variant, alpha);
        if (winner == nullptr || ramp.error < best.error) {
            winner = &variant;
            best = ramp;
        }
    }
    take(alpha, *winner, best);
}

} // namespace compression
