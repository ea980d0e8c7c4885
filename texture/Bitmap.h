#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

struct FIBITMAP;

namespace mosaicer {

/// The image files that are decoded and encoded by the bitmap library; DDS files have a reader of their own.
enum class BitmapFormat { bmp, png, tga };

/// The resampling filters of Bitmap::rescale, with the library's numbers.
enum class RescaleFilter : std::int32_t { box = 0, bicubic = 1, bilinear = 2, bspline = 3, catmull_rom = 4 };

/// What of a picture goes into PNG bytes. An alpha channel beside its colour in one file would make viewers mix the two.
enum class PngContent {
    colour, ///< 24 bits a pixel, alpha dropped
    alpha   ///< alpha alone, as 8 bits of grey
};

/// The longest side and the greatest area of an image file that is decoded. 2^28 pixels take 1 GiB.
constexpr std::int32_t max_image_side = 65536;
constexpr std::int64_t max_image_pixels = std::int64_t{1} << 28;

/// An image with 32 bits a pixel: blue, green, red, alpha bytes, rows packed, the first stored row at the bottom of the
/// picture. Moves only; the bitmap is freed with its holder. A moved-from bitmap may only be assigned to or destroyed.
///
/// Positions called x, y or left, top count from the top left of the picture, unless told otherwise.
class Bitmap {
public:
    /// Pixels are zero. Throws std::runtime_error when a side is below 1 or the memory is not to be had.
    Bitmap(std::int32_t width, std::int32_t height);
    Bitmap(Bitmap&& other) noexcept;
    Bitmap& operator=(Bitmap&& other) noexcept;
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;
    ~Bitmap();

    /// Decodes a file and converts it to 32 bits. Empty when the file is missing, malformed, no ordinary file, of a
    /// kind that has no such conversion (16-bit grey, floats), or tells a size beyond max_image_side, max_image_pixels
    /// or what a file of its length can hold.
    static std::optional<Bitmap> load(const std::string& path, BitmapFormat format);

    /// The size that `load` would give a file, width first. Reads the header alone, so damage behind it goes unseen.
    static std::optional<std::pair<std::int32_t, std::int32_t>> read_size(const std::string& path, BitmapFormat format);

    /// Writes the file with the library's default settings. False when it cannot be opened or written in full; then
    /// nothing half-written stays.
    bool save(const std::string& path, BitmapFormat format) const;

    /// The bytes of a PNG file in memory. Throws std::runtime_error when they cannot be made.
    std::vector<std::uint8_t> encode_png(PngContent content) const;

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }

    /// width * height * 4 bytes.
    std::span<std::uint8_t> pixels() { return {bits_, byte_count()}; }
    std::span<const std::uint8_t> pixels() const { return {bits_, byte_count()}; }

    /// The bytes of the row at `y`, counted from the top of the picture; width * 4 bytes.
    std::uint8_t* row(std::int32_t y) { return bits_ + row_offset(y); }
    const std::uint8_t* row(std::int32_t y) const { return bits_ + row_offset(y); }

    /// The whole image, resampled. Throws std::runtime_error for a side below 1.
    Bitmap rescale(std::int32_t width, std::int32_t height, RescaleFilter filter) const;

    /// The rectangle with `right` and `bottom` exclusive. Empty when it is empty or leaves the picture.
    std::optional<Bitmap> copy(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) const;

    /// Replaces a rectangle, alpha included. False, and nothing changed, unless the source lies wholly inside.
    bool paste(const Bitmap& source, std::int32_t left, std::int32_t top);

    /// The picture turned clockwise. Multiples of 90 degrees, negative ones too, are exact; any other angle is
    /// resampled onto a larger picture.
    Bitmap rotate(std::int32_t degrees) const;

    /// Sets the four bytes blue, green, red, alpha of one pixel. False, and nothing changed, outside the picture.
    bool set_pixel(std::int32_t x, std::int32_t y, std::span<const std::uint8_t, 4> bgra);

private:
    /// Takes over a bitmap of 32 bits a pixel.
    explicit Bitmap(FIBITMAP* handle);

    std::size_t byte_count() const { return static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4; }
    std::size_t row_offset(std::int32_t y) const {
        return static_cast<std::size_t>(height_ - 1 - y) * static_cast<std::size_t>(width_) * 4;
    }

    FIBITMAP* handle_ = nullptr;
    std::uint8_t* bits_ = nullptr;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
};

/// Level 0 first. Level n of a full chain has half the size of level n - 1, each side at least 1.
using MipChain = std::vector<Bitmap>;

} // namespace mosaicer
