#include "tools/kst/report/pictures.h"

#include "compression/DdsReader.h"
#include "texture/ImageReader.h"
#include "texture/LevelConversion.h"

#include <algorithm>
#include <array>
#include <optional>
#include <stdexcept>
#include <utility>

namespace kst::tool::report {
namespace {

using mosaicer::Bitmap;

/// The formats of the DDS reader by the compression library's number. Where a file stores no alpha, the reader's is
/// 0 or a spare byte.
struct DdsFormatName {
    std::uint32_t library_format;
    const char* name;
    bool lossy;
    bool has_alpha;
};
constexpr std::array dds_format_names = {
    DdsFormatName{0, "DXT1", true, true},
    DdsFormatName{2, "DXT3", true, true},
    DdsFormatName{3, "DXT5", true, true},
    DdsFormatName{4, "A4R4G4B4", false, true},
    DdsFormatName{5, "A1R5G5B5", false, true},
    DdsFormatName{6, "R5G6B5", false, false},
    DdsFormatName{7, "A8R8G8B8", false, true},
    DdsFormatName{8, "R8G8B8", false, false},
    DdsFormatName{9, "X1R5G5B5", false, false},
    DdsFormatName{11, "V8U8", false, false},
    DdsFormatName{13, "A8", false, true},
    DdsFormatName{16, "A8L8", false, true},
    DdsFormatName{17, "R32F", false, false},
    DdsFormatName{18, "A32B32G32R32F", false, true},
    DdsFormatName{19, "A16B16G16R16F", false, true},
    DdsFormatName{20, "L8", false, false},
    DdsFormatName{21, "P8", false, true},
    DdsFormatName{22, "P4", false, true},
    DdsFormatName{23, "R16F", false, false},
    DdsFormatName{25, "X8R8G8B8", false, false},
    DdsFormatName{26, "V16U16", false, false},
    DdsFormatName{27, "G16R16", false, false},
    DdsFormatName{28, "G16R16F", false, false},
    DdsFormatName{29, "ATI2", true, false},
};

void make_opaque(Bitmap& bitmap) {
    const auto pixels = bitmap.pixels();
    for (std::size_t i = 3; i < pixels.size(); i += 4)
        pixels[i] = 255;
}

Bitmap to_bitmap(const compression::LevelImage& level, bool has_alpha) {
    Bitmap bitmap = mosaicer::to_bitmap(level);
    if (!has_alpha)
        make_opaque(bitmap);
    return bitmap;
}

/// What lies beside the faces is transparent.
Bitmap open_cube(const std::array<std::vector<compression::LevelImage>, 6>& faces, std::size_t level, bool has_alpha) {
    const std::int32_t width = faces[0][level].width;
    const std::int32_t height = faces[0][level].height;
    if (width > mosaicer::max_image_side || height > mosaicer::max_image_side)
        throw std::runtime_error("the faces are too large to show");
    Bitmap cross(width * 4, height * 3);
    for (std::size_t face = 0; face < faces.size(); ++face)
        cross.paste(to_bitmap(faces[face][level], has_alpha), cube_faces[face].column * width,
                    cube_faces[face].row * height);
    return cross;
}

/// Throws with a text that does not name the file.
DecodedImage decode_dds(const std::string& path) {
    std::optional<compression::DdsInfo> dds = mosaicer::read_dds_levels(path, mosaicer::FileLevels::all);
    if (!dds)
        throw std::runtime_error("the pixels cannot be decoded");
    if (dds->kind == 2)
        throw std::runtime_error("a volume texture, which has no picture");
    const auto* const name =
        std::find_if(dds_format_names.begin(), dds_format_names.end(),
                     [&](const DdsFormatName& row) { return row.library_format == dds->library_format; });
    if (name == dds_format_names.end())
        throw std::runtime_error("a pixel format without a name");
    DecodedImage image;
    image.format = name->name;
    image.lossy = name->lossy;
    for (std::size_t level = 0; level < dds->levels; ++level)
        image.levels.push_back(dds->kind == 1 ? open_cube(dds->faces, level, name->has_alpha)
                                              : to_bitmap(dds->images[level], name->has_alpha));
    return image;
}

DecodedImage decode_file(const std::string& path) {
    if (path.ends_with(".dds"))
        return decode_dds(path);
    auto file = mosaicer::read_image_file(path, mosaicer::FileLevels::all);
    if (!file)
        throw std::runtime_error("the pixels cannot be decoded");
    return {.format = "A8R8G8B8", .lossy = false, .levels = std::move(file->mips)};
}

bool is_opaque(const Bitmap& bitmap) {
    const auto pixels = bitmap.pixels();
    for (std::size_t i = 3; i < pixels.size(); i += 4)
        if (pixels[i] != 255)
            return false;
    return true;
}

Picture encode(const Bitmap& bitmap) {
    Picture picture;
    picture.width = bitmap.width();
    picture.height = bitmap.height();
    picture.colour_png = bitmap.encode_png(mosaicer::PngContent::colour);
    if (!is_opaque(bitmap))
        picture.alpha_png = bitmap.encode_png(mosaicer::PngContent::alpha);
    return picture;
}

std::int32_t longer_side(const Bitmap& bitmap) {
    return std::max(bitmap.width(), bitmap.height());
}

/// Halved until it fits.
Bitmap reduced(const Bitmap& bitmap, std::int32_t max_side) {
    std::int32_t width = bitmap.width();
    std::int32_t height = bitmap.height();
    while (std::max(width, height) > max_side) {
        width = std::max(width / 2, 1);
        height = std::max(height / 2, 1);
    }
    return bitmap.rescale(width, height, mosaicer::RescaleFilter::box);
}

/// The largest picture that fits a card, or one made for it.
std::size_t choose_thumbnail(std::vector<Picture>& pictures, const Bitmap& largest) {
    for (std::size_t i = 0; i < pictures.size(); ++i)
        if (std::max(pictures[i].width, pictures[i].height) <= thumbnail_side)
            return i;
    pictures.push_back(encode(reduced(largest, thumbnail_side)));
    return pictures.size() - 1;
}

} // namespace

DecodedImage decode_image(const ImageRecord& image) {
    try {
        return decode_file(image.path);
    } catch (const std::exception& failure) {
        throw std::runtime_error(image.file + ": " + failure.what());
    }
}

ImagePictures encode_pictures(mosaicer::MipChain levels, std::int32_t max_side) {
    ImagePictures result;
    for (const Bitmap& level : levels)
        result.levels.push_back({.width = level.width(), .height = level.height()});
    const auto fits = std::find_if(levels.begin(), levels.end(),
                                   [max_side](const Bitmap& level) { return longer_side(level) <= max_side; });
    const auto first = fits == levels.end() ? levels.size() - 1 : static_cast<std::size_t>(fits - levels.begin());
    if (fits == levels.end())
        levels[first] = reduced(levels[first], max_side);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        result.levels[i].picture = i < first ? 0 : i - first;
        if (i >= first)
            result.pictures.push_back(encode(levels[i]));
    }
    result.thumbnail = choose_thumbnail(result.pictures, levels[first]);
    return result;
}

} // namespace kst::tool::report
