#include "source/utility/image/TargaImageParser.h"

#include "source/utility/image/convert_pixels.h"
#include "source/utility/image/image_bytes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace kst {
namespace {

constexpr std::size_t header_size = 18;
constexpr std::uint8_t right_to_left = 16;
constexpr std::uint8_t top_to_bottom = 32;
constexpr std::size_t most_palette_entries = 256;

/// A pixel depth, the alpha bits that it must come with, and its format.
struct Depth {
    std::uint8_t bits;
    std::uint8_t alpha_bits;
    std::uint32_t format;
};

constexpr std::array depths{Depth{8, 8, FORMAT_LUMINANCE_8}, Depth{16, 0, FORMAT_RGB_565}, Depth{24, 0, FORMAT_RGB_888},
                            Depth{32, 8, FORMAT_ARGB_8888}};

/// Bytes of a pixel or entry; 15 bits take two.
std::size_t bytes_of(std::uint8_t bits) {
    return (std::size_t{bits} + 1) / 8;
}

} // namespace

void TargaImageParser::open() {
    archive_ = open_file();
    read_header();
    check_header();
}

void TargaImageParser::close() {
    archive_ = Archive();
}

void TargaImageParser::read_header() {
    std::array<std::uint8_t, header_size> bytes{};
    read_exactly(archive_, file_name(), bytes.data(), bytes.size());
    header_ = {.id_length = bytes[0],
               .colormap_type = bytes[1],
               .image_type = bytes[2],
               .colormap_first = word_16(bytes, 3),
               .colormap_length = word_16(bytes, 5),
               .colormap_depth = bytes[7],
               .depth = bytes[16],
               .descriptor = bytes[17]};
    description_.width = word_16(bytes, 12);
    description_.height = word_16(bytes, 14);
}

void TargaImageParser::check_header() {
    if (header_.image_type < 1 || header_.image_type > 3)
        throw ImageParserException(file_name(), "Unsupported TARGA type");
    const bool has_indices = header_.image_type == 1;
    if (has_indices && header_.colormap_depth != 24 && header_.colormap_depth != 32)
        throw ImageParserException(
            file_name(), "Palettized TARGA files with palette resolution other than 24 or 32 bits unsupported");
    const std::uint8_t alpha_bits = header_.descriptor & 15;
    const auto depth = std::find_if(depths.begin(), depths.end(), [&](const Depth& each) {
        return each.bits == header_.depth && each.alpha_bits == alpha_bits;
    });
    if (depth == depths.end())
        throw ImageParserException(file_name(), "Unsupported color depth");
    description_.format = has_indices && depth->bits == 8 ? std::uint32_t{FORMAT_PALETTE_8} : depth->format;
}

std::size_t TargaImageParser::bytes_per_pixel() const {
    return bytes_of(header_.depth);
}

void TargaImageParser::read_palette(std::uint32_t* palette) {
    const std::size_t entry_bytes = bytes_of(header_.colormap_depth);
    const std::size_t count = header_.colormap_length;
    if (header_.colormap_first + count > most_palette_entries)
        throw ImageParserException(file_name(), "Color map exceeds 256 entries");
    const std::vector<std::uint8_t> bytes = read_block(archive_, file_name(), count * entry_bytes);
    const std::uint32_t top = entry_bytes == 3 ? 0xFF000000 : 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t entry = top;
        for (std::size_t b = 0; b < entry_bytes; ++b)
            entry |= std::uint32_t{bytes[i * entry_bytes + b]} << (8 * b);
        palette[header_.colormap_first + i] = entry;
    }
}

/// Brings rows in file order into the order of the image: top row first, left pixel first.
void TargaImageParser::orient(std::uint8_t* rows) const {
    const std::size_t pixel_bytes = bytes_per_pixel();
    const std::size_t width = description_.width;
    const std::size_t height = description_.height;
    const std::size_t row_bytes = width * pixel_bytes;
    if ((header_.descriptor & top_to_bottom) == 0)
        for (std::size_t y = 0; y < height / 2; ++y)
            std::swap_ranges(rows + y * row_bytes, rows + (y + 1) * row_bytes, rows + (height - 1 - y) * row_bytes);
    if ((header_.descriptor & right_to_left) != 0)
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width / 2; ++x) {
                std::uint8_t* left = rows + y * row_bytes + x * pixel_bytes;
                std::swap_ranges(left, left + pixel_bytes, rows + y * row_bytes + (width - 1 - x) * pixel_bytes);
            }
}

std::vector<std::uint8_t> TargaImageParser::resized(const std::vector<std::uint8_t>& source,
                                                    const ImageDescription& wanted) const {
    const std::size_t pixel_bytes = bytes_per_pixel();
    std::vector<std::uint8_t> target(std::size_t{wanted.width} * wanted.height * pixel_bytes);
    // 16.16 fixed point; the source's sides have 16 bits.
    const std::uint32_t step_x = (description_.width << 16) / wanted.width;
    const std::uint32_t step_y = (description_.height << 16) / wanted.height;
    std::uint8_t* out = target.data();
    for (std::uint32_t y = 0; y < wanted.height; ++y) {
        const std::size_t row = std::size_t{y * step_y >> 16} * description_.width;
        for (std::uint32_t x = 0; x < wanted.width; ++x, out += pixel_bytes)
            std::memcpy(out, &source[(row + (x * step_x >> 16)) * pixel_bytes], pixel_bytes);
    }
    return target;
}

void TargaImageParser::read(void* dest, std::uint32_t* palette, const ImageDescription& wanted) {
    const std::int64_t colormap_bytes =
        static_cast<std::int64_t>(header_.colormap_length * bytes_of(header_.colormap_depth));
    if (header_.colormap_type == 1 && palette != nullptr &&
        (header_.colormap_depth == 24 || header_.colormap_depth == 32)) {
        archive_.set_position(static_cast<std::int64_t>(header_size) + header_.id_length);
        read_palette(palette);
    }
    archive_.set_position(static_cast<std::int64_t>(header_size) + header_.id_length + colormap_bytes);

    const std::uint64_t byte_count = image_byte_count(description_);
    auto* out = static_cast<std::uint8_t*>(dest);
    if (wanted == description_) {
        read_exactly(archive_, file_name(), out, byte_count);
        return orient(out);
    }
    std::vector<std::uint8_t> block = read_block(archive_, file_name(), byte_count);
    orient(block.data());
    if (block.empty() || wanted.width == 0 || wanted.height == 0)
        return;
    if (wanted.width != description_.width || wanted.height != description_.height)
        block = resized(block, wanted);
    if (wanted.format == description_.format)
        std::copy(block.begin(), block.end(), out);
    else
        convert_pixels(block.data(), description_.format, std::size_t{wanted.width} * wanted.height, wanted.format,
                       out);
}

} // namespace kst
