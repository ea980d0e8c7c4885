#include "source/utility/math/SlerpArc.h"

#include <cmath>

namespace kst {

namespace {

GQuat weighted_sum(double wp, const GQuat& p, double wq, const GQuat& q) {
    const auto sum = [&](float a, float b) {
        return static_cast<float>(wp * static_cast<double>(a) + wq * static_cast<double>(b));
    };
    return {sum(p.x, q.x), sum(p.y, q.y), sum(p.z, q.z), sum(p.w, q.w)};
}

/// In double precision, which holds each product exactly.
double exact_dot(const GQuat& p, const GQuat& q) {
    const auto product = [](float a, float b) { return static_cast<double>(a) * static_cast<double>(b); };
    return product(p.x, q.x) + product(p.y, q.y) + product(p.z, q.z) + product(p.w, q.w);
}

} // namespace

SlerpArc::SlerpArc(const GQuat& p, const GQuat& q) : from_(p), to_(q) {
    const double c = exact_dot(p, q);
    sign_ = c < 0 ? -1 : 1;
    cosine_ = c * sign_;
    straight_ = 1 - cosine_ < 1.1920929e-7; // near, and where rounding has made it more than 1
    if (straight_)
        return;
    angle_ = std::acos(cosine_);
    sine_ = std::sqrt((1 - cosine_) * (1 + cosine_));
}

GQuat SlerpArc::at(float place) const {
    const auto a = static_cast<double>(place);
    if (straight_)
        return weighted_sum(1 - a, from_, sign_ * a, to_);
    // With θ the angle between them: sin(θ - aθ) / sin θ = cos aθ - cos θ sin aθ / sin θ, which spares a sine.
    const double angle = a * angle_;
    const double wq = std::sin(angle) / sine_;
    return weighted_sum(std::cos(angle) - cosine_ * wq, from_, sign_ * wq, to_);
}

GQuat slerp(const GQuat& p, const GQuat& q, float a) {
    return SlerpArc(p, q).at(a);
}

} // namespace kst
