#pragma once

#include "driver/records/AtlasSetDefinition.h"
#include "packing/FirstFitWalk.h"

#include <cstdint>
#include <set>
#include <span>
#include <string>
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

/// Why no surface takes the entry, whatever its size: a cube map, naming its file; tiling with padding along the same
/// axis (judged after rotation), or a padding so negative that no texel is left, naming the texture. Empty if one may.
std::string insertion_fault(const SetTextureEntry& entry);

/// The rectangle that one atlas is packed on.
///
/// A surface is made once for a set and reused for all its atlases: filled by `insert` or `generate_atlas`, measured by
/// `tight_area`, narrowed for good by the baker through `adjust_tiling` and `shrink`, and emptied by `reset`. A surface
/// without width or height takes nothing.
///
/// The textures' records are not owned and must outlive the entries that name them.
class AtlasSurface {
public:
    AtlasSurface(std::int32_t width, std::int32_t height);

    /// Places a copy of `entry` at the first free position of the walk. Its size is the natural size and twice the
    /// padding on each axis; along an axis in which its texture tiles, at least the whole surface.
    ///
    /// With `pixel_step` candidates are one texel apart, else as far as the smallest width and height among the entries
    /// placed and this one. With `expanding_square` the walk is confined to a region that grows from the top left.
    ///
    /// False: no position was free; entries and textures are as before. Throws std::runtime_error with the entry's
    /// insertion_fault, if it has one.
    bool insert(const SetTextureEntry& entry, bool pixel_step, bool expanding_square);

    /// Places all of `textures` in packing order, so that at least `min_usage` of the tight area is used.
    ///
    /// Makes at most two attempts: with `insertion_strategy`, and, where `try_alternative_insertion` is set, with its
    /// alternative. Each begins on an empty surface and writes one line on `Report.debug`.
    ///
    /// True: every texture is on the surface, its size is as before and tiled entries have their full extent. False:
    /// the surface is as after `reset`. Throws std::runtime_error "Unknown packing order" for any but the three real
    /// orders, and what `insert` throws.
    bool generate_atlas(std::span<const SetTextureEntry> textures, float min_usage, PackingOrder packing_order,
                        InsertionStrategy insertion_strategy, bool try_alternative_insertion);

    /// Empties the surface and restores its size.
    void reset();

    /// The padded areas of the entries at their textures' own size: a tiled entry counts without the stretch. The sum
    /// is taken modulo 2^32.
    std::uint32_t placed_area() const;

    /// The area that `adjust_tiling` and `shrink` would leave. The surface's size stays; tiled entries have the full
    /// extent of the surface afterwards.
    std::int64_t tight_area();

    /// Placed area over tight area, 0 on a surface without area. Rounded to single precision, as `min_usage` is, so
    /// that a usage of exactly three fifths is not less than a required 0.6.
    float usage();

    /// Gives tiled entries the extent of what is really on the surface. One that tiles both ways follows the width
    /// alone.
    void adjust_tiling();

    /// Halves each side, down to 2 at least, as long as no entry reaches beyond it. Tiled entries follow.
    void shrink();

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }

    /// In the order of placement. The baker narrows `width` and `height` of entries through this.
    std::vector<AtlasEntry>& entries() { return entries_; }
    const std::vector<AtlasEntry>& entries() const { return entries_; }

    /// The distinct textures placed.
    const std::set<const SourceTexture*>& textures() const { return textures_; }

private:
    /// No entry yet.
    static constexpr std::int64_t none_placed = -1;

    bool attempt(std::span<const SetTextureEntry* const> sorted, float min_usage, InsertionStrategy strategy);
    WalkRequest walk_request(const AtlasEntry& entry, bool pixel_step, bool expanding_square) const;
    void stretch_tiled(std::int32_t width, std::int32_t height);

    std::vector<AtlasEntry> entries_;
    std::set<const SourceTexture*> textures_;
    FirstFitWalk walk_;
    std::int32_t width_;
    std::int32_t height_;
    std::int32_t full_width_;
    std::int32_t full_height_;

    // Each tracked by itself. Wide, since the first entry asked for counts even if it is too large for any surface.
    std::int64_t min_entry_width_ = none_placed;
    std::int64_t min_entry_height_ = none_placed;
};

} // namespace mosaicer
