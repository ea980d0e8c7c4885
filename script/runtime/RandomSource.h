#pragma once

#include <cstdint>
#include <random>

#include "source/utility/math/GQuat.h"

namespace kst::script {

/// Random numbers that only a seed decides: the same seed gives the same numbers everywhere.
class RandomSource {
public:
    static constexpr std::uint32_t default_seed = 5489;

    explicit RandomSource(std::uint32_t seed = default_seed) : generator_(seed) {}

    /// 0 to below 1, in steps of 2^-24, which a float holds exactly.
    float unit();
    /// A vector of the same length, evenly spread over the directions at most `angle` radians away. 0 gives the vector
    /// itself, pi and more any direction.
    Vector3 spread(const Vector3& vector, float angle);
    /// Of length 1, at a right angle to `v`; any direction for the zero vector.
    Vector3 orthogonal(const Vector3& v);
    /// About an axis, by -max_angle to below max_angle radians.
    GQuat rotation(const Vector3& axis, float max_angle);

private:
    std::mt19937 generator_; // defined to the bit by the standard, unlike its distributions
};

/// 0 to below 1 from the system's source of randomness, for what must not be guessed.
float unguessable_unit();

/// Stretches 0 to below 1 to `low` to below `high`; `low` if they are equal.
float stretched(float unit, float low, float high);

} // namespace kst::script
