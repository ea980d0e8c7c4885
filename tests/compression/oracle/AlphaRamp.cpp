#include "tests/compression/oracle/Searches.h"

#include "compression/BoundedRamp.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace compression::oracle {
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
            if (bins_in_use(bins) == 1)
                return;
            const Objective fitted = fit(bins);
            ramp_ = fitted.ramp;
            if (round > 0 && bins == before && !perturb(bins, fitted.error))
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

    Bins nearest_bins() const {
        std::array<double, 7> thresholds{};
        const auto last = static_cast<std::size_t>(steps_ - 1);
        for (std::size_t j = 0; j < last; ++j)
            thresholds[j] =
                ramp_.end0 + (static_cast<double>(j) + 0.5) * (ramp_.end1 - ramp_.end0) / static_cast<double>(last);
        Bins bins{};
        for (std::size_t i = 0; i < count_; ++i) {
            std::size_t bin = 0;
            while (bin < last && !(values_[i] <= thresholds[bin]))
                ++bin;
            bins[i] = static_cast<std::uint8_t>(bin);
        }
        return bins;
    }

    std::array<int, 8> bin_counts(const Bins& bins) const {
        std::array<int, 8> counts{};
        for (std::size_t i = 0; i < count_; ++i)
            ++counts[bins[i]];
        return counts;
    }

    int bins_in_use(const Bins& bins) const {
        const auto counts = bin_counts(bins);
        return static_cast<int>(std::count_if(counts.begin(), counts.end(), [](int count) { return count > 0; }));
    }

    Objective fit(const Bins& bins) const {
        double t = 0;
        double tt = 0;
        double tx = 0;
        for (std::size_t i = 0; i < count_; ++i) {
            const double bin = bins[i];
            t += bin;
            tt += bin * bin;
            tx += bin * values_[i];
        }
        const auto f = static_cast<double>(count_);
        const RampSums sums{f, t, tt - t * t / f, tx};
        const Ramp ramp = fit_bounded_ramp(sums, steps_ - 1, 0.0 - mean_, 1.0 - mean_);
        return {ramp, ramp.gain / sums.v};
    }

    // Moves the outermost sample of some bin into the next bin, the first such move that lowers the error.
    bool perturb(Bins& bins, double error) {
        const auto counts = bin_counts(bins);
        const int used = bins_in_use(bins);
        for (const int direction : {1, -1})
            for (int bin = 0; bin < steps_; ++bin) {
                const int next = bin + direction;
                const int in_bin = counts[static_cast<std::size_t>(bin)];
                if (in_bin == 0 || next < 0 || next >= steps_ || (in_bin == 1 && used <= 2))
                    continue;
                const std::size_t moved = outermost(bins, bin, direction);
                bins[moved] = static_cast<std::uint8_t>(next);
                const Objective fitted = fit(bins);
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

struct AlphaRamp {
    int alpha0 = 0;
    int alpha1 = 0;
    double error = 0; // sum of squared differences in bytes
    std::array<std::uint8_t, 16> codes{};
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

AlphaRamp fit_alpha_ramp(int steps, std::span<const float> samples) {
    AlphaRamp ramp;
    if (samples.empty())
        return ramp;
    RampFit fit(steps, samples);
    fit.run();
    ramp.alpha0 = to_byte(fit.end0());
    ramp.alpha1 = to_byte(fit.end1());
    const auto levels = ramp_levels(steps, ramp.alpha0, ramp.alpha1);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double value = static_cast<double>(samples[i]) * 255.0;
        double best = std::abs(value - levels[0]);
        for (std::size_t level = 1; level < static_cast<std::size_t>(steps); ++level)
            if (std::abs(value - levels[level]) < best) {
                best = std::abs(value - levels[level]);
                ramp.codes[i] = static_cast<std::uint8_t>(level);
            }
        ramp.error += best * best;
    }
    return ramp;
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
    alpha.codes = 0;
    std::size_t next = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(alpha.count); ++i) {
        const int fixed = fixed_code(variant, alpha.samples[i]);
        const int code = fixed < 0 ? ramp.codes[next++] : fixed;
        alpha.codes |= static_cast<std::uint64_t>(code) << (3 * i);
    }
}

} // namespace

void solve_alpha(AlphaContext& alpha) {
    const std::span samples(alpha.samples.data(), static_cast<std::size_t>(alpha.count));
    const bool zero = std::find(samples.begin(), samples.end(), 0.0f) != samples.end();
    const bool one = std::find(samples.begin(), samples.end(), 1.0f) != samples.end();
    const Variant* winner = nullptr;
    AlphaRamp best;
    for (const Variant& variant : variants) {
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

} // namespace compression::oracle
