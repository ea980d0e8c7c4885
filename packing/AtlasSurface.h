#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <cstdint>
#include <set>
#include <span>
#include <vector>

namespace mosaicer {

/// A placed texture. Texels of the top level; x runs right, y down, from the top left of the surface.
struct AtlasEntry {
    std::int32_t x = 0; ///< left edge of the placed rectangle, padding included
    std::int32_t y = 0; ///< top edge of the placed rectangle, padding included
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool tiled_u = false; ///< repeats along the surface's x axis (rotation applied)
    bool tiled_v = false; ///< repeats along the surface's y axis (rotation applied)
    SetTextureEntry source;
};

/// The rectangle that one atlas is packed on.
class AtlasSurface {
public:
    AtlasSurface(std::int32_t width, std::int32_t height);

    bool insert(const SetTextureEntry& entry, bool pixel_step, bool expanding_square);
    void reset();

    std::uint32_t placed_area() const;
    std::int64_t tight_area();
    void adjust_tiling();
    void shrink();

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }

    /// In the order of placement. The baker narrows `width` and `height` of entries through this.
    std::vector<AtlasEntry>& entries() { return entries_; }
    const std::vector<AtlasEntry>& entries() const { return entries_; }

    /// The distinct textures placed.
    const std::set<const SourceTexture*>& textures() const { return textures_; }

private:
    std::vector<AtlasEntry> entries_;
    std::set<const SourceTexture*> textures_;
    std::int32_t width_;
    std::int32_t height_;
};

} // namespace mosaicer
