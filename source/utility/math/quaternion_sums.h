#pragma once

#include "source/utility/math/GQuat.h"

namespace kst {

// What quaternions are reckoned with, in double precision.

/// The product of two floats, which double precision holds exactly.
inline double exact_product(float a, float b) {
    return static_cast<double>(a) * static_cast<double>(b);
}

inline double exact_dot(const GQuat& p, const GQuat& q) {
    return exact_product(p.x, q.x) + exact_product(p.y, q.y) + exact_product(p.z, q.z) + exact_product(p.w, q.w);
}

inline GQuat weighted_sum(double wp, const GQuat& p, double wq, const GQuat& q) {
    const auto sum = [&](float a, float b) {
        return static_cast<float>(wp * static_cast<double>(a) + wq * static_cast<double>(b));
    };
    return {sum(p.x, q.x), sum(p.y, q.y), sum(p.z, q.z), sum(p.w, q.w)};
}

} // namespace kst
