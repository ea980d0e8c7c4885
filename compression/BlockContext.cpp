#include "compression/BlockContext.h"

#include <algorithm>

namespace compression {

bool is_single_colour(const BlockContext& block) {
    return std::all_of(block.colours.begin(), block.colours.begin() + block.count,
                       [&](const Vector3& colour) { return colour == block.colours[0]; });
}

} // namespace compression
