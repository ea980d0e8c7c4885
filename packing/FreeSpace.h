#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace mosaicer {

struct Position {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

/// A rectangle by its edges, in texels; the right and bottom edges are one past the last texel.
struct EdgeRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
};

/// One walk over candidate positions. Candidates are the multiples of the steps, row by row.
struct WalkRequest {
    std::int32_t width = 0; ///< of the rectangle to place, 1 or more
    std::int32_t height = 0;
    std::int32_t step_x = 1; ///< 1 or more
    std::int32_t step_y = 1;
    bool expanding_square = false; ///< walk in regions that grow, see FreeSpace
    std::int32_t grow_x = 1;       ///< growth of the region from pass to pass, 1 or more
    std::int32_t grow_y = 1;
};

/// The free part of a surface, as all of its largest free rectangles.
///
///     +-------+-----------+      Two entries A and B leave three of them: the column right of B over the
///     |   A   |  B  |     |      whole height, what lies below A over the whole width, and what lies below B
///     |       +-----+     |      from the right edge of A on. They overlap: a free rectangle is kept exactly
///     +-------+           |      when no other free rectangle holds it.
///     |                   |
///     +-------------------+
///
/// Every free position of a probe lies in one of them, and inside one rectangle the candidate that the walk meets first
/// is the one nearest to the top left corner, in x and y alike: also the one that a growing region reaches first. So
/// the first free candidate of the whole walk is the earliest of one candidate for each rectangle, and no position in
/// between is ever looked at.
///
/// The growing regions: pass 0 takes an eighth of each side (at least 1), each further pass adds `grow_x` and `grow_y`,
/// cut back to the surface. The passes end when both sides have gone past the surface, so the last pass may stop short
/// of it: on a side of 256 with growth 60 the regions are 32, 92, 152 and 212 wide, and no more.
class FreeSpace {
public:
    /// `min_width` and `min_height` are the least seen sizes of the probes to come, each 2 or 0: free rectangles below
    /// them are not kept. A probe of seen size 0 fits between two entries that touch; one of 2 or more does not.
    FreeSpace(std::int32_t width, std::int32_t height, std::int32_t min_width, std::int32_t min_height);

    /// Takes the obstacle out of the free space. It may have no width or height; it then hinders what it lies strictly
    /// inside of.
    void occupy(const EdgeRect& obstacle);

    /// The first free candidate of the walk; none if the walk ends without one.
    std::optional<Position> first_free(const WalkRequest& request) const;

    /// All is free again.
    void reset();

private:
    void add_sides(const EdgeRect& rect, const EdgeRect& obstacle);
    void keep_largest(std::vector<EdgeRect>& side);
    bool is_held_by_neighbour(const EdgeRect& rect) const;

    std::vector<EdgeRect> free_; ///< in no particular order
    std::int32_t width_;
    std::int32_t height_;
    std::int32_t min_width_;
    std::int32_t min_height_;

    // Work lists of one call of occupy, kept for their memory.
    std::vector<EdgeRect> neighbours_; ///< free rectangles that touch the obstacle
    std::vector<EdgeRect> left_, right_, above_, below_;
};

} // namespace mosaicer
