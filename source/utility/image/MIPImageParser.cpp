#include "source/utility/image/MIPImageParser.h"

#include "source/utility/image/convert_pixels.h"
#include "source/utility/image/image_bytes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

namespace kst {
namespace {

constexpr std::uint32_t mip_magic = 0x3250494D; // "MIP2"
constexpr std::uint32_t older_magic = 0x4B53C446;
constexpr std::uint32_t palette_offset = 24;
constexpr std::size_t palette_entries = 256;
constexpr std::size_t palette_bytes = palette_entries * 3;

} // namespace

void MIPImageParser::open() {
    archive_ = open_file();
    std::array<std::uint8_t, 4> start{};
    read_exactly(archive_, file_name(), start.data(), start.size());
    older_ = word_32(start, 0) == older_magic;
    if (older_)
        read_older_header();
    else if (word_32(start, 0) == mip_magic)
        read_header();
    if ((!older_ && word_32(start, 0) != mip_magic) || description_.format >= image_format_count)
        throw ErrorWithCStack(file_name() + " appears to be corrupted, or has the wrong file format");
}

void MIPImageParser::close() {
    archive_ = Archive();
}

void MIPImageParser::read_header() {
    std::array<std::uint8_t, 20> bytes{};
    read_exactly(archive_, file_name(), bytes.data(), bytes.size());
    type_ = word_32(bytes, 0);
    description_ = {word_32(bytes, 4), word_32(bytes, 8), word_32(bytes, 12)};
    mip_count_ = word_32(bytes, 16);
    levels_offset_ = palette_offset + (description_.format == FORMAT_PALETTE_8 ? palette_bytes : 0);
}

void MIPImageParser::read_older_header() {
    std::array<std::uint8_t, 12> bytes{};
    read_exactly(archive_, file_name(), bytes.data(), bytes.size());
    type_ = 0;
    description_ = {word_32(bytes, 0), word_32(bytes, 4), word_32(bytes, 8)};
    mip_count_ = static_cast<std::uint32_t>(std::bit_width(std::min(description_.width, description_.height)));
    levels_offset_ = 16;
}

void MIPImageParser::read_palette(std::uint32_t* palette) {
    archive_.set_position(palette_offset);
    std::array<std::uint8_t, palette_bytes> bytes{};
    read_exactly(archive_, file_name(), bytes.data(), bytes.size());
    for (std::size_t i = 0; i < palette_entries; ++i)
        palette[i] = std::uint32_t{bytes[3 * i]} << 16 | std::uint32_t{bytes[3 * i + 1]} << 8 | bytes[3 * i + 2];
}

std::uint64_t MIPImageParser::level_size(std::uint32_t level) const {
    if (level >= 32)
        return 0;
    if (!older_)
        return pixel_byte_count({description_.format, description_.width >> level, description_.height >> level});
    const std::uint32_t pixel_format = description_.format == FORMAT_RGB_888 ? FORMAT_RGB_888 : FORMAT_ARGB_8888;
    return pixel_byte_count({pixel_format, description_.width, description_.height}) >> (2 * level);
}

std::uint64_t MIPImageParser::level_offset(std::uint32_t level) const {
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    std::uint64_t offset = levels_offset_;
    for (std::uint32_t i = 0; i < std::min(level, 32U); ++i)
        offset += std::min(level_size(i), most - offset);
    return offset;
}

void MIPImageParser::read(void* dest, std::uint32_t* palette, const ImageDescription& wanted) {
    if (type_ > 1 || mip_count_ == 0)
        return;
    const bool as_stored = wanted.format == description_.format;
    if (!as_stored && is_compressed_format(description_.format))
        throw ImageParserException(file_name(), "Cannot convert a compressed image");
    if (type_ == 1 && palette != nullptr && description_.format == FORMAT_PALETTE_8)
        read_palette(palette);
    const std::uint32_t level = level_by_long_side(std::max(description_.width, description_.height),
                                                   std::max(wanted.width, wanted.height), mip_count_);
    archive_.set_position(static_cast<std::int64_t>(level_offset(level)));
    const ImageDescription stored{description_.format, wanted.width, wanted.height};
    const std::uint64_t byte_count = std::min(level_size(level), pixel_byte_count(stored));
    if (as_stored)
        return read_exactly(archive_, file_name(), dest, byte_count);
    std::vector<std::uint8_t> block = read_block(archive_, file_name(), byte_count);
    block.resize(pixel_byte_count(stored));
    convert_pixels(block.data(), description_.format, std::size_t{wanted.width} * wanted.height, wanted.format,
                   static_cast<std::uint8_t*>(dest));
}

} // namespace kst
