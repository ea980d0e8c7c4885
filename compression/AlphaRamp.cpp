#include "compression/AlphaRamp.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
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

// The best ramp so far of a block, and what its later variants need to know.
struct Candidate {
    AlphaContext* alpha = nullptr;
    const Variant* variant = nullptr;
    int alpha0 = 0;
    int alpha1 = 0;
    std::uint64_t codes = 0; ///< of the samples that the variant fits
    double error = std::numeric_limits<double>::infinity();
    // Of all samples, from the first variant.
    bool zero = false; ///< some sample is 0.0
    bool one = false;  ///< some sample is 1.0
};

// One bin takes all, every variant's ends are equal, and the first variant wins. The mean is the sample itself: sixteen
// floats add up without rounding in double precision.
void solve_flat(AlphaContext& alpha) {
    const double sample = static_cast<double>(alpha.samples[0]);
    alpha.steps = variants[0].steps;
    alpha.alpha0 = alpha.alpha1 = static_cast<int>(std::max(0.0, std::min(sample * 255.0 + 0.5, 255.0)));
    alpha.codes = 0;
}

// Bit for bit: 0 beside -0 goes the long way.
bool is_flat(const AlphaContext& alpha) {
    const auto bits = std::bit_cast<std::array<std::uint32_t, 16>>(alpha.samples);
    return std::memcmp(&bits[0], &bits[1], sizeof(std::uint32_t) * 15) == 0;
}

void take(const Candidate& winner) {
    AlphaContext& alpha = *winner.alpha;
    const Variant& variant = *winner.variant;
    alpha.steps = variant.steps;
    alpha.alpha0 = winner.alpha0;
    alpha.alpha1 = winner.alpha1;
    alpha.codes = winner.codes;
    if (!variant.fixed_zero && !variant.fixed_one)
        return;
    alpha.codes = 0;
    std::uint64_t fitted = winner.codes;
    for (int i = 0; i < alpha.count; ++i) {
        const int fixed = fixed_code(variant, alpha.samples[static_cast<std::size_t>(i)]);
        const std::uint64_t code = fixed < 0 ? fitted & 7 : static_cast<std::uint64_t>(fixed);
        fitted >>= fixed < 0 ? 3 : 0;
        alpha.codes |= code << (3 * i);
    }
}

// Collects the fits of blocks and variants, runs them in full batches, and offers their results to the blocks in the
// order in which they were added.
class FitQueue {
public:
    explicit FitQueue(const RampBatchKernel& kernel) : kernel_(kernel) {}

    void add(Candidate& block, const Variant& variant) {
        const std::size_t lane = used_++;
        lanes_[lane] = {&block, &variant};
        batch_.steps[lane] = variant.steps;
        const bool fixes = variant.fixed_zero || variant.fixed_one;
        batch_.count[lane] = fixes ? add_fitted(*block.alpha, variant, lane) : add_all(*block.alpha, lane);
        if (used_ == ramp_lanes)
            run();
    }

    void run() {
        if (used_ == 0)
            return;
        for (std::size_t lane = used_; lane < ramp_lanes; ++lane) {
            for (auto& samples : batch_.samples)
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

    // These put a set of samples into a lane and return their number.
    int add_all(const AlphaContext& alpha, std::size_t lane) {
        for (std::size_t i = 0; i < 16; ++i)
            batch_.samples[i][lane] = alpha.samples[i];
        return alpha.count;
    }

    int add_fitted(const AlphaContext& alpha, const Variant& variant, std::size_t lane) {
        std::size_t count = 0;
        for (std::size_t i = 0; i < static_cast<std::size_t>(alpha.count); ++i)
            if (fixed_code(variant, alpha.samples[i]) < 0)
                batch_.samples[count++][lane] = alpha.samples[i];
        // A set without samples has error 0, as has one sample at a byte.
        if (count == 0)
            batch_.samples[count++][lane] = 0;
        for (std::size_t i = count; i < 16; ++i)
            batch_.samples[i][lane] = batch_.samples[0][lane];
        return static_cast<int>(count);
    }

    void offer(std::size_t lane, const RampBatchResult& result) {
        Candidate& block = *lanes_[lane].block;
        if (block.variant == nullptr) {
            block.zero = result.zero[lane] != 0;
            block.one = result.one[lane] != 0;
        }
        if (result.error[lane] >= block.error)
            return;
        block.variant = lanes_[lane].variant;
        block.alpha0 = static_cast<int>(result.alpha0[lane]);
        block.alpha1 = static_cast<int>(result.alpha1[lane]);
        block.codes = result.codes[lane];
        block.error = result.error[lane];
        if (result.error[lane] <= result.least_error[lane])
            block.error = 0; // samples at fixed codes have none to save, so no later variant does better
    }

    RampBatch batch_;
    const RampBatchKernel& kernel_;
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
        std::fill(alpha.samples.begin() + alpha.count, alpha.samples.end(), alpha.samples[0]);
        if (is_flat(alpha)) {
            solve_flat(alpha);
            continue;
        }
        Candidate& block = candidates[varied++];
        block.alpha = &alpha;
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
