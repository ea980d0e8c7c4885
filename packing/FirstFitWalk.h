#pragma once

#include "packing/FreeSpace.h"
#include "packing/LeafGrid.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace mosaicer {

/// Finds the first free position of a walk, and remembers what has been placed.
///
/// The outcome is that of testing candidate after candidate against the rectangles in each leaf of the LeafGrid; the
/// cost is that of the free rectangles that the placed ones leave (FreeSpace). Probes of one texel in width or height
/// are seen as lines and points, which fit where nothing else does. They get free spaces of their own, made when the
/// first such probe comes.
class FirstFitWalk {
public:
    FirstFitWalk(std::int32_t width, std::int32_t height);

    /// None: the walk ended without a free candidate.
    std::optional<Position> first_free(const WalkRequest& request);

    /// Records a placed rectangle, `width` and `height` 1 or more, inside the surface.
    void occupy(const Position& position, std::int32_t width, std::int32_t height);

    void reset();

private:
    struct Placed {
        Extent x;
        Extent y;
    };

    FreeSpace& space_for(const WalkRequest& request);
    void occupy_in(std::size_t kind, const Placed& placed);

    LeafGrid grid_;
    std::vector<Placed> placed_;
    std::array<std::optional<FreeSpace>, 4> spaces_; ///< by kind of probe: 1 for a width of 1, plus 2 for a height of 1
    std::int32_t width_;
    std::int32_t height_;
};

} // namespace mosaicer
