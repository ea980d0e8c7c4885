#include "tools/kst/report/AtlasAreas.h"

#include <algorithm>
#include <cstdlib>
#include <map>

namespace kst::tool::report {
namespace {

constexpr std::int32_t most_padding = 64;
/// Mean difference of a byte along an edge that block compression is allowed. Neighbours that are told apart by less
/// would not be told apart by eye either.
constexpr std::int64_t lossy_difference = 12;

/// A row or a column of a picture.
struct Line {
    std::int32_t x = 0;
    std::int32_t y = 0;
    bool vertical = false;
    std::int32_t length = 0;
};

bool lies_inside(const Line& line, const mosaicer::Bitmap& picture) {
    return line.x >= 0 && line.y >= 0 && line.x < picture.width() && line.y < picture.height();
}

bool repeats(const mosaicer::Bitmap& picture, const Line& a, const Line& b, bool lossy) {
    std::int64_t difference = 0;
    const std::int64_t allowed = lossy ? lossy_difference * 4 * a.length : 0;
    for (std::int32_t i = 0; i < a.length && difference <= allowed; ++i) {
        const auto texel = [&](const Line& line) {
            return picture.row(line.y + (line.vertical ? i : 0)) + std::ptrdiff_t{line.x + (line.vertical ? 0 : i)} * 4;
        };
        const std::uint8_t* const p = texel(a);
        const std::uint8_t* const q = texel(b);
        for (int c = 0; c < 4; ++c)
            difference += std::abs(int{p[c]} - int{q[c]});
    }
    return difference <= allowed;
}

/// How far a texture's two edges across one axis go on outside.
struct Repeats {
    std::int32_t shorter = 0;
    std::int32_t longer = 0;
};

std::int32_t count_repeats(const Line& edge, std::int32_t direction, const mosaicer::Bitmap& picture, bool lossy) {
    Line outside = edge;
    for (std::int32_t count = 0; count < most_padding; ++count) {
        (edge.vertical ? outside.x : outside.y) += direction;
        if (!lies_inside(outside, picture) || !repeats(picture, edge, outside, lossy))
            return count;
    }
    return most_padding;
}

Repeats count_repeats(const Rectangle& r, const mosaicer::Bitmap& picture, bool vertical, bool lossy) {
    const Line low{r.x, r.y, vertical, vertical ? r.height : r.width};
    const Line high{vertical ? r.x + r.width - 1 : r.x, vertical ? r.y : r.y + r.height - 1, vertical, low.length};
    const std::int32_t before = count_repeats(low, -1, picture, lossy);
    const std::int32_t behind = count_repeats(high, 1, picture, lossy);
    return {std::min(before, behind), std::max(before, behind)};
}

/// The smallest of the values that stand most often.
std::int32_t commonest(const std::map<std::int32_t, int>& counts) {
    const auto found = std::max_element(counts.begin(), counts.end(),
                                        [](const auto& a, const auto& b) { return a.second < b.second; });
    return found == counts.end() ? 0 : found->first;
}

Rectangle grown(const Rectangle& r, const Padding& padding) {
    return {r.x - padding.u, r.y - padding.v, r.width + 2 * padding.u, r.height + 2 * padding.v};
}

/// The texels that any of the rectangles covers, a row at a time: each rectangle adds one to its columns while the
/// sweep is between its first row and its last. No work for a rectangle grows with its area.
std::int64_t union_area(const std::vector<Rectangle>& rectangles, std::int32_t width, std::int32_t height) {
    const auto rows = static_cast<std::size_t>(height);
    std::vector<std::vector<std::size_t>> begins(rows + 1);
    std::vector<std::vector<std::size_t>> ends(rows + 1);
    for (std::size_t i = 0; i < rectangles.size(); ++i) {
        const Rectangle& r = rectangles[i];
        begins[static_cast<std::size_t>(std::clamp(r.y, 0, height))].push_back(i);
        ends[static_cast<std::size_t>(std::clamp(r.y + r.height, 0, height))].push_back(i);
    }
    std::vector<std::int32_t> change(static_cast<std::size_t>(width) + 1);
    const auto add = [&](const Rectangle& r, std::int32_t sign) {
        change[static_cast<std::size_t>(std::clamp(r.x, 0, width))] += sign;
        change[static_cast<std::size_t>(std::clamp(r.x + r.width, 0, width))] -= sign;
    };
    std::int64_t area = 0;
    std::int64_t in_row = 0;
    for (std::size_t y = 0; y < rows; ++y) {
        for (const std::size_t i : begins[y])
            add(rectangles[i], 1);
        for (const std::size_t i : ends[y])
            add(rectangles[i], -1);
        if (!begins[y].empty() || !ends[y].empty()) {
            in_row = 0;
            std::int32_t depth = 0;
            for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x)
                in_row += (depth += change[x]) > 0 ? 1 : 0;
        }
        area += in_row;
    }
    return area;
}

} // namespace

std::vector<Padding> measure_paddings(const std::vector<PlacedTexture>& textures, const mosaicer::Bitmap& picture,
                                      bool lossy) {
    std::vector<Padding> paddings(textures.size());
    for (const bool vertical : {true, false}) {
        std::vector<Repeats> found(textures.size());
        std::map<std::int32_t, int> counts;
        for (std::size_t i = 0; i < textures.size(); ++i) {
            const PlacedTexture& texture = textures[i];
            if (texture.inner.width == 0 || (vertical ? texture.tiled_u : texture.tiled_v))
                continue;
            found[i] = count_repeats(texture.inner, picture, vertical, lossy);
            ++counts[found[i].shorter];
        }
        const std::int32_t common = commonest(counts);
        for (std::size_t i = 0; i < textures.size(); ++i)
            (vertical ? paddings[i].u : paddings[i].v) = std::min(found[i].longer, common);
    }
    return paddings;
}

Rectangle covered_rectangle(const PlacedTexture& texture, std::int32_t width, std::int32_t height) {
    Rectangle covered = texture.inner;
    if (covered.width == 0)
        return covered;
    if (texture.tiled_u) {
        covered.x = 0;
        covered.width = width;
    }
    if (texture.tiled_v) {
        covered.y = 0;
        covered.height = height;
    }
    return covered;
}

AtlasAreas measure_areas(const std::vector<PlacedTexture>& textures, const std::vector<Padding>& paddings,
                         std::int32_t width, std::int32_t height) {
    std::vector<Rectangle> inner;
    std::vector<Rectangle> outer;
    for (std::size_t i = 0; i < textures.size(); ++i) {
        const Rectangle covered = covered_rectangle(textures[i], width, height);
        if (covered.width == 0)
            continue;
        inner.push_back(covered);
        outer.push_back(grown(covered, paddings[i]));
    }
    AtlasAreas areas;
    areas.total = std::int64_t{width} * height;
    areas.textures = union_area(inner, width, height);
    areas.padding = union_area(outer, width, height) - areas.textures;
    return areas;
}

} // namespace kst::tool::report
