#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace mosaicer {

/// A stretch of one axis as the overlap test sees it: open at both ends, `begin` <= `end`.
struct Extent {
    std::int32_t begin = 0;
    std::int32_t end = 0;
};

/// How the overlap test sees a size: an odd one as the next smaller even one.
///
/// The test asks for the distance of the centres x + size / 2 against the sum of the halves, all rounded down. Written
/// out, [x, x + seen_size) are the only texels that ever count, and a size of 1 covers none.
constexpr std::int32_t seen_size(std::int32_t size) {
    return size / 2 * 2;
}
static_assert(seen_size(7) == 6 && seen_size(6) == 6 && seen_size(1) == 0);

constexpr Extent seen_extent(std::int32_t begin, std::int32_t size) {
    return {begin, begin + seen_size(size)};
}

/// True when the two stretches share more than an edge. One of no length counts where it lies strictly inside the
/// other.
constexpr bool overlap(const Extent& a, const Extent& b) {
    return a.begin < b.end && b.begin < a.end;
}

/// A few stretches of one axis, ascending. Eight are the most that a surface is divided in.
class ExtentList {
public:
    void push_back(const Extent& extent) { items_[size_++] = extent; }
    Extent& back() { return items_[size_ - 1]; }
    bool empty() const { return size_ == 0; }
    const Extent* begin() const { return items_.data(); }
    const Extent* end() const { return items_.data() + size_; }

private:
    std::array<Extent, 8> items_;
    std::size_t size_ = 0;
};

/// The fixed division of a surface that free space is judged in.
///
/// The surface is halved in turn by width and by height, five times in all or until a side of 1 is to be halved:
///
///     +----+----+----+----+----+----+----+----+
///     |    |    |    |    |    |    |    |    |     8 columns by 4 rows on any surface
///     +----+----+----+----+----+----+----+----+     at least 8 wide and 4 tall
///     :                                       :
///
/// A cell of odd size loses its last column or row to neither half, and what no leaf covers is seen by no test. A
/// rectangle is judged leaf by leaf, so what is left of it for the tests are its pieces inside the leaves: the product
/// of its pieces along x and its pieces along y.
class LeafGrid {
public:
    LeafGrid(std::int32_t width, std::int32_t height);

    const ExtentList& columns() const { return columns_; }
    const ExtentList& rows() const { return rows_; }

private:
    ExtentList columns_;
    ExtentList rows_;
};

/// The parts of `seen` inside the cells of one axis.
///
/// `smallest_probe` is the least seen size of the rectangles that the pieces are to hinder. Two pieces with a gap that
/// none of these fits in become one, so that on an even division an obstacle stays in one piece. For probes of no
/// length (0) nothing is joined, and a piece with no whole position strictly inside is left out.
ExtentList pieces_in(const ExtentList& cells, const Extent& seen, std::int32_t smallest_probe);

} // namespace mosaicer
