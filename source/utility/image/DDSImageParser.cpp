#include "source/utility/image/DDSImageParser.h"

#include "source/utility/image/convert_pixels.h"
#include "source/utility/image/image_bytes.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace kst {
namespace {

constexpr std::size_t head_size = 128;
constexpr std::uint32_t flag_linear_size = 0x80000;
constexpr std::uint32_t caps2_cube = 0x200;
constexpr std::uint32_t code_four_floats = 116;

using Head = std::array<std::uint8_t, head_size>;

constexpr std::uint32_t dxt_code(char digit) {
    return 0x00545844U | static_cast<std::uint32_t>(digit) << 24; // "DXT", first character lowest
}

struct CodeFormat {
    std::uint32_t code;
    std::uint32_t format;
};

constexpr std::array code_formats{CodeFormat{dxt_code('1'), FORMAT_DXT1}, CodeFormat{dxt_code('2'), FORMAT_DXT2},
                                  CodeFormat{dxt_code('3'), FORMAT_DXT3}, CodeFormat{dxt_code('4'), FORMAT_DXT4},
                                  CodeFormat{dxt_code('5'), FORMAT_DXT5}};

std::optional<std::uint32_t> find_format(const Head& head) {
    const std::uint32_t code = word_32(head, 84);
    for (const CodeFormat& each : code_formats)
        if (each.code == code)
            return each.format;
    const std::uint32_t bits = word_32(head, 88);
    const std::array masks{word_32(head, 92), word_32(head, 96), word_32(head, 100), word_32(head, 104)};
    if (bits == 32 && masks == std::array<std::uint32_t, 4>{0xFF0000, 0xFF00, 0xFF, 0xFF000000})
        return FORMAT_ARGB_8888;
    if (bits == 16 && masks[3] == 0xFF00 && masks[0] == 0xFF)
        return FORMAT_ALPHA_RED_88;
    if (code == code_four_floats)
        return FORMAT_ARGB_FLOAT;
    return std::nullopt;
}

std::uint64_t find_first_size(const Head& head, const ImageDescription& image) {
    if (!is_compressed_format(image.format))
        return stored_byte_count(image);
    if ((word_32(head, 8) & flag_linear_size) != 0)
        return word_32(head, 20);
    const std::uint64_t width = image.width;
    const std::uint64_t height = image.height;
    const bool small_blocks = image.format == FORMAT_DXT1;
    if (width == height)
        return width * height / (small_blocks ? 2 : 1);
    // Blocks, but rounded down: a level that is no multiple of 4 counts less than it takes.
    return std::max<std::uint64_t>(1, width / 4) * std::max<std::uint64_t>(1, height / 4) * (small_blocks ? 8 : 16);
}

/// `count` times `size`, held at the largest position of an archive.
std::uint64_t held_product(std::uint64_t count, std::uint64_t size) {
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return size != 0 && count > most / size ? most : count * size;
}

std::uint64_t held_sum(std::uint64_t a, std::uint64_t b) {
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return a > most || b > most - a ? most : a + b;
}

} // namespace

void DDSImageParser::open() {
    archive_ = open_file();
    Head head{};
    read_exactly(archive_, file_name(), head.data(), head.size());
    const auto format = find_format(head);
    if (!format)
        throw ErrorWithCStack(file_name() + "Has an unrecognized DDS file type.");
    description_ = {*format, word_32(head, 16), word_32(head, 12)};
    mip_count_ = std::max(1U, word_32(head, 28));
    face_count_ = (word_32(head, 112) & caps2_cube) != 0 ? 6 : 1;
    face_ = 0;
    first_size_ = find_first_size(head, description_);
}

void DDSImageParser::close() {
    archive_ = Archive();
}

// Offsets follow from the sizes, so there is no table of them: a mip count out of a hostile header takes no memory.

std::uint64_t DDSImageParser::level_size(std::uint32_t level) const {
    std::uint64_t size = first_size_;
    for (; level > 0 && size > 8; --level)
        size >>= 2;
    return size;
}

std::uint64_t DDSImageParser::entry_offset(std::uint32_t face, std::uint32_t level) const {
    // The first 32 levels bring any size down to 8; all further ones are alike.
    const auto bytes_before = [this](std::uint32_t levels) {
        std::uint64_t sum = 0;
        const std::uint32_t falling = std::min(levels, 32U);
        for (std::uint32_t i = 0; i < falling; ++i)
            sum = held_sum(sum, level_size(i));
        return held_sum(sum, held_product(levels - falling, level_size(falling)));
    };
    return held_sum(head_size, held_sum(held_product(face, bytes_before(mip_count_)), bytes_before(level)));
}

void DDSImageParser::read(void* dest, std::uint32_t*, const ImageDescription& wanted) {
    const bool as_stored = wanted.format == description_.format;
    if (!as_stored && is_compressed_format(description_.format))
        throw ImageParserException(file_name(), "Cannot convert a compressed image");
    const std::uint32_t level = level_by_long_side(std::max(description_.width, description_.height),
                                                   std::max(wanted.width, wanted.height), mip_count_);
    archive_.set_position(static_cast<std::int64_t>(entry_offset(face_, level)));
    // The size that the header leads to may be more than the wanted image holds; what the caller gave has room for
    // that.
    const ImageDescription stored{description_.format, wanted.width, wanted.height};
    const std::uint64_t byte_count = std::min(level_size(level), stored_byte_count(stored));
    if (as_stored)
        return read_exactly(archive_, file_name(), dest, byte_count);
    std::vector<std::uint8_t> block = read_block(archive_, file_name(), byte_count);
    block.resize(stored_byte_count(stored));
    convert_pixels(block.data(), description_.format, std::size_t{wanted.width} * wanted.height, wanted.format,
                   static_cast<std::uint8_t*>(dest));
}

} // namespace kst
