#include "packing/FreeSpace.h"

#include "packing/LeafGrid.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace mosaicer {

namespace {

constexpr bool holds(const EdgeRect& outer, const EdgeRect& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

constexpr bool touch_or_overlap(const EdgeRect& a, const EdgeRect& b) {
    return a.left <= b.right && b.left <= a.right && a.top <= b.bottom && b.top <= a.bottom;
}

constexpr bool overlap(const EdgeRect& a, const EdgeRect& b) {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

/// The first multiple of `step` at or above `value`, which is 0 or more. The sums stay below 2^32, and dividing in 32
/// bits is several times faster.
constexpr std::int64_t round_up(std::int32_t value, std::int32_t step) {
    if (step == 1)
        return value;
    const auto stride = static_cast<std::uint32_t>(step);
    return (static_cast<std::uint32_t>(value) + stride - 1) / stride * stride;
}
static_assert(round_up(2147483647, 2147483646) == 4294967292 && round_up(6, 3) == 6 && round_up(0, 7) == 0);

/// The growing regions along one axis.
struct Regions {
    std::int64_t first;
    std::int64_t growth;
    std::int64_t whole;

    Regions(std::int32_t side, std::int32_t grow) : first(std::max(side / 8, 1)), growth(grow), whole(side) {}

    /// The first pass whose region reaches `end`.
    std::int64_t pass_reaching(std::int64_t end) const {
        return end <= first ? 0 : (end - first + growth - 1) / growth;
    }

    /// The first pass whose side, before it is cut back, is greater than the surface.
    std::int64_t pass_beyond() const { return (whole - first) / growth + 1; }
};

} // namespace

FreeSpace::FreeSpace(std::int32_t width, std::int32_t height, std::int32_t min_width, std::int32_t min_height)
    : width_(width), height_(height), min_width_(min_width), min_height_(min_height) {
    reset();
}

void FreeSpace::reset() {
    free_.clear();
    if (width_ >= min_width_ && height_ >= min_height_)
        free_.push_back({0, 0, width_, height_});
}

void FreeSpace::occupy(const EdgeRect& obstacle) {
    for (std::size_t i = 0; i < free_.size();) {
        const EdgeRect rect = free_[i];
        if (!touch_or_overlap(rect, obstacle)) {
            ++i;
        } else if (!overlap(rect, obstacle)) {
            neighbours_.push_back(rect);
            ++i;
        } else {
            add_sides(rect, obstacle);
            free_[i] = free_.back();
            free_.pop_back();
        }
    }
    for (auto* side : {&left_, &right_, &above_, &below_})
        keep_largest(*side);
    neighbours_.clear();
}

/// What is left of a free rectangle: up to four, one for each side of the obstacle, each of the rectangle's full length
/// along that side.
void FreeSpace::add_sides(const EdgeRect& rect, const EdgeRect& obstacle) {
    if (obstacle.left - rect.left >= min_width_)
        left_.push_back({rect.left, rect.top, obstacle.left, rect.bottom});
    if (rect.right - obstacle.right >= min_width_)
        right_.push_back({obstacle.right, rect.top, rect.right, rect.bottom});
    if (obstacle.top - rect.top >= min_height_)
        above_.push_back({rect.left, rect.top, rect.right, obstacle.top});
    if (rect.bottom - obstacle.bottom >= min_height_)
        below_.push_back({rect.left, obstacle.bottom, rect.right, rect.bottom});
}

/// Moves the rectangles of one side that no other free rectangle holds to the free space. Holders need to be sought
/// among the same side and the neighbours alone: a rectangle left of the obstacle reaches across its rows, so what
/// holds it must end at the obstacle's left edge too.
void FreeSpace::keep_largest(std::vector<EdgeRect>& side) {
    for (std::size_t i = 0; i < side.size();) {
        bool held = is_held_by_neighbour(side[i]);
        for (std::size_t j = 0; j < side.size() && !held; ++j)
            held = j != i && holds(side[j], side[i]);
        if (!held) {
            ++i;
            continue;
        }
        side[i] = side.back();
        side.pop_back();
    }
    free_.insert(free_.end(), side.begin(), side.end());
    side.clear();
}

bool FreeSpace::is_held_by_neighbour(const EdgeRect& rect) const {
    return std::any_of(neighbours_.begin(), neighbours_.end(),
                       [&](const EdgeRect& neighbour) { return holds(neighbour, rect); });
}

std::optional<Position> FreeSpace::first_free(const WalkRequest& request) const {
    const Regions regions_x(width_, request.grow_x);
    const Regions regions_y(height_, request.grow_y);
    const std::int64_t pass_end =
        request.expanding_square ? std::max(regions_x.pass_beyond(), regions_y.pass_beyond()) : 1;
    const std::int32_t seen_width = seen_size(request.width);
    const std::int32_t seen_height = seen_size(request.height);

    constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
    std::tuple<std::int64_t, std::int64_t, std::int64_t> best{pass_end, never, never}; // pass, y, x
    for (const EdgeRect& rect : free_) {
        if (rect.right - rect.left < seen_width || rect.bottom - rect.top < seen_height)
            continue;
        if (!request.expanding_square && rect.top > std::get<1>(best))
            continue;
        const std::int64_t y = round_up(rect.top, request.step_y);
        if (y + seen_height > rect.bottom || y + request.height > height_)
            continue;
        const std::int64_t x = round_up(rect.left, request.step_x);
        if (x + seen_width > rect.right || x + request.width > width_)
            continue;
        std::int64_t pass = 0;
        if (request.expanding_square)
            pass = std::max(regions_x.pass_reaching(x + request.width), regions_y.pass_reaching(y + request.height));
        if (pass < pass_end)
            best = std::min(best, {pass, y, x});
    }
    const auto [pass, y, x] = best;
    if (y == never)
        return std::nullopt;
    return Position{static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)};
}

} // namespace mosaicer
