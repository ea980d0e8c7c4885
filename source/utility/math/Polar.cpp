#include "source/utility/math/Polar.h"

#include <cmath>

#include "source/utility/math/WideVector.h"

namespace kst {

Polar to_polar(const Vector3& v) {
    const WideVector wide(v);
    const double flat = std::sqrt(wide.x * wide.x + wide.y * wide.y);
    return {static_cast<float>(std::atan2(wide.y, wide.x)), static_cast<float>(std::atan2(wide.z, flat)), length(v)};
}

Vector3 to_vector(const Polar& polar) {
    const auto spin = static_cast<double>(polar.spin), pitch = static_cast<double>(polar.pitch);
    const auto r = static_cast<double>(polar.r);
    const double flat = r * std::cos(pitch);
    return {static_cast<float>(flat * std::cos(spin)), static_cast<float>(flat * std::sin(spin)),
            static_cast<float>(r * std::sin(pitch))};
}

} // namespace kst
