#include "source/utility/math/Vector.h"

#include <cmath>

namespace kst {

float length(const Vector3& v) {
    // In double precision, where no component's square overflows or vanishes.
    const double x = v.x, y = v.y, z = v.z;
    return static_cast<float>(std::sqrt(x * x + y * y + z * z));
}

Vector3 normalised(const Vector3& v, float threshold) {
    const float size = length(v);
    if (!(size >= threshold) || size == 0)
        return {};
    return {v.x / size, v.y / size, v.z / size};
}

} // namespace kst
