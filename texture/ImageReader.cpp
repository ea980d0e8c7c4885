#include "texture/ImageReader.h"

#include "source/utility/filesystem/MemoryFileSystem.h"
#include "source/utility/image/DDSImageParser.h"
#include "source/utility/image/TargaImageParser.h"
#include "texture/LevelConversion.h"

#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace mosaicer {
namespace {

std::size_t read_stream(void* destination, std::size_t count, void* user) {
    auto& file = *static_cast<std::ifstream*>(user);
    file.read(static_cast<char*>(destination), static_cast<std::streamsize>(count));
    return static_cast<std::size_t>(file.gcount());
}

std::optional<ImageFile> read_dds_file(const std::string& path, FileLevels levels) {
    std::optional<compression::DdsInfo> info = read_dds_levels(path, levels);
    if (!info)
        return std::nullopt;
    ImageFile image;
    image.is_cube = info->kind != 0;
    if (image.is_cube)
        return image;
    for (compression::LevelImage& level : info->images) {
        if (level.width < 1 || level.height < 1)
            return std::nullopt;
        image.mips.push_back(to_bitmap(level));
        level = {}; // one copy of the pixels is enough
    }
    if (image.mips.empty())
        return std::nullopt;
    return image;
}

/// The longest side that the DDS reader takes. What lies beyond is no picture, and would not fit our signed sizes.
constexpr std::uint32_t max_header_side = 1u << 24;

template <class Parser>
std::optional<ImageInfo> parse_header(const std::string& path) {
    kst::MemoryFileSystem file(path);
    // Messages begin with the parser's name, so it is the path.
    Parser parser(path);
    parser.set_file_system(&file);
    parser.open();
    kst::ImageDescription description;
    parser.get_format(description);
    for (const std::uint32_t side : {description.width, description.height})
        if (side < 1 || side > max_header_side)
            return std::nullopt;
    return ImageInfo{static_cast<std::int32_t>(description.width), static_cast<std::int32_t>(description.height),
                     parser.face_count() != 1};
}

} // namespace

std::optional<ImageInfo> read_image_info(const std::string& path) {
    if (path.ends_with(".dds"))
        return parse_header<kst::DDSImageParser>(path);
    if (path.ends_with(".tga"))
        return parse_header<kst::TargaImageParser>(path);
    const std::optional<ImageFile> image = read_image_file(path, FileLevels::first);
    if (!image)
        return std::nullopt;
    return ImageInfo{image->mips.front().width(), image->mips.front().height(), image->is_cube};
}

std::optional<ImageFile> read_image_file(const std::string& path, FileLevels levels) {
    if (path.ends_with(".dds"))
        return read_dds_file(path, levels);
    constexpr std::pair<std::string_view, BitmapFormat> formats[] = {
        {".bmp", BitmapFormat::bmp}, {".png", BitmapFormat::png}, {".tga", BitmapFormat::tga}};
    for (const auto& [end, format] : formats) {
        if (!path.ends_with(end))
            continue;
        std::optional<Bitmap> bitmap = Bitmap::load(path, format);
        if (!bitmap)
            return std::nullopt;
        ImageFile image;
        image.mips.push_back(std::move(*bitmap));
        return image;
    }
    throw std::runtime_error("Unhandled image format for " + path);
}

std::optional<compression::DdsInfo> read_dds_levels(const std::string& path, FileLevels levels) {
    std::ifstream file(path, std::ios::binary);
    compression::DdsInfo info;
    if (compression::read_dds(info, /*output_form=*/0, levels == FileLevels::first ? 1 : 0, read_stream, &file) !=
        compression::OK)
        return std::nullopt;
    return info;
}

SourceTexture make_source_texture(std::string name, std::string path,
                                  std::optional<ImageInfo> (*read_info)(const std::string&)) {
    SourceTexture texture;
    texture.is_bump = name.ends_with("_bm");
    const auto holds = [&](std::string_view part) { return name.find(part) != std::string::npos; };
    if (holds("_x_"))
        texture.tile_u = true;
    else if (holds("_y_"))
        texture.tile_v = true;
    else
        texture.tile_u = texture.tile_v = holds("_xy_") || holds("_yx_");

    const std::optional<ImageInfo> info = read_info(path);
    if (!info)
        throw std::runtime_error("Failure getting info for file " + path);
    texture.name = std::move(name);
    texture.image = {std::move(path), info->width, info->height, info->is_cube};
    return texture;
}

} // namespace mosaicer
