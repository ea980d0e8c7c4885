#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace mosaicer::testing_support {

struct LiteralRect {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool operator==(const LiteralRect&) const = default;
};

/// The definition of what the walks give: every candidate position is tested, one after the other, against the copies
/// of the placed rectangles in the leaves of a fixed tree. Tests and benchmarks hold AtlasSurface against it.
class LiteralSurface {
public:
    LiteralSurface(std::int32_t width, std::int32_t height);

    bool insert(LiteralRect rect, bool pixel_step, bool expanding_square);
    void reset();
    const std::vector<LiteralRect>& entries() const { return entries_; }

private:
    struct Node {
        LiteralRect cell;
        std::unique_ptr<Node> left, right;
        std::vector<LiteralRect> entries;
    };
    struct Steps {
        std::int32_t x, y;
    };

    static void split(Node& node, int depth);
    static bool occupied(const Node& node, const LiteralRect& probe);
    static void add(Node& node, const LiteralRect& rect);
    static void clear(Node& node);
    bool scan(LiteralRect& rect, const Steps& steps, std::int32_t limit_x, std::int32_t limit_y) const;
    bool walk(LiteralRect& rect, const Steps& steps, bool expanding_square) const;

    Node root_;
    std::vector<LiteralRect> entries_;
    std::int32_t min_width_ = -1;
    std::int32_t min_height_ = -1;
};

} // namespace mosaicer::testing_support
