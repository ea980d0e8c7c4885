#include "source/utility/math/Vector.h"

#include "source/utility/math/WideVector.h"

namespace kst {

float length(const Vector3& v) {
    // In double precision, where no component's square overflows or vanishes.
    return static_cast<float>(length(WideVector(v)));
}

Vector3 normalised(const Vector3& v, float threshold) {
    const float size = length(v);
    if (!(size >= threshold) || size == 0)
        return {};
    return {v.x / size, v.y / size, v.z / size};
}

} // namespace kst
