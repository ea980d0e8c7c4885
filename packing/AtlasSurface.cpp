#include "packing/AtlasSurface.h"

#include "driver/records/PaddedSize.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>

namespace mosaicer {

namespace {

/// Along the axes of the surface.
struct Tiling {
    bool u;
    bool v;
};

Tiling tiling_of(const SetTextureEntry& entry) {
    Tiling tiling{entry.texture->tile_u, entry.texture->tile_v};
    if (entry.rotation == 90 || entry.rotation == 270)
        std::swap(tiling.u, tiling.v);
    return tiling;
}

/// The furthest right and bottom edges of some entries.
struct Reach {
    std::int64_t right = 0;
    std::int64_t bottom = 0;
};

Reach reach_of(std::span<const AtlasEntry> entries) {
    Reach reach;
    for (const AtlasEntry& entry : entries) {
        reach.right = std::max(reach.right, std::int64_t{entry.x} + entry.width);
        reach.bottom = std::max(reach.bottom, std::int64_t{entry.y} + entry.height);
    }
    return reach;
}

std::int32_t halved_to(std::int32_t side, std::int64_t reach) {
    while (side / 2 >= 2 && reach <= side / 2)
        side /= 2;
    return side;
}

} // namespace

std::string insertion_fault(const SetTextureEntry& entry) {
    const SourceTexture& texture = *entry.texture;
    if (texture.image.is_cube)
        return "Unable to insert cube texture in atlas; " + texture.image.file_path;
    const Tiling tiling = tiling_of(entry);
    if ((tiling.u && entry.pad_texels_u != 0) || (tiling.v && entry.pad_texels_v != 0))
        return "Texture " + texture.name + " is tiled and has padding texels in the same direction";
    // Nothing could be baked from it, and as a step it would keep a walk on the spot. Tiling adds to no size here: its
    // axis has no padding.
    const WideSize size = padded_size(entry);
    if (size.width <= 0 || size.height <= 0)
        return "Texture " + texture.name + " has no texels left between its padding texels";
    return {};
}

AtlasSurface::AtlasSurface(std::int32_t width, std::int32_t height)
    : walk_(width, height), width_(width), height_(height), full_width_(width), full_height_(height) {}

bool AtlasSurface::insert(const SetTextureEntry& entry, bool pixel_step, bool expanding_square) {
    if (const std::string fault = insertion_fault(entry); !fault.empty())
        throw std::runtime_error(fault);

    const Tiling tiling = tiling_of(entry);
    AtlasEntry placed{.tiled_u = tiling.u, .tiled_v = tiling.v, .source = entry};
    WideSize size = padded_size(entry);
    if (placed.tiled_u)
        size.width = std::max<std::int64_t>(size.width, full_width_);
    if (placed.tiled_v)
        size.height = std::max<std::int64_t>(size.height, full_height_);

    if (min_entry_width_ < 0) {
        min_entry_width_ = size.width;
        min_entry_height_ = size.height;
    }
    constexpr std::int64_t widest = std::numeric_limits<std::int32_t>::max();
    if (size.width > widest || size.height > widest)
        return false;
    placed.width = static_cast<std::int32_t>(size.width);
    placed.height = static_cast<std::int32_t>(size.height);

    const auto position = walk_.first_free(walk_request(placed, pixel_step, expanding_square));
    if (!position)
        return false;
    walk_.occupy(*position, placed.width, placed.height);
    placed.x = position->x;
    placed.y = position->y;
    entries_.push_back(std::move(placed));
    textures_.insert(entry.texture);
    min_entry_width_ = std::min(min_entry_width_, size.width);
    min_entry_height_ = std::min(min_entry_height_, size.height);
    return true;
}

/// The region of an expanding walk grows by the size of the smallest entry, whatever the step.
WalkRequest AtlasSurface::walk_request(const AtlasEntry& entry, bool pixel_step, bool expanding_square) const {
    const auto small_x = static_cast<std::int32_t>(std::min<std::int64_t>(entry.width, min_entry_width_));
    const auto small_y = static_cast<std::int32_t>(std::min<std::int64_t>(entry.height, min_entry_height_));
    return {.width = entry.width,
            .height = entry.height,
            .step_x = pixel_step ? 1 : small_x,
            .step_y = pixel_step ? 1 : small_y,
            .expanding_square = expanding_square,
            .grow_x = small_x,
            .grow_y = small_y};
}

void AtlasSurface::reset() {
    width_ = full_width_;
    height_ = full_height_;
    entries_.clear();
    textures_.clear();
    walk_.reset();
    min_entry_width_ = none_placed;
    min_entry_height_ = none_placed;
}

std::uint32_t AtlasSurface::placed_area() const {
    std::uint32_t area = 0;
    for (const AtlasEntry& entry : entries_) {
        const WideSize size = padded_size(entry.source);
        area += static_cast<std::uint32_t>(size.width) * static_cast<std::uint32_t>(size.height);
    }
    return area;
}

std::int64_t AtlasSurface::tight_area() {
    const std::int32_t width = width_;
    const std::int32_t height = height_;
    adjust_tiling();
    shrink();
    const std::int64_t area = std::int64_t{width_} * height_;
    width_ = width;
    height_ = height;
    stretch_tiled(width, height);
    return area;
}

float AtlasSurface::usage() {
    const std::int64_t area = tight_area();
    return area > 0 ? static_cast<float>(static_cast<double>(placed_area()) / static_cast<double>(area)) : 0.0f;
}

void AtlasSurface::adjust_tiling() {
    std::int64_t right = 0;
    std::int64_t bottom = 0;
    for (const AtlasEntry& entry : entries_) {
        const TexelSize natural = natural_size(entry.source);
        right = std::max(right, std::int64_t{entry.x} + (entry.tiled_u ? natural.width : entry.width));
        bottom = std::max(bottom, std::int64_t{entry.y} + (entry.tiled_v ? natural.height : entry.height));
    }
    stretch_tiled(static_cast<std::int32_t>(right), static_cast<std::int32_t>(bottom));
}

void AtlasSurface::shrink() {
    const Reach reach = reach_of(entries_);
    width_ = halved_to(width_, reach.right);
    height_ = halved_to(height_, reach.bottom);
    stretch_tiled(width_, height_);
}

void AtlasSurface::stretch_tiled(std::int32_t width, std::int32_t height) {
    for (AtlasEntry& entry : entries_) {
        if (entry.tiled_u)
            entry.width = width;
        else if (entry.tiled_v)
            entry.height = height;
    }
}

} // namespace mosaicer
