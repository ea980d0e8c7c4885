#include "packing/LeafGrid.h"

#include <algorithm>

namespace mosaicer {

namespace {

/// One axis while the division goes on: equally sized cells.
struct Axis {
    std::array<std::int32_t, 8> starts{};
    std::size_t count = 1;
    std::int32_t size;

    explicit Axis(std::int32_t whole) : size(whole) {}

    void halve() {
        size /= 2;
        for (std::size_t i = count; i-- > 0;) {
            starts[2 * i + 1] = starts[i] + size;
            starts[2 * i] = starts[i];
        }
        count *= 2;
    }

    ExtentList extents() const {
        ExtentList list;
        for (std::size_t i = 0; i < count; ++i)
            list.push_back(seen_extent(starts[i], size));
        return list;
    }
};

} // namespace

LeafGrid::LeafGrid(std::int32_t width, std::int32_t height) {
    constexpr int depth_limit = 5;
    Axis x(width);
    Axis y(height);
    for (int depth = 0; depth < depth_limit; ++depth) {
        Axis& axis = depth % 2 == 0 ? x : y;
        if (axis.size == 1)
            break;
        axis.halve();
    }
    columns_ = x.extents();
    rows_ = y.extents();
}

ExtentList pieces_in(const ExtentList& cells, const Extent& seen, std::int32_t smallest_probe) {
    ExtentList pieces;
    for (const Extent& cell : cells) {
        if (!overlap(cell, seen))
            continue;
        const Extent piece{std::max(cell.begin, seen.begin), std::min(cell.end, seen.end)};
        if (!pieces.empty() && piece.begin - pieces.back().end < smallest_probe)
            pieces.back().end = piece.end;
        else if (smallest_probe > 0 || piece.end - piece.begin >= 2)
            pieces.push_back(piece);
    }
    return pieces;
}

} // namespace mosaicer
