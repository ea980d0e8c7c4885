#include "compression/ColourSolver.h"

#include "compression/ClusterFit.h"
#include "compression/ExhaustiveSearch.h"
#include "compression/FastFit.h"
#include "compression/PaletteError.h"

#include <limits>

namespace compression {
namespace {

// A search's result as it stood before its evaluation, and its error.
struct Result {
    BlockContext block;
    double error = static_cast<double>(std::numeric_limits<float>::max());
};

Result evaluated(const BlockContext& block) {
    Result result{block, 0};
    BlockContext scratch = block;
    result.error = evaluate_palette(scratch);
    return result;
}

bool is_least(const Result& result, const Result& a, const Result& b, const Result& c) {
    return result.error <= a.error && result.error <= b.error && result.error <= c.error;
}

// Three colours win a tie and keep the evaluation's indices; four colours keep the fit's own.
void solve_fast(BlockContext& block) {
    fast_fit(block, 4);
    const Result four = evaluated(block);
    fast_fit(block, 3);
    if (evaluate_palette(block) > four.error)
        block = four.block;
}

void solve_free(BlockContext& block) {
    const ClusterFit cluster(block);
    cluster.run(block, 4);
    const Result a = evaluated(block);
    cluster.run(block, 3);
    const Result b = evaluated(block);
    Result c;
    Result d;
    if (block.quality >= 71) {
        fast_fit(block, 3);
        c = evaluated(block);
        fast_fit(block, 4);
        d = evaluated(block);
    }
    const Result* taken = &c;
    if (is_least(a, d, b, c))
        taken = &a;
    else if (is_least(b, d, a, c))
        taken = &b;
    else if (is_least(d, b, a, c))
        taken = &d;
    block = taken->block;
    if (block.quality >= 72 && taken->error > static_cast<double>(block.rms_error_threshold))
        exhaustive_search(block, taken->error);
}

// The cluster fit wins a tie and keeps the evaluation's indices. With three colours so does the fast fit; with four
// the fast fit keeps its own.
void solve_forced(BlockContext& block, int colour_limit) {
    cluster_fit(block, colour_limit);
    const double cluster_error = evaluate_palette(block);
    const BlockContext cluster = block;
    fast_fit(block, colour_limit);
    const BlockContext fast = block;
    if (cluster_error <= evaluate_palette(block))
        block = cluster;
    else if (colour_limit == 4)
        block = fast;
}

} // namespace

void solve_colours(BlockContext& block) {
    const bool four_forced = block.colour_mode == COLOUR_MODE_FOUR;
    const bool three_forced = block.colour_mode == COLOUR_MODE_THREE;
    if (block.quality <= 68)
        return four_forced ? fast_fit(block, 4) : solve_fast(block);
    if (!four_forced && !three_forced)
        return solve_free(block);
    if (block.quality == 69)
        return four_forced ? fast_fit(block, 4) : cluster_fit(block, 3);
    solve_forced(block, four_forced ? 4 : 3);
}

} // namespace compression
