#include "compression/ExhaustiveSearch.h"

#include "compression/ColourLattice.h"
#include "compression/DistinctColours.h"
#include "compression/PaletteError.h"

#include <algorithm>
#include <cmath>

namespace compression {
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
    Search(BlockContext& block, double error, const PaletteBoundKernels& kernels)
        : block_(block),
          kernels_(kernels),
          tables_(block),
          best_{error, 0, block.colour_count, block.end0, block.end1} {
        const DistinctColours colours(block);
        mean_ = colours.mean;
        axis_ = find_axis(colours);
        kernels_.fill(tables_);
    }

    void run(std::size_t walk_number) {
        const Walk& walk = walks[walk_number];
        if (axis_[walk.main] == 0.0)
            return;
        walk_ = &walk;
        rank_base_ = (walk_number + 1) << 32;
        prepare_ends();
        for (int i = 0; i <= 30; ++i) {
            if (!has_values(i))
                continue;
            PairBounds bounds;
            kernels_.bound_pairs(tables_, ends_, i, reach_limit(best_.error), bounds);
            for (int j = i + 1; j <= walk.last; ++j) {
                if (!has_values(j))
                    continue;
                if (may_reach(bounds.three[static_cast<std::size_t>(j)], best_.error))
                    try_pair(i, j, 3);
                if (may_reach(bounds.four[static_cast<std::size_t>(j)], best_.error))
                    try_pair(i, j, 4);
            }
        }
    }

    double finish() {
        if (best_.rank > 0) {
            block_.colour_count = best_.colour_count;
            block_.end0 = best_.end0;
            block_.end1 = best_.end1;
            evaluate_palette(block_);
        }
        return best_.error;
    }

private:
    // Candidates count from 1 in the order of the plain walks, so that of equal errors the first one stays, whatever
    // the order of evaluation. 0 is the block as it came.
    struct Best {
        double error;
        std::size_t rank;
        int colour_count;
        std::array<int, 3> end0;
        std::array<int, 3> end1;
    };

    // The stored value of channel `c` where the axis passes `stored` on the main channel.
    int derive(int stored, std::size_t c) const {
        const double v = expand_bits(stored, channel_bits[walk_->main]);
        const double t = (v / 255 * block_.weights[walk_->main] - mean_[walk_->main]) / axis_[walk_->main];
        const double value = (t * axis_[c] + mean_[c]) / block_.weights[c] * channel_max[c];
        // Far values are out of range either way.
        return std::isnan(value) ? 0 : static_cast<int>(std::min(std::max(value, -1000.0), 1000.0));
    }

    void prepare_ends() {
        ends_.main = walk_->main;
        ends_.count = channel_max[walk_->main] + 1;
        for (int stored = 0; stored < ends_.count; ++stored) {
            const auto s = static_cast<std::size_t>(stored);
            const int byte = expand_bits(stored, channel_bits[walk_->main]);
            ends_.low[walk_->main][s] = ends_.high[walk_->main][s] = byte;
            PixelRow distance = tables_.squared[walk_->main][static_cast<std::size_t>(byte)];
            for (std::size_t d = 0; d < 2; ++d)
                add_derived(s, d, derive(stored, walk_->derived[d]), distance);
            for (std::size_t pixel = 0; pixel < tables_.pixel_count; ++pixel)
                ends_.distance[pixel][s] = distance[pixel];
        }
    }

    void add_derived(std::size_t s, std::size_t d, int centre, PixelRow& distance) {
        const std::size_t c = walk_->derived[d];
        centres_[s][d] = centre;
        const int low = std::max(centre - 1, 0);
        const int high = std::min(centre + 1, channel_max[c]);
        legal_[s][d] = low <= high;
        if (low > high)
            return;
        ends_.low[c][s] = expand_bits(low, channel_bits[c]);
        ends_.high[c][s] = expand_bits(high, channel_bits[c]);
        PixelRow nearest = table_row(c, low);
        for (int value = low + 1; value <= high; ++value)
            for (std::size_t i = 0; i < 16; ++i)
                nearest[i] = std::min(nearest[i], table_row(c, value)[i]);
        for (std::size_t i = 0; i < 16; ++i)
            distance[i] += nearest[i];
    }

    const PixelRow& table_row(std::size_t c, int stored) const {
        return tables_.squared[c][static_cast<std::size_t>(expand_bits(stored, channel_bits[c]))];
    }

    bool has_values(int stored) const {
        return legal_[static_cast<std::size_t>(stored)][0] && legal_[static_cast<std::size_t>(stored)][1];
    }

    // The bytes of a palette's entries on one channel. Black, or a repeated entry, stands fourth of three colours.
    EntryBytes entry_bytes(int p0, int p1, int colour_count) const {
        if (colour_count == 4)
            return {p0, p1, (2 * p0 + p1) / 3, (p0 + 2 * p1) / 3};
        return {p0, p1, (p0 + p1) / 2, tables_.offers_black ? 0 : p0};
    }

    // The legal choices of one derived channel at both ends, in the order of the plain walk.
    struct Choices {
        std::size_t count = 0;
        std::array<EntryBytes, 9> bytes;
        std::array<std::array<int, 2>, 9> stored;
        std::array<std::array<int, 2>, 9> offsets; // 0 to 2
    };

    Choices choices_of(std::size_t d, std::size_t i, std::size_t j, int colour_count) const {
        const std::size_t c = walk_->derived[d];
        Choices choices;
        for (int offset0 = 0; offset0 < 3; ++offset0)
            for (int offset1 = 0; offset1 < 3; ++offset1) {
                const int stored0 = centres_[i][d] + offset0 - 1;
                const int stored1 = centres_[j][d] + offset1 - 1;
                if (stored0 < 0 || stored0 > channel_max[c] || stored1 < 0 || stored1 > channel_max[c])
                    continue;
                choices.bytes[choices.count] = entry_bytes(expand_bits(stored0, channel_bits[c]),
                                                           expand_bits(stored1, channel_bits[c]), colour_count);
                choices.stored[choices.count] = {stored0, stored1};
                choices.offsets[choices.count++] = {offset0, offset1};
            }
        return choices;
    }

    // Tries all values of the derived channels, the second derived channel behind the bounds of the first.
    void try_pair(int i, int j, int colour_count) {
        const auto end0 = static_cast<std::size_t>(i);
        const auto end1 = static_cast<std::size_t>(j);
        const auto [c, d] = walk_->derived;
        const Choices first = choices_of(0, end0, end1, colour_count);
        const Choices second = choices_of(1, end0, end1, colour_count);
        const EntryBytes main = entry_bytes(ends_.low[walk_->main][end0], ends_.low[walk_->main][end1], colour_count);
        EntryRows main_rows;
        for (std::size_t entry = 0; entry < 4; ++entry)
            main_rows[entry] = tables_.squared[walk_->main][static_cast<std::size_t>(main[entry])];
        EntryRows boxed = main_rows;
        kernels_.add_boxes(tables_, d, entry_bytes(ends_.low[d][end0], ends_.low[d][end1], colour_count),
                           entry_bytes(ends_.high[d][end0], ends_.high[d][end1], colour_count), boxed);
        std::array<float, 9> bounds{};
        kernels_.sum_least(tables_, c, boxed, {first.bytes.data(), first.count}, bounds.data());
        for (std::size_t a = 0; a < first.count; ++a) {
            if (!may_reach(bounds[a], best_.error))
                continue;
            EntryRows rows = main_rows;
            for (std::size_t entry = 0; entry < 4; ++entry)
                for (std::size_t pixel = 0; pixel < 16; ++pixel)
                    rows[entry][pixel] += tables_.squared[c][static_cast<std::size_t>(first.bytes[a][entry])][pixel];
            std::array<float, 9> errors{};
            kernels_.sum_least(tables_, d, rows, {second.bytes.data(), second.count}, errors.data());
            for (std::size_t b = 0; b < second.count; ++b)
                if (may_reach(errors[b], best_.error))
                    try_ends(i, j, colour_count, first, a, second, b);
        }
    }

    void try_ends(int i, int j, int colour_count, const Choices& first, std::size_t a, const Choices& second,
                  std::size_t b) {
        const auto offset = [](int value) { return static_cast<std::size_t>(value); };
        std::size_t rank = offset(i) * 64 + offset(j);
        for (const std::size_t end : {std::size_t{0}, std::size_t{1}})
            rank = (rank * 3 + offset(first.offsets[a][end])) * 3 + offset(second.offsets[b][end]);
        rank = rank_base_ + rank * 2 + (colour_count == 4 ? 1 : 0);

        const auto [c, d] = walk_->derived;
        BlockContext& candidate = scratch_;
        candidate.colour_count = colour_count;
        candidate.end0[walk_->main] = i;
        candidate.end1[walk_->main] = j;
        candidate.end0[c] = first.stored[a][0];
        candidate.end1[c] = first.stored[a][1];
        candidate.end0[d] = second.stored[b][0];
        candidate.end1[d] = second.stored[b][1];
        const double error = evaluate_palette(candidate);
        if (error < best_.error || (error == best_.error && rank < best_.rank))
            best_ = {error, rank, colour_count, candidate.end0, candidate.end1};
    }

    BlockContext& block_;
    BlockContext scratch_ = block_;
    const PaletteBoundKernels& kernels_;
    DistanceTables tables_;
    Best best_;
    Vector3 mean_{};
    Vector3 axis_{};
    const Walk* walk_ = nullptr;
    std::size_t rank_base_ = 0;
    WalkEnds ends_;
    std::array<std::array<int, 2>, 64> centres_{};
    std::array<std::array<bool, 2>, 64> legal_{};
};

} // namespace

double exhaustive_search(BlockContext& block, double error) {
    return exhaustive_search(block, error, palette_bound_kernels().back());
}

double exhaustive_search(BlockContext& block, double error, const PaletteBoundKernels& kernels) {
    Search search(block, error, kernels);
    for (std::size_t walk = 0; walk < walks.size(); ++walk)
        search.run(walk);
    return search.finish();
}

} // namespace compression
