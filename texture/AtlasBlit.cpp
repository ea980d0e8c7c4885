#include "texture/AtlasBlit.h"

#include "texture/MipChain.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <vector>

namespace mosaicer {
namespace {

constexpr std::array<std::uint8_t, 4> marker_red{0, 0, 255, 255};

void tag_corners(Bitmap& level, std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) {
    for (const std::int32_t y : {top, top + height - 1})
        for (const std::int32_t x : {left, left + width - 1})
            level.set_pixel(x, y, marker_red);
}

/// A pixel by value, or a row of them.
using Pixel = std::array<std::uint8_t, 4>;

Pixel pixel_at(const Bitmap& level, std::int64_t x, std::int64_t y) {
    Pixel pixel;
    std::memcpy(pixel.data(), level.row(static_cast<std::int32_t>(y)) + x * 4, 4);
    return pixel;
}

/// Sets the pixels [from, to) of a row, as far as the picture goes.
void fill_row(Bitmap& level, std::int64_t y, std::int64_t from, std::int64_t to, const Pixel& pixel) {
    to = std::min<std::int64_t>(to, level.width());
    std::uint8_t* row = level.row(static_cast<std::int32_t>(y));
    for (std::int64_t x = std::max<std::int64_t>(from, 0); x < to; ++x)
        std::memcpy(row + x * 4, pixel.data(), 4);
}

/// One entry on one level: the inner rectangle [x0, x1) by [y0, y1) and the frame of px and py pixels around it. All of
/// it may lie partly outside the picture, and on deep levels the rectangle may be empty while the frame is not: then
/// x1 - 1 is the column left of x0.
///
///   corner  | top row    | corner
///   left    | x0,y0      | right
///   column  |      x1,y1 | column
///   corner  | bottom row | corner
///
/// A strip is read whole before anything is written, and only if it is inside the picture. A place outside gets
/// nothing.
struct Frame {
    std::int64_t x0, y0, x1, y1, px, py;

    void spread(Bitmap& level) const {
        spread_columns(level);
        spread_rows(level);
        spread_corners(level);
    }

private:
    static bool column_inside(const Bitmap& level, std::int64_t x) { return x >= 0 && x < level.width(); }
    static bool row_inside(const Bitmap& level, std::int64_t y) { return y >= 0 && y < level.height(); }

    void spread_columns(Bitmap& level) const {
        if (px <= 0 || y0 < 0 || y1 > level.height())
            return;
        const bool has_left = column_inside(level, x0);
        const bool has_right = column_inside(level, x1 - 1);
        for (std::int64_t y = y0; y < y1; ++y) {
            // Both are read first: in an empty rectangle the right column lies where the left one goes.
            const Pixel left = has_left ? pixel_at(level, x0, y) : Pixel{};
            const Pixel right = has_right ? pixel_at(level, x1 - 1, y) : Pixel{};
            if (has_left)
                fill_row(level, y, x0 - px, x0, left);
            if (has_right)
                fill_row(level, y, x1, x1 + px, right);
        }
    }

    void spread_rows(Bitmap& level) const {
        if (py <= 0 || x0 < 0 || x1 > level.width() || x0 >= x1)
            return;
        const auto bytes = static_cast<std::size_t>(x1 - x0) * 4;
        const auto cut = [&](std::int64_t y) {
            std::vector<std::uint8_t> strip;
            if (row_inside(level, y)) {
                const std::uint8_t* row = level.row(static_cast<std::int32_t>(y)) + x0 * 4;
                strip.assign(row, row + bytes);
            }
            return strip;
        };
        const auto paste = [&](const std::vector<std::uint8_t>& strip, std::int64_t from, std::int64_t to) {
            to = std::min<std::int64_t>(to, level.height());
            for (std::int64_t y = std::max<std::int64_t>(from, 0); !strip.empty() && y < to; ++y)
                std::memcpy(level.row(static_cast<std::int32_t>(y)) + x0 * 4, strip.data(), bytes);
        };
        const std::vector<std::uint8_t> top = cut(y0);
        const std::vector<std::uint8_t> bottom = cut(y1 - 1);
        paste(top, y0 - py, y0);
        paste(bottom, y1, y1 + py);
    }

    void spread_corners(Bitmap& level) const {
        if (px <= 0 || py <= 0)
            return;
        struct Corner {
            std::int64_t x, y, to_x, to_y;
            std::optional<Pixel> pixel;
        };
        std::array<Corner, 4> corners{Corner{x0, y0, x0 - px, y0 - py, {}}, Corner{x1 - 1, y0, x1, y0 - py, {}},
                                      Corner{x0, y1 - 1, x0 - px, y1, {}}, Corner{x1 - 1, y1 - 1, x1, y1, {}}};
        for (Corner& corner : corners)
            if (column_inside(level, corner.x) && row_inside(level, corner.y))
                corner.pixel = pixel_at(level, corner.x, corner.y);
        for (const Corner& corner : corners) {
            const std::int64_t end = std::min<std::int64_t>(corner.to_y + py, level.height());
            for (std::int64_t y = std::max<std::int64_t>(corner.to_y, 0); corner.pixel && y < end; ++y)
                fill_row(level, y, corner.to_x, corner.to_x + px, *corner.pixel);
        }
    }
};

} // namespace

MipChain filled_chain(std::int32_t width, std::int32_t height, std::int32_t levels,
                      const std::array<float, 3>& colour) {
    const auto byte = [&](std::size_t channel) {
        return static_cast<std::uint8_t>(static_cast<std::int32_t>(colour[channel] * 255.0f));
    };
    const Pixel pixel{byte(2), byte(1), byte(0), 0};
    MipChain chain;
    for (std::int32_t level = 0; level < levels; ++level) {
        const auto n = static_cast<std::size_t>(level);
        Bitmap& bitmap = chain.emplace_back(level_side(width, n), level_side(height, n));
        fill_row(bitmap, 0, 0, bitmap.width(), pixel);
        for (std::int32_t y = 1; y < bitmap.height(); ++y)
            std::memcpy(bitmap.row(y), bitmap.row(0), static_cast<std::size_t>(bitmap.width()) * 4);
    }
    return chain;
}

void blit_entry(MipChain& atlas, AtlasEntry& entry, const LoadedTexture& texture, CornerTags tags) {
    const std::int64_t pad_u = entry.source.pad_texels_u;
    const std::int64_t pad_v = entry.source.pad_texels_v;
    const auto inner_width = static_cast<std::int32_t>(entry.width - 2 * pad_u);
    const auto inner_height = static_cast<std::int32_t>(entry.height - 2 * pad_v);
    const bool repeats = inner_width % texture.width == 0 && inner_height % texture.height == 0;

    for (std::size_t n = 0; n < std::min(atlas.size(), texture.mips.size()); ++n) {
        Bitmap& level = atlas[n];
        const Bitmap& source = texture.mips[n];
        const std::int32_t scale = std::int32_t{1} << n;
        const std::int32_t slot_width = std::max(inner_width / scale, 1);
        const std::int32_t slot_height = std::max(inner_height / scale, 1);
        const auto left = static_cast<std::int32_t>((entry.x + pad_u) / scale);
        const auto top = static_cast<std::int32_t>((entry.y + pad_v) / scale);
        const bool tagged = tags == CornerTags::red && n == 0;
        if (!repeats) {
            level.paste(source.rescale(slot_width, slot_height, RescaleFilter::bicubic), left, top);
            if (tagged)
                tag_corners(level, left, top, slot_width, slot_height);
            continue;
        }
        const std::int32_t width = std::max(texture.width / scale, 1);
        const std::int32_t height = std::max(texture.height / scale, 1);
        for (std::int32_t a = 0; a < slot_width / width; ++a)
            for (std::int32_t b = 0; b < slot_height / height; ++b) {
                level.paste(source, left + a * width, top + b * height);
                if (tagged)
                    tag_corners(level, left + a * width, top + b * height, width, height);
            }
    }
    entry.width = static_cast<std::int32_t>(texture.width + 2 * pad_u);
    entry.height = static_cast<std::int32_t>(texture.height + 2 * pad_v);
}

void dilate(MipChain& atlas, std::span<const AtlasEntry> entries) {
    std::int64_t scale = 1;
    for (Bitmap& level : atlas) {
        for (const AtlasEntry& entry : entries) {
            const std::int64_t pad_u = entry.source.pad_texels_u;
            const std::int64_t pad_v = entry.source.pad_texels_v;
            const std::int64_t x0 = (entry.x + pad_u) / scale;
            const std::int64_t y0 = (entry.y + pad_v) / scale;
            Frame{x0,
                  y0,
                  x0 + (entry.width - 2 * pad_u) / scale,
                  y0 + (entry.height - 2 * pad_v) / scale,
                  pad_u / scale,
                  pad_v / scale}
                .spread(level);
        }
        scale *= 2;
    }
}

} // namespace mosaicer
