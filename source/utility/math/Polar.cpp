#include "source/utility/math/Polar.h"

#include <cmath>

namespace kst {

Polar to_polar(const Vector3& v) {
    const double x = v.x, y = v.y, z = v.z;
    const double flat = std::sqrt(x * x + y * y);
    return {static_cast<float>(std::atan2(y, x)), static_cast<float>(std::atan2(z, flat)), length(v)};
}

Vector3 to_vector(const Polar& polar) {
    const double spin = polar.spin, pitch = polar.pitch, r = polar.r;
    const double flat = r * std::cos(pitch);
    return {static_cast<float>(flat * std::cos(spin)), static_cast<float>(flat * std::sin(spin)),
            static_cast<float>(r * std::sin(pitch))};
}

} // namespace kst
