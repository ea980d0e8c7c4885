#include "compression/ClusterFit.h"

#include "compression/DistinctColours.h"
#include "compression/LatticeSearch.h"
#include "compression/LineFit.h"
#include "compression/SolidColour.h"
#include "compression/Symmetric.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace compression {
namespace {

void hold_to_unit(double& value) {
    value = value > 0.0 ? std::min(value, 1.0) : 0.0; // also where it is no number
}

Vector3 principal_axis(std::span<const Vector3> pixels) {
    Symmetric<double> m{};
    for (const Vector3& q : pixels) {
        m.xx += q[0] * q[0];
        m.xy += q[0] * q[1];
        m.xz += q[0] * q[2];
        m.yy += q[1] * q[1];
        m.yz += q[1] * q[2];
        m.zz += q[2] * q[2];
    }
    for (int round = 0; round < 3; ++round) {
        m = m.scaled(3.5 / m.trace());
        for (int i = 0; i < 8; ++i)
            m = m.squared();
    }
    const std::array<Vector3, 3> columns{Vector3{m.xx, m.xy, m.xz}, {m.xy, m.yy, m.yz}, {m.xz, m.yz, m.zz}};
    const std::size_t largest = m.xx <= m.yy ? (m.yy <= m.zz ? 2 : 1) : (m.xx <= m.zz ? 2 : 0);
    Vector3 axis{};
    for (std::size_t c = 0; c < 3; ++c)
        axis[c] = columns[largest][c] / std::sqrt(columns[largest][largest]);
    return axis;
}

Vector3 farthest_difference(const DistinctColours& colours) {
    Vector3 farthest{};
    double distance = -1;
    for (std::size_t a = 0; a < colours.count; ++a)
        for (std::size_t b = a + 1; b < colours.count; ++b) {
            Vector3 difference{};
            for (std::size_t c = 0; c < 3; ++c)
                difference[c] = colours.centred[a][c] - colours.centred[b][c];
            const double squared = dot(difference, difference);
            if (squared > distance) {
                distance = squared;
                farthest = difference;
            }
        }
    for (double& component : farthest)
        component /= std::sqrt(distance);
    return farthest;
}

/// Which of two equal projections comes first: the earlier or the later colour.
enum class TieMode { earlier, later };

Order sort_by(const DistinctColours& colours, const Vector3& axis, TieMode ties) {
    std::array<double, 16> keys;
    keys.fill(std::numeric_limits<double>::infinity());
    for (std::size_t k = 0; k < colours.count; ++k)
        keys[k] = dot(colours.centred[k], axis);
    // A key's place is the number of keys below it, without a branch that a processor could guess wrong.
    std::array<std::int64_t, 16> places{};
    for (std::size_t k = 0; k < 16; ++k)
        for (std::size_t other = 0; other < 16; ++other)
            places[other] += keys[k] < keys[other] ? 1 : 0;
    // Equal keys move up in turn.
    Order order{};
    unsigned taken = 0;
    for (std::size_t n = 0; n < colours.count; ++n) {
        const std::size_t k = ties == TieMode::earlier ? n : colours.count - 1 - n;
        auto place = static_cast<std::size_t>(places[k]);
        while ((taken >> place & 1U) != 0)
            ++place;
        taken |= 1U << place;
        order[place] = static_cast<std::uint8_t>(k);
    }
    return order;
}

/// The last 16 orders that the rounds of a fit have come to.
class OrderRing {
public:
    explicit OrderRing(std::size_t count) : count_(count) {}

    /// Puts the order by `axis` into the ring, with the other tie mode if it is known. False if it is known either way.
    bool add(const DistinctColours& colours, const Vector3& axis, Order& order) {
        const std::size_t slot = added_++ % ring_.size();
        for (const TieMode ties : {TieMode::earlier, TieMode::later}) {
            order = ring_[slot] = sort_by(colours, axis, ties);
            if (!is_known(slot))
                return true;
        }
        return false;
    }

private:
    bool is_known(std::size_t slot) const {
        const std::size_t filled = std::min(added_, ring_.size());
        for (std::size_t i = 0; i < filled; ++i)
            if (i != slot && matches(ring_[i], ring_[slot]))
                return true;
        return false;
    }
    bool matches(const Order& a, const Order& b) const {
        const auto end = static_cast<std::ptrdiff_t>(count_);
        return std::equal(a.begin(), a.begin() + end, b.begin()) ||
               std::equal(a.begin(), a.begin() + end, std::make_reverse_iterator(b.begin() + end));
    }

    std::size_t count_;
    std::size_t added_ = 0;
    std::array<Order, 16> ring_{};
};

struct Pass {
    Order order{};
    bool fitted = false;
    LineFit fit;
};

bool leaves_box(const LineFit& fit, const Vector3& mean, const Vector3& weights) {
    for (std::size_t c = 0; c < 3; ++c)
        for (const double end : {fit.end0[c], fit.end1[c]})
            if (end < -mean[c] || end > weights[c] - mean[c])
                return true;
    return false;
}

// Rounds of fit and order, until an order is known.
template <typename Fit>
void run_pass(Pass& pass, OrderRing& ring, const DistinctColours& colours, int rounds, const Vector3* first_axis,
              const Fit& fit) {
    for (int round = 0; round < rounds; ++round) {
        Vector3 axis{};
        if (round == 0 && first_axis != nullptr) {
            axis = *first_axis;
        } else {
            pass.fit = fit(pass.order);
            pass.fitted = true;
            axis = pass.fit.axis;
        }
        if (!ring.add(colours, axis, pass.order))
            return;
    }
}

// A row gives new ends from a fit's: a e0 + b e1 and c e0 + d e1.
struct EndRow {
    int fitted_colours;
    int levels;
    double a, b, c, d;
};
// Two groups may be the ends of a palette or neighbours in it; three groups may be neighbours among four.
constexpr std::array end_rows{
    EndRow{2, 3, 2, -1, 0, 1},     EndRow{2, 3, 1, 0, -1, 2},     EndRow{2, 4, 1, 0, 0, 1},
    EndRow{2, 4, 1, 0, -2, 3},     EndRow{2, 4, 3, -2, 0, 1},     EndRow{2, 4, 2, -1, -1, 2},
    EndRow{2, 4, 1.5, -0.5, 0, 1}, EndRow{2, 4, 1, 0, -0.5, 1.5}, EndRow{3, 4, 1.5, -0.5, 0, 1},
    EndRow{3, 4, 1, 0, -0.5, 1.5},
};

// Moves the ends onto the lattice and writes the block's results.
void lattice_step(BlockContext& block, const DistinctColours& colours, int fitted_colours, int colour_limit,
                  const Vector3& e0, const Vector3& e1) {
    LatticeResult best = lattice_search(colours, block.weights, fitted_colours == 4 ? 4 : 3, e0, e1);
    for (const EndRow& row : end_rows) {
        if (row.fitted_colours != fitted_colours || row.levels > colour_limit)
            continue;
        Vector3 f0{};
        Vector3 f1{};
        for (std::size_t c = 0; c < 3; ++c) {
            f0[c] = row.a * e0[c] + row.b * e1[c];
            f1[c] = row.c * e0[c] + row.d * e1[c];
        }
        const LatticeResult result = lattice_search(colours, block.weights, row.levels, f0, f1);
        if (result.error < best.error)
            best = result;
    }
    block.colour_count = best.levels;
    block.end0 = best.end0;
    block.end1 = best.end1;
    for (std::size_t i = 0; i < static_cast<std::size_t>(block.count); ++i)
        block.indices[i] = best.indices[colours.of_pixel[i]];
}

// Holds the block and gives it back.
BlockContext& held(BlockContext& block) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(block.count); ++i)
        std::for_each(block.colours[i].begin(), block.colours[i].end(), hold_to_unit);
    std::for_each(block.weights.begin(), block.weights.end(), hold_to_unit);
    return block;
}

} // namespace

ClusterFit::ClusterFit(BlockContext& block)
    : colours_(held(block)), solid_(is_single_colour(block) || colours_.count == 1) {
    if (solid_ || colours_.count == 2)
        return;
    const std::span pixels(colours_.centred_pixels.data(), colours_.pixel_count);
    start_ = sort_by(colours_, principal_axis(pixels), TieMode::earlier);
    farthest_ = farthest_difference(colours_);
}

LineFit ClusterFit::search_line(const Vector3& weights, int step_limit) const {
    constexpr int line_rounds = 17;
    constexpr int box_rounds = 9;
    const auto free_fit = [&](const Order& order) { return fit_line(colours_, order, step_limit); };
    const auto box_fit = [&](const Order& order) { return fit_line_in_box(colours_, order, step_limit, weights); };
    OrderRing ring(colours_.count);
    Pass first;
    first.order = start_;
    run_pass(first, ring, colours_, line_rounds, nullptr, free_fit);
    Pass second;
    second.order = first.order;
    run_pass(second, ring, colours_, line_rounds, &farthest_, free_fit);
    Pass best = second.fitted && second.fit.score <= first.fit.score ? second : first;
    if (leaves_box(best.fit, colours_.mean, weights))
        run_pass(best, ring, colours_, box_rounds, nullptr, box_fit);
    return best.fit;
}

void ClusterFit::run(BlockContext& block, int colour_limit) const {
    if (solid_)
        return fit_solid_colour(block, colours_.weighted[0], colour_limit);
    const bool four = block.colour_mode == COLOUR_MODE_FOUR;
    if (colours_.count == 2)
        return lattice_step(block, colours_, four ? 4 : 2, colour_limit, colours_.weighted[0], colours_.weighted[1]);

    const LineFit fit = search_line(block.weights, colour_limit - 1);
    Vector3 e0{};
    Vector3 e1{};
    for (std::size_t c = 0; c < 3; ++c) {
        e0[c] = fit.end0[c] + colours_.mean[c];
        e1[c] = fit.end1[c] + colours_.mean[c];
    }
    lattice_step(block, colours_, four ? 4 : fit.steps + 1, colour_limit, e0, e1);
}

void cluster_fit(BlockContext& block, int colour_limit) {
    const ClusterFit fit(block);
    fit.run(block, colour_limit);
}

} // namespace compression
