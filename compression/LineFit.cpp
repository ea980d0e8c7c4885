#include "compression/LineFit.h"

#include "compression/BoundedRamp.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace compression {
namespace {

struct Sums {
    Vector3 s{};   // sum of f t Q
    double t1 = 0; // sum of f t
    double v = 0;  // sum of f t t, less t1 squared
};

// A colour goes from group t to t + 1, where `constant` is 2 t + 1.
void advance(Sums& sums, const DistinctColours& colours, std::size_t k, double constant) {
    const double f = colours.frequency[k];
    sums.v += (constant - 2 * sums.t1 - f) * f;
    sums.t1 += f;
    for (std::size_t c = 0; c < 3; ++c)
        sums.s[c] += colours.scaled[k][c];
}

int boundaries_in_use(const Split& split, std::size_t count) {
    return (split.i < count) + (split.j < count) + (split.k < count);
}

template <typename Visit>
void walk_splits(const DistinctColours& colours, const Order& order, int step_limit, const Visit& visit) {
    const std::size_t count = colours.count;
    Sums at_i;
    for (std::size_t i = count;; --i) {
        Sums at_j = at_i;
        for (std::size_t j = count;; --j) {
            Sums at_k = at_j;
            const std::size_t last = step_limit == 3 ? j : count;
            for (std::size_t k = count;; --k) {
                visit(Split{i, j, k}, at_k);
                if (k == last)
                    break;
                advance(at_k, colours, order[k - 1], 5);
            }
            if (j == i)
                break;
            advance(at_j, colours, order[j - 1], 3);
        }
        if (i == 1)
            break;
        advance(at_i, colours, order[i - 1], 1);
    }
}

// Scores are fractions; a later one replaces an equal one.
struct Best {
    double numerator = 0;
    double denominator = 1;
    Split split;

    void offer(double score_numerator, double score_denominator, const Split& candidate) {
        if (score_numerator * denominator <= numerator * score_denominator) {
            numerator = score_numerator;
            denominator = score_denominator;
            split = candidate;
        }
    }
};

Sums recompute(const DistinctColours& colours, const Order& order, const Split& split) {
    Sums sums;
    double t2 = 0;
    for (std::size_t place = 0; place < colours.count; ++place) {
        const double t = (place >= split.i) + (place >= split.j) + (place >= split.k);
        const double ft = colours.frequency[order[place]] * t;
        sums.t1 += ft;
        t2 += ft * t;
        for (std::size_t c = 0; c < 3; ++c)
            sums.s[c] += colours.scaled[order[place]][c] * t;
    }
    sums.v = t2 - sums.t1 * sums.t1;
    return sums;
}

// The ends of a channel at the chosen split, from the split's sums.
template <typename Ends>
LineFit finish(const DistinctColours& colours, const Order& order, const Best& best, const Ends& ends) {
    const std::size_t count = colours.count;
    Split split = best.split;
    const int groups = (split.i != split.j) + (split.j != split.k) + (split.k != count);
    // Two groups at the ends of three steps: one step fewer lies between them.
    if (groups == 1 && split.k != count)
        split.k = count;
    const Sums sums = recompute(colours, order, split);
    const int steps = boundaries_in_use(split, count);
    LineFit fit;
    fit.score = best.numerator / best.denominator;
    fit.axis = sums.s;
    for (std::size_t c = 0; c < 3; ++c) {
        const Ramp ramp = ends(sums, c, steps);
        fit.end0[c] = ramp.end0;
        fit.end1[c] = ramp.end1;
    }
    fit.steps = groups == 1 ? 1 : steps;
    return fit;
}

} // namespace

LineFit fit_line(const DistinctColours& colours, const Order& order, int step_limit) {
    return fit_line(colours, order, step_limit, split_walk_kernels().back());
}

LineFit fit_line(const DistinctColours& colours, const Order& order, int step_limit, const SplitWalkKernel& kernel) {
    SplitLine line;
    line.count = colours.count;
    line.step_limit = step_limit;
    for (std::size_t place = 0; place < colours.count; ++place) {
        line.frequency[place] = colours.frequency[order[place]];
        for (std::size_t c = 0; c < 3; ++c)
            line.scaled[c][place] = colours.scaled[order[place]][c];
    }
    Best best;
    NearBestSplits near;
    if (kernel.walk(line, near)) {
        const auto end = near.splits.begin() + static_cast<std::ptrdiff_t>(near.count);
        std::sort(near.splits.begin(), end, [](const ScoredSplit& a, const ScoredSplit& b) {
            return std::tie(a.split.i, a.split.j, a.split.k) > std::tie(b.split.i, b.split.j, b.split.k);
        });
        std::for_each(near.splits.begin(), end, [&](const ScoredSplit& scored) {
            best.offer(-scored.numerator, scored.denominator, scored.split);
        });
    } else {
        walk_splits(colours, order, step_limit,
                    [&](const Split& split, const Sums& sums) { best.offer(-dot(sums.s, sums.s), sums.v, split); });
    }
    return finish(colours, order, best, [](const Sums& sums, std::size_t c, int steps) {
        return Ramp{-sums.t1 * sums.s[c] / sums.v, (steps - sums.t1) * sums.s[c] / sums.v, 0};
    });
}

LineFit fit_line_in_box(const DistinctColours& colours, const Order& order, int step_limit, const Vector3& weights) {
    const auto bounded = [&](const Sums& sums, std::size_t c, int steps) {
        const RampSums ramp{1, sums.t1, sums.v, sums.s[c]};
        return fit_bounded_ramp(ramp, steps, -colours.mean[c], weights[c] - colours.mean[c]);
    };
    Best best;
    walk_splits(colours, order, step_limit, [&](const Split& split, const Sums& sums) {
        if (split.i == colours.count)
            return best.offer(0, 0, split);
        // No legal line does better than the free one; the margin is far above the rounding of a gain.
        if ((-dot(sums.s, sums.s) - 1e-12) * best.denominator > best.numerator * sums.v)
            return;
        const int steps = boundaries_in_use(split, colours.count);
        double gain = 0;
        for (std::size_t c = 0; c < 3; ++c)
            gain += bounded(sums, c, steps).gain;
        best.offer(gain, sums.v, split);
    });
    return finish(colours, order, best, bounded);
}

} // namespace compression
