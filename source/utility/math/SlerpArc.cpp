#include "source/utility/math/SlerpArc.h"

#include "source/utility/math/quaternion_sums.h"

#include <cmath>

namespace kst {

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
