#include "texture/ImageHeader.h"

#include "compression/DdsFormats.h"
#include "compression/DdsHeader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string_view>
#include <utility>

namespace mosaicer {
namespace {

constexpr std::uint32_t flag_mip_count = 0x20000;
constexpr std::uint32_t flag_depth = 0x800000;

std::uint64_t size_of(std::ifstream& file) {
    file.seekg(0, std::ios::end);
    const auto size = static_cast<std::uint64_t>(std::max<std::streamoff>(file.tellg(), 0));
    file.seekg(0);
    return size;
}

/// Walks the chunks: a length, four letters, that many bytes and a checksum each, up to the one called IEND.
bool png_has_its_end(const std::string& path) {
    constexpr std::uint64_t signature_bytes = 8;
    constexpr std::uint64_t frame_bytes = 12;
    std::ifstream file(path, std::ios::binary);
    const std::uint64_t size = size_of(file);
    std::uint64_t position = signature_bytes;
    while (position + frame_bytes <= size) {
        std::array<unsigned char, 8> head{};
        file.seekg(static_cast<std::streamoff>(position));
        if (!file.read(reinterpret_cast<char*>(head.data()), head.size()))
            return false;
        if (std::memcmp(head.data() + 4, "IEND", 4) == 0)
            return true;
        position += frame_bytes + (std::uint64_t{head[0]} << 24 | std::uint64_t{head[1]} << 16 |
                                   std::uint64_t{head[2]} << 8 | head[3]);
    }
    return false;
}

std::int32_t side_of_level(std::uint32_t side, std::uint32_t level) {
    return static_cast<std::int32_t>(level < 31 ? std::max(side >> level, 1u) : 1u);
}

/// Whether the file is as long as all levels of its header together.
bool holds_all_levels(const compression::DdsHeader& header, const compression::DdsFormat& format, std::uint32_t levels,
                      std::uint64_t file_size) {
    std::uint64_t needed = compression::dds_magic_size + compression::dds_header_size + format.palette_byte_count();
    for (std::uint32_t level = 0; level < levels && needed <= file_size; ++level)
        needed += format.stored_byte_count(side_of_level(header.width, level), side_of_level(header.height, level));
    return needed <= file_size;
}

PixelOutlook dds_outlook(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::uint64_t size = size_of(file);
    compression::DdsMagic magic{};
    compression::DdsHeaderBytes bytes{};
    file.read(reinterpret_cast<char*>(magic.data()), magic.size());
    if (!file.read(reinterpret_cast<char*>(bytes.data()), bytes.size()) || magic != compression::dds_magic)
        return {.fault = "does not begin as a DDS file does"};
    const compression::DdsHeader header = compression::decode_dds_header(bytes);
    const compression::DdsFormat format = compression::identify_dds_format(header.pixel_format);
    if (format.decode == nullptr)
        return {.fault = "has a pixel format that cannot be decoded"};
    if ((header.flags & flag_depth) != 0 && header.depth != 0)
        return {.fault = "is a volume texture, which cannot be used"};
    const std::uint32_t told = (header.flags & flag_mip_count) != 0 ? std::max(header.mip_count, 1u) : 1;
    if (!holds_all_levels(header, format, told, size))
        return {.fault = "ends before its pixels do"};
    const auto most = static_cast<std::uint32_t>(std::bit_width(std::max(header.width, header.height)));
    return {.fault = {}, .levels = std::min(told, most)};
}

} // namespace

std::optional<ImageInfo> read_image_header(const std::string& path) {
    constexpr std::pair<std::string_view, BitmapFormat> formats[] = {{".bmp", BitmapFormat::bmp},
                                                                     {".png", BitmapFormat::png}};
    for (const auto& [end, format] : formats) {
        if (!path.ends_with(end))
            continue;
        const auto size = Bitmap::read_size(path, format);
        if (!size || (format == BitmapFormat::png && !png_has_its_end(path)))
            return std::nullopt;
        return ImageInfo{size->first, size->second, /*is_cube=*/false};
    }
    return read_image_info(path);
}

SourceTexture make_source_texture_from_header(std::string name, std::string path) {
    return make_source_texture(std::move(name), std::move(path), read_image_header);
}

PixelOutlook pixel_outlook(const std::string& path) {
    if (path.ends_with(".dds"))
        return dds_outlook(path);
    if (path.ends_with(".tga") && !Bitmap::read_size(path, BitmapFormat::tga))
        return {.fault = "ends before its pixels do, or cannot be decoded"};
    return {};
}

} // namespace mosaicer
