#include "tests/compression/oracle/Searches.h"

#include "compression/ColourLattice.h"
#include "compression/DistinctColours.h"

#include <algorithm>
#include <cmath>

namespace compression::oracle {
namespace {

using Matrix = std::array<Vector3, 3>;

// One Jacobi rotation that clears m[p][q]; `vectors` collects the rotations in its columns.
void rotate(Matrix& m, Matrix& vectors, std::size_t p, std::size_t q) {
    if (m[p][q] == 0.0)
        return;
    const double theta = (m[q][q] - m[p][p]) / (2 * m[p][q]);
    const double t = (theta < 0 ? -1 : 1) / (std::abs(theta) + std::sqrt(theta * theta + 1));
    const double c = 1 / std::sqrt(t * t + 1);
    const double s = t * c;
    for (std::size_t k = 0; k < 3; ++k) {
        const double kp = m[k][p];
        const double kq = m[k][q];
        m[k][p] = c * kp - s * kq;
        m[k][q] = s * kp + c * kq;
    }
    for (std::size_t k = 0; k < 3; ++k) {
        const double pk = m[p][k];
        const double qk = m[q][k];
        m[p][k] = c * pk - s * qk;
        m[q][k] = s * pk + c * qk;
        const double vp = vectors[k][p];
        const double vq = vectors[k][q];
        vectors[k][p] = c * vp - s * vq;
        vectors[k][q] = s * vp + c * vq;
    }
}

// The unit eigenvector of the largest eigenvalue of the pixels' covariance.
Vector3 find_axis(const DistinctColours& colours) {
    Matrix m{};
    for (std::size_t i = 0; i < colours.pixel_count; ++i)
        for (std::size_t a = 0; a < 3; ++a)
            for (std::size_t b = 0; b < 3; ++b)
                m[a][b] += colours.centred_pixels[i][a] * colours.centred_pixels[i][b];
    Matrix vectors{Vector3{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    constexpr int sweeps = 12; // converges in 4 to 6
    for (int sweep = 0; sweep < sweeps; ++sweep) {
        rotate(m, vectors, 0, 1);
        rotate(m, vectors, 0, 2);
        rotate(m, vectors, 1, 2);
    }
    std::size_t largest = 0;
    for (std::size_t c = 1; c < 3; ++c)
        if (m[c][c] > m[largest][largest])
            largest = c;
    const Vector3 axis{vectors[0][largest], vectors[1][largest], vectors[2][largest]};
    const double length = std::sqrt(dot(axis, axis));
    return {axis[0] / length, axis[1] / length, axis[2] / length};
}

struct Walk {
    std::size_t main;
    std::array<std::size_t, 2> derived;
    int last; // of the second end's main channel
};
constexpr std::array walks{Walk{0, {1, 2}, 31}, Walk{1, {0, 2}, 63}, Walk{2, {0, 1}, 31}};

class Search {
public:
    Search(BlockContext& block, double error) : best_(block), block_(block), error_(error) {
        const DistinctColours colours(block);
        mean_ = colours.mean;
        axis_ = find_axis(colours);
    }

    void run(const Walk& walk) {
        if (axis_[walk.main] == 0.0)
            return;
        for (int i = 0; i <= 30 && error_ > 0; ++i)
            for (int j = i + 1; j <= walk.last; ++j)
                try_pair(walk, i, j);
    }

    double finish() {
        best_ = block_;
        return error_;
    }

private:
    // The stored value of channel `c` where the axis passes `stored` on the main channel.
    int derive(const Walk& walk, int stored, std::size_t c) const {
        const double v = expand_bits(stored, channel_bits[walk.main]);
        const double t = (v / 255 * best_.weights[walk.main] - mean_[walk.main]) / axis_[walk.main];
        const double value = (t * axis_[c] + mean_[c]) / best_.weights[c] * channel_max[c];
        // Far values are out of range either way.
        return std::isnan(value) ? 0 : static_cast<int>(std::min(std::max(value, -1000.0), 1000.0));
    }

    void try_pair(const Walk& walk, int i, int j) {
        const auto [c, d] = walk.derived;
        const std::array<int, 4> centre{derive(walk, i, c), derive(walk, i, d), derive(walk, j, c), derive(walk, j, d)};
        std::array<int, 3> end0{};
        std::array<int, 3> end1{};
        end0[walk.main] = i;
        end1[walk.main] = j;
        for (end0[c] = centre[0] - 1; end0[c] <= centre[0] + 1; ++end0[c])
            for (end0[d] = centre[1] - 1; end0[d] <= centre[1] + 1; ++end0[d])
                for (end1[c] = centre[2] - 1; end1[c] <= centre[2] + 1; ++end1[c])
                    for (end1[d] = centre[3] - 1; end1[d] <= centre[3] + 1; ++end1[d])
                        try_ends(end0, end1);
    }

    void try_ends(const std::array<int, 3>& end0, const std::array<int, 3>& end1) {
        for (std::size_t c = 0; c < 3; ++c)
            if (end0[c] < 0 || end0[c] > channel_max[c] || end1[c] < 0 || end1[c] > channel_max[c])
                return;
        BlockContext candidate = best_;
        candidate.end0 = end0;
        candidate.end1 = end1;
        for (candidate.colour_count = 3; candidate.colour_count <= 4; ++candidate.colour_count) {
            const double error = evaluate_palette(candidate);
            if (error < error_) {
                error_ = error;
                block_ = candidate;
            }
        }
    }

    BlockContext& best_;
    BlockContext block_;
    double error_;
    Vector3 mean_{};
    Vector3 axis_{};
};

} // namespace

double exhaustive_search(BlockContext& block, double error) {
    Search search(block, error);
    for (const Walk& walk : walks)
        search.run(walk);
    return search.finish();
}

} // namespace compression::oracle
