#include "packing/RemovalStrategy.h"

#include "driver/records/NaturalSize.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <stdexcept>

namespace mosaicer {

namespace {

using Selection = std::vector<TexturePick>;

template <class Predicate>
Selection select(const TextureList& list, Predicate&& belongs) {
    Selection selection;
    for (auto pick = list.begin(); pick != list.end(); ++pick)
        if (belongs(*pick->texture))
            selection.push_back(pick);
    return selection;
}

/// The first of the greatest area above 0, else `none`.
TexturePick biggest_of(const Selection& selection, TexturePick none) {
    TexturePick best = none;
    std::int32_t best_area = 0;
    for (const TexturePick& pick : selection) {
        if (natural_area(*pick) > best_area) {
            best = pick;
            best_area = natural_area(*pick);
        }
    }
    return best;
}

TexturePick pick_biggest(const Selection& selection, TexturePick end) {
    const TexturePick biggest = biggest_of(selection, end);
    if (biggest == end)
        throw std::runtime_error("RemoveBiggestItv: Failed finding biggest texture");
    return biggest;
}

using Point = std::array<float, 3>;

float distance(const Point& a, const Point& b) {
    const float x = a[0] - b[0];
    const float y = a[1] - b[1];
    const float z = a[2] - b[2];
    return std::sqrt(x * x + y * y + z * z);
}

/// An axis without a positive coordinate keeps the smallest positive normal number.
Point corner_of_maxima(const TextureList& list) {
    Point corner;
    corner.fill(std::numeric_limits<float>::min());
    for (const SetTextureEntry& entry : list)
        for (std::size_t axis = 0; axis < corner.size(); ++axis)
            corner[axis] = std::max(corner[axis], entry.texture->position[axis]);
    return corner;
}

/// The group with the fewest members, 0 if there is no group at all.
std::int32_t smallest_group(const TextureList& list) {
    std::map<std::int32_t, std::int32_t> members;
    for (const SetTextureEntry& entry : list)
        for (const std::int32_t group : entry.texture->used_by)
            ++members[group];
    std::int32_t chosen = 0;
    std::int32_t fewest = std::numeric_limits<std::int32_t>::max();
    for (const auto& [group, count] : members) {
        if (count < fewest) {
            chosen = group;
            fewest = count;
        }
    }
    return chosen;
}

} // namespace

TexturePick RemoveFurthest::pick_texture_to_remove(const TextureList& list) const {
    const Point corner = corner_of_maxima(list);
    TexturePick furthest = list.end();
    float greatest = 0.0f;
    for (auto pick = list.begin(); pick != list.end(); ++pick) {
        const float away = distance(pick->texture->position, corner);
        if (!(away < greatest)) {
            furthest = pick;
            greatest = away;
        }
    }
    return furthest;
}

TexturePick RemoveSmallest::pick_texture_to_remove(const TextureList& list) const {
    TexturePick smallest = list.end();
    std::int32_t least = std::numeric_limits<std::int32_t>::max();
    for (auto pick = list.begin(); pick != list.end(); ++pick) {
        if (natural_area(*pick) < least) {
            smallest = pick;
            least = natural_area(*pick);
        }
    }
    return smallest;
}

TexturePick RemoveTiling::pick_texture_to_remove(const TextureList& list) const {
    const Selection tiling =
        select(list, [](const SourceTexture& texture) { return texture.tile_u || texture.tile_v; });
    return tiling.empty() ? list.end() : pick_biggest(tiling, list.end());
}

TexturePick RemoveFromSmallestGroup::pick_texture_to_remove(const TextureList& list) const {
    const std::int32_t group = smallest_group(list);
    const Selection members =
        select(list, [group](const SourceTexture& texture) { return texture.used_by.contains(group); });
    return members.empty() ? RemoveBiggest().pick_texture_to_remove(list) : pick_biggest(members, list.end());
}

TexturePick RemoveBiggest::pick_texture_to_remove(const TextureList& list) const {
    return biggest_of(select(list, [](const SourceTexture&) { return true; }), list.end());
}

TexturePick CompoundStrategy::pick_texture_to_remove(const TextureList& list) const {
    for (const auto& strategy : strategies_) {
        const TexturePick pick = strategy->pick_texture_to_remove(list);
        if (pick != list.end())
            return pick;
    }
    throw std::runtime_error("CompoundStrategy::pick_texture_to_remove; all strategies failed finding candidate");
}

std::string CompoundStrategy::describe() const {
    std::string text = "CompoundStrategy:\n";
    for (std::size_t i = 0; i < strategies_.size(); ++i)
        text += "\t#" + std::to_string(i) + " - " + strategies_[i]->describe() + "\n";
    return text;
}

std::unique_ptr<RemovalStrategy> make_removal_strategy(RemovalKind kind) {
    switch (kind) {
    case RemovalKind::FURTHEST:
        return std::make_unique<RemoveFurthest>();
    case RemovalKind::BIGGEST:
        return std::make_unique<RemoveBiggest>();
    case RemovalKind::SMALLEST:
        return std::make_unique<RemoveSmallest>();
    case RemovalKind::TILING:
        return std::make_unique<RemoveTiling>();
    case RemovalKind::SMALLEST_FROM_SMALLEST_GROUP:
        return std::make_unique<RemoveFromSmallestGroup>();
    }
    throw std::runtime_error("Unrecognized removal strategy");
}

} // namespace mosaicer
