#include "compression/BoundedRamp.h"

#include <algorithm>

namespace compression {
namespace {

// With u = t / steps the error of the ends a and b is, less the constant sum of f x x,
//   aa A + 2 ab B + bb D - 2 (b - a) q      A = sum f (1-u)(1-u), B = sum f u (1-u), D = sum f u u, q = sum f u x
// a convex bowl over the square of legal ends.
struct Bowl {
    double a, b, d, q;

    double error(double end0, double end1) const {
        return end0 * end0 * a + 2 * end0 * end1 * b + end1 * end1 * d - 2 * (end1 - end0) * q;
    }
};

Bowl make_bowl(const RampSums& sums, double steps) {
    const double u = sums.t / steps;
    const double uu = (sums.v + sums.t * sums.t / sums.f) / (steps * steps);
    return {sums.f - 2 * u + uu, u - uu, uu, sums.tx / steps};
}

} // namespace

Ramp fit_bounded_ramp(const RampSums& sums, double steps, double lower, double upper) {
    const double mean_t = sums.t / sums.f;
    const double end0 = -mean_t * sums.tx / sums.v;
    const double end1 = (steps - mean_t) * sums.tx / sums.v;
    const auto inside = [&](double end) { return end >= lower && end <= upper; };
    if (inside(end0) && inside(end1))
        return {end0, end1, -(sums.tx * sums.tx)};

    // The best legal point lies on a side of the square that the free optimum is beyond: from any other legal point a
    // step towards the free optimum stays legal and lowers the error.
    const Bowl bowl = make_bowl(sums, steps);
    Ramp best;
    bool found = false;
    const auto offer = [&](double a, double b) {
        const double gain = bowl.error(a, b) * sums.v;
        if (!found || gain < best.gain)
            best = {a, b, gain};
        found = true;
    };
    if (!inside(end0)) {
        const double side = end0 < lower ? lower : upper;
        offer(side, std::min(std::max((bowl.q - bowl.b * side) / bowl.d, lower), upper));
    }
    if (!inside(end1)) {
        const double side = end1 < lower ? lower : upper;
        offer(std::min(std::max((-bowl.q - bowl.b * side) / bowl.a, lower), upper), side);
    }
    return best;
}

} // namespace compression
