#include "compression/AlphaRamp.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

namespace compression {
namespace {

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

std::span<const float> samples_of(const AlphaContext& alpha) {
    return {alpha.samples.data(), static_cast<std::size_t>(alpha.count)};
}

std::array<int, 8> ramp_levels(int steps, int alpha0, int alpha1) {
    std::array<int, 8> levels{alpha0, alpha1};
    for (int i = 2; i < steps; ++i)
        levels[static_cast<std::size_t>(i)] = ((steps - i) * alpha0 + (i - 1) * alpha1 + (steps - 2) / 2) / (steps - 1);
    return levels;
}

// The best ramp so far of a block, and what its later variants need to know.
struct Candidate {
    AlphaContext* alpha = nullptr;
    const Variant* variant = nullptr;
    int alpha0 = 0;
    int alpha1 = 0;
    double error = std::numeric_limits<double>::infinity();
    bool zero = false; ///< some sample is 0.0
    bool one = false;  ///< some sample is 1.0
};

// One bin takes all, every variant's ends are equal, and the first variant wins.
void solve_flat(AlphaContext& alpha) {
    double sum = 0;
    for (const float sample : samples_of(alpha))
        sum += static_cast<double>(sample);
    const double mean = sum / alpha.count;
    const double end = mean + (static_cast<double>(alpha.samples[0]) - mean);
    alpha.steps = variants[0].steps;
    alpha.alpha0 = alpha.alpha1 = std::clamp(static_cast<int>(std::floor(end * 255.0 + 0.5)), 0, 255);
    alpha.codes.fill(0);
}

// Each sample's code is that of the nearest level, of equally near ones the lowest.
void take(const Candidate& winner) {
    AlphaContext& alpha = *winner.alpha;
    alpha.steps = winner.variant->steps;
    alpha.alpha0 = winner.alpha0;
    alpha.alpha1 = winner.alpha1;
    const auto levels = ramp_levels(alpha.steps, alpha.alpha0, alpha.alpha1);
    std::array<double, 16> values;
    std::array<double, 16> least;
    std::array<std::int64_t, 16> codes{}; // as wide as the distances, so that both select in the same registers
    for (std::size_t i = 0; i < 16; ++i) {
        values[i] = static_cast<double>(alpha.samples[i]) * 255.0;
        least[i] = std::abs(values[i] - levels[0]);
    }
    for (std::size_t level = 1; level < static_cast<std::size_t>(alpha.steps); ++level)
        for (std::size_t i = 0; i < 16; ++i) {
            const double distance = std::abs(values[i] - levels[level]);
            const bool nearer = distance < least[i];
            codes[i] = nearer ? static_cast<std::int64_t>(level) : codes[i];
            least[i] = nearer ? distance : least[i];
        }
    for (std::size_t i = 0; i < static_cast<std::size_t>(alpha.count); ++i) {
        const int fixed = fixed_code(*winner.variant, alpha.samples[i]);
        alpha.codes[i] = static_cast<std::uint8_t>(fixed < 0 ? codes[i] : fixed);
    }
}

// Collects the fits of blocks and variants, runs them in full batches, and offers their results to the blocks in the
// order in which they were added.
class FitQueue {
public:
    explicit FitQueue(const RampBatchKernel& kernel) : kernel_(kernel) {}

    void add(Candidate& block, const Variant& variant) {
        const std::size_t lane = used_++;
        std::size_t count = 0;
        for (const float sample : samples_of(*block.alpha))
            if (fixed_code(variant, sample) < 0)
                batch_.samples[count++][lane] = static_cast<double>(sample);
        lanes_[lane] = {&block, &variant};
        // A set without samples has error 0; its lane is given a sample to work on, and fits it without error.
        if (count == 0)
            batch_.samples[count++][lane] = 0;
        for (std::size_t i = count; i < 16; ++i)
            batch_.samples[i][lane] = batch_.samples[0][lane];
        batch_.count[lane] = static_cast<double>(count);
        batch_.steps[lane] = variant.steps;
        if (used_ == ramp_lanes)
            run();
    }

    void run() {
        if (used_ == 0)
            return;
        for (std::size_t lane = used_; lane < ramp_lanes; ++lane) {
            for (RampLane& samples : batch_.samples)
                samples[lane] = samples[0];
            batch_.count[lane] = batch_.count[0];
            batch_.steps[lane] = batch_.steps[0];
        }
        RampBatchResult result;
        kernel_.fit(batch_, result);
        for (std::size_t lane = 0; lane < used_; ++lane)
            offer(lane, result);
        used_ = 0;
    }

private:
    struct Lane {
        Candidate* block;
        const Variant* variant;
    };

    void offer(std::size_t lane, const RampBatchResult& result) {
        Candidate& block = *lanes_[lane].block;
        if (result.error[lane] >= block.error)
            return;
        block.variant = lanes_[lane].variant;
        block.alpha0 = static_cast<int>(result.alpha0[lane]);
        block.alpha1 = static_cast<int>(result.alpha1[lane]);
        block.error = result.error[lane];
        if (result.error[lane] <= result.least_error[lane])
            block.error = 0; // samples at fixed codes have none to save, so no later variant does better
    }

    const RampBatchKernel& kernel_;
    RampBatch batch_;
    std::array<Lane, ramp_lanes> lanes_;
    std::size_t used_ = 0;
};

} // namespace

void solve_alpha(std::span<AlphaContext> blocks) {
    solve_alpha(blocks, ramp_batch_kernels().back());
}

void solve_alpha(std::span<AlphaContext> blocks, const RampBatchKernel& kernel) {
    assert(blocks.size() <= alpha_batch);
    std::array<Candidate, alpha_batch> candidates;
    std::size_t varied = 0;
    FitQueue queue(kernel);
    for (AlphaContext& alpha : blocks) {
        const auto samples = samples_of(alpha);
        if (std::all_of(samples.begin(), samples.end(), [&](float sample) { return sample == samples[0]; })) {
            solve_flat(alpha);
            continue;
        }
        Candidate& block = candidates[varied++];
        block.alpha = &alpha;
        block.zero = std::find(samples.begin(), samples.end(), 0.0f) != samples.end();
        block.one = std::find(samples.begin(), samples.end(), 1.0f) != samples.end();
        queue.add(block, variants[0]);
    }
    queue.run();
    for (Candidate& block : std::span(candidates.data(), varied))
        for (const Variant& variant : std::span(variants).subspan(1)) {
            const bool fixes = variant.fixed_zero || variant.fixed_one;
            if (block.error > 0 && (!fixes || (variant.fixed_zero && block.zero) || (variant.fixed_one && block.one)))
                queue.add(block, variant);
        }
    queue.run();
    for (const Candidate& block : std::span(candidates.data(), varied))
        take(block);
}

} // namespace compression
