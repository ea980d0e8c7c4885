#include "compression/FastFit.h"

#include "compression/ColourLattice.h"
#include "compression/Symmetric.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace compression {
namespace {

using Vector3f = std::array<float, 3>;

float dot(const Vector3f& a, const Vector3f& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

void fast_solid(BlockContext& block) {
    for (std::size_t c = 0; c < 3; ++c) {
        const auto colour = static_cast<float>(block.colours[0][c]);
        block.end0[c] = round_half_up(colour * static_cast<float>(channel_max[c]));
    }
    block.end1 = block.end0;
    block.indices.fill(0);
    block.colour_count = 4;
}

// The block in weighted coordinates, the origin at the mean.
struct CentredPixels {
    std::size_t count = 0;
    Vector3f weights{};
    Vector3f mean{};
    std::array<Vector3f, 16> pixels{};

    explicit CentredPixels(const BlockContext& block) : count(static_cast<std::size_t>(block.count)) {
        for (std::size_t c = 0; c < 3; ++c) {
            weights[c] = static_cast<float>(block.weights[c]);
            for (std::size_t i = 0; i < count; ++i) {
                pixels[i][c] = static_cast<float>(block.colours[i][c]) * weights[c];
                mean[c] += pixels[i][c];
            }
            mean[c] /= static_cast<float>(count);
            for (std::size_t i = 0; i < count; ++i)
                pixels[i][c] -= mean[c];
        }
    }
};

// False: no extent.
bool find_axis(const CentredPixels& centred, Vector3f& axis) {
    Symmetric<float> m{};
    for (std::size_t i = 0; i < centred.count; ++i) {
        const Vector3f& q = centred.pixels[i];
        m.xx += q[0] * q[0];
        m.xy += q[0] * q[1];
        m.xz += q[0] * q[2];
        m.yy += q[1] * q[1];
        m.yz += q[1] * q[2];
        m.zz += q[2] * q[2];
    }
    for (int round = 0; round < 9; ++round) {
        m = m.squared().squared();
        if (m.trace() == 0.0f)
            return false;
        m = m.scaled(3.0f / m.trace());
    }
    const std::array<Vector3f, 3> columns{Vector3f{m.xx, m.xy, m.xz}, {m.xy, m.yy, m.yz}, {m.xz, m.yz, m.zz}};
    std::size_t largest = 0;
    for (std::size_t c = 1; c < 3; ++c)
        if (columns[c][c] > columns[largest][largest])
            largest = c;
    const float diagonal = columns[largest][largest];
    if (diagonal < 1.1920929e-07f)
        return false;
    for (std::size_t c = 0; c < 3; ++c)
        axis[c] = columns[largest][c] / std::sqrt(diagonal);
    return true;
}

// If `a` lies beyond the bound on channel `c` and `b` does not, moves `a` along the line onto the bound.
void clip_end(Vector3f& a, const Vector3f& b, std::size_t c, float bound, bool beyond) {
    if (!beyond)
        return;
    const float s = (bound - a[c]) / (b[c] - a[c]);
    for (std::size_t k = 0; k < 3; ++k)
        a[k] += s * (b[k] - a[k]);
    a[c] = bound;
}

void clip_line(Vector3f& a, Vector3f& b, const Vector3f& upper) {
    for (std::size_t c = 0; c < 3; ++c) {
        clip_end(a, b, c, 0.0f, a[c] < 0.0f && b[c] >= 0.0f);
        clip_end(b, a, c, 0.0f, b[c] < 0.0f && a[c] >= 0.0f);
        clip_end(a, b, c, upper[c], a[c] > upper[c] && b[c] <= upper[c]);
        clip_end(b, a, c, upper[c], b[c] > upper[c] && a[c] <= upper[c]);
    }
}

float cut_to_unit(float value) {
    return value > 0.0f ? std::min(value, 1.0f) : 0.0f; // also where it is no number
}

// Rounds the line's ends to the lattice, apart where they would meet, the larger word first.
void quantise_ends(BlockContext& block, const Vector3f& a, const Vector3f& b, const Vector3f& weights) {
    for (std::size_t c = 0; c < 3; ++c) {
        const auto scale = static_cast<float>(channel_max[c]);
        const auto stored = [&](const Vector3f& end) {
            return weights[c] == 0.0f ? 0.0f : cut_to_unit(end[c] / weights[c]) * scale;
        };
        const float x = stored(a);
        const float y = stored(b);
        block.end0[c] = static_cast<int>(std::nearbyint(x));
        block.end1[c] = static_cast<int>(std::nearbyint(y));
        if (block.end0[c] == block.end1[c]) {
            block.end0[c] = static_cast<int>(std::floor(x));
            block.end1[c] = static_cast<int>(std::ceil(y));
        }
    }
    if (pack_565(block.end0) < pack_565(block.end1))
        std::swap(block.end0, block.end1);
}

Vector3f weighted_end(const std::array<int, 3>& end, const Vector3f& weights) {
    Vector3f weighted{};
    for (std::size_t c = 0; c < 3; ++c)
        weighted[c] = static_cast<float>(end[c]) / static_cast<float>(channel_max[c]) * weights[c];
    return weighted;
}

} // namespace

void fast_fit(BlockContext& block, int colour_count) {
    block.colour_count = colour_count;
    if (is_single_colour(block))
        return fast_solid(block);
    const CentredPixels centred(block);
    Vector3f axis{};
    if (!find_axis(centred, axis))
        return fast_solid(block);

    // Adding 128 drops the low bits of a position: near-equal ones count as equal, and the first of them stays.
    float smallest = 0;
    float largest = 0;
    for (std::size_t i = 0; i < centred.count; ++i) {
        const auto key = [](float position) { return std::bit_cast<std::int32_t>(position + 128.0f); };
        const float position = dot(centred.pixels[i], axis) / dot(axis, axis);
        if (i == 0 || key(position) < key(smallest))
            smallest = position;
        if (i == 0 || key(position) > key(largest))
            largest = position;
    }
    Vector3f a{};
    Vector3f b{};
    for (std::size_t c = 0; c < 3; ++c) {
        a[c] = centred.mean[c] + smallest * axis[c];
        b[c] = centred.mean[c] + largest * axis[c];
    }
    clip_line(a, b, centred.weights);
    quantise_ends(block, a, b, centred.weights);

    const Vector3f e0 = weighted_end(block.end0, centred.weights);
    const Vector3f e1 = weighted_end(block.end1, centred.weights);
    const Vector3f d{e1[0] - e0[0], e1[1] - e0[1], e1[2] - e0[2]};
    if (d == Vector3f{})
        return fast_solid(block);
    const Vector3f from_end{centred.mean[0] - e0[0], centred.mean[1] - e0[1], centred.mean[2] - e0[2]};
    constexpr std::array<std::uint8_t, 4> four{0, 2, 3, 1};
    constexpr std::array<std::uint8_t, 4> three{0, 2, 1, 3};
    for (std::size_t i = 0; i < centred.count; ++i) {
        const float s = cut_to_unit((dot(from_end, d) + dot(centred.pixels[i], d)) / dot(d, d));
        const float place = std::nearbyint(s * static_cast<float>(colour_count - 1));
        block.indices[i] = (colour_count == 4 ? four : three)[static_cast<std::size_t>(place)];
    }
}

} // namespace compression
