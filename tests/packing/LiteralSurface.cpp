#include "tests/packing/LiteralSurface.h"

#include <algorithm>
#include <cstdlib>

namespace mosaicer::testing_support {

namespace {

bool apart(std::int32_t a, std::int32_t a_size, std::int32_t b, std::int32_t b_size) {
    const std::int32_t distance = (b + b_size / 2) - (a + a_size / 2);
    return std::abs(distance) >= a_size / 2 + b_size / 2;
}

bool overlap(const LiteralRect& a, const LiteralRect& b) {
    return !apart(a.x, a.width, b.x, b.width) && !apart(a.y, a.height, b.y, b.height);
}

} // namespace

LiteralSurface::LiteralSurface(std::int32_t width, std::int32_t height) {
    root_.cell = {0, 0, width, height};
    split(root_, 0);
}

void LiteralSurface::split(Node& node, int depth) {
    const bool split_width = depth % 2 == 0;
    if (depth >= 5 || (split_width ? node.cell.width : node.cell.height) == 1)
        return;
    LiteralRect half = node.cell;
    std::int32_t& size = split_width ? half.width : half.height;
    size /= 2;
    for (auto* child : {&node.left, &node.right}) {
        *child = std::make_unique<Node>();
        (*child)->cell = half;
        split(**child, depth + 1);
        (split_width ? half.x : half.y) += size;
    }
}

bool LiteralSurface::occupied(const Node& node, const LiteralRect& probe) {
    if (!node.left)
        return std::any_of(node.entries.begin(), node.entries.end(),
                           [&](const LiteralRect& entry) { return overlap(entry, probe); });
    return (overlap(node.left->cell, probe) && occupied(*node.left, probe)) ||
           (overlap(node.right->cell, probe) && occupied(*node.right, probe));
}

void LiteralSurface::add(Node& node, const LiteralRect& rect) {
    if (!overlap(node.cell, rect))
        return;
    if (!node.left) {
        node.entries.push_back(rect);
        return;
    }
    add(*node.left, rect);
    add(*node.right, rect);
}

void LiteralSurface::clear(Node& node) {
    node.entries.clear();
    if (node.left) {
        clear(*node.left);
        clear(*node.right);
    }
}

bool LiteralSurface::scan(LiteralRect& rect, const Steps& steps, std::int32_t limit_x, std::int32_t limit_y) const {
    for (rect.y = 0; rect.y + rect.height <= limit_y; rect.y += steps.y)
        for (rect.x = 0; rect.x + rect.width <= limit_x; rect.x += steps.x)
            if (!occupied(root_, rect))
                return true;
    return false;
}

bool LiteralSurface::walk(LiteralRect& rect, const Steps& steps, bool expanding_square) const {
    const std::int32_t width = root_.cell.width;
    const std::int32_t height = root_.cell.height;
    if (!expanding_square)
        return scan(rect, steps, width, height);
    std::int32_t side_x = std::max(width / 8, 1);
    std::int32_t side_y = std::max(height / 8, 1);
    while (side_x <= width || side_y <= height) {
        const std::int32_t limit_x = std::min(side_x, width);
        const std::int32_t limit_y = std::min(side_y, height);
        if (scan(rect, steps, limit_x, limit_y))
            return true;
        side_x = limit_x + std::min(rect.width, std::max(min_width_, 1));
        side_y = limit_y + std::min(rect.height, std::max(min_height_, 1));
    }
    return false;
}

bool LiteralSurface::insert(LiteralRect rect, bool pixel_step, bool expanding_square) {
    if (min_width_ < 0) {
        min_width_ = rect.width;
        min_height_ = rect.height;
    }
    const Steps steps{pixel_step ? 1 : std::min(rect.width, min_width_),
                      pixel_step ? 1 : std::min(rect.height, min_height_)};
    if (!walk(rect, steps, expanding_square))
        return false;
    entries_.push_back(rect);
    add(root_, rect);
    min_width_ = std::min(min_width_, rect.width);
    min_height_ = std::min(min_height_, rect.height);
    return true;
}

void LiteralSurface::reset() {
    entries_.clear();
    clear(root_);
    min_width_ = -1;
    min_height_ = -1;
}

} // namespace mosaicer::testing_support
