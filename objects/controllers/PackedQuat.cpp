#include "objects/controllers/PackedQuat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace kst {

namespace {

constexpr std::uint32_t largest_code = 1023;

std::uint32_t code_of(float component) {
    const float scaled = (0.75f + component) * 0.6666667f * 1024.0f;
    // The test is so written that no number, too, goes to 0.
    return scaled > 0 ? static_cast<std::uint32_t>(std::min(scaled, static_cast<float>(largest_code))) : 0;
}

float component_of(std::uint32_t code) {
    return static_cast<float>(code) * 0.00146484375f - 0.75f;
}

} // namespace

PackedQuat pack(const GQuat& q) {
    const std::array<float, 4> components{q.x, q.y, q.z, q.w};
    std::size_t left_out = 0;
    for (std::size_t i = 1; i < 4; ++i)
        if (components[i] * components[i] > components[left_out] * components[left_out])
            left_out = i;
    const float sign = components[left_out] < 0 ? -1.0f : 1.0f;
    PackedQuat packed{static_cast<std::uint32_t>(left_out)};
    unsigned shift = 2;
    for (std::size_t i = 0; i < 4; ++i) {
        if (i == left_out)
            continue;
        packed.bits |= code_of(sign * components[i]) << shift;
        shift += 10;
    }
    return packed;
}

GQuat unpack(PackedQuat packed) {
    const float a = component_of((packed.bits >> 2) & largest_code);
    const float b = component_of((packed.bits >> 12) & largest_code);
    const float c = component_of(packed.bits >> 22);
    const float d = std::sqrt(std::clamp(1 - a * a - b * b - c * c, 0.0f, 1.0f));
    switch (packed.bits & 3u) {
    case 0:
        return {d, a, b, c};
    case 1:
        return {a, d, b, c};
    case 2:
        return {a, b, d, c};
    default:
        return {a, b, c, d};
    }
}

} // namespace kst
