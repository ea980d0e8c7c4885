#include "tools/kst/decode_image.h"

#include "compression/DdsReader.h"
#include "driver/records/PathText.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/image/DDSImageParser.h"
#include "source/utility/image/MIPImageParser.h"
#include "source/utility/image/TargaImageParser.h"
#include "source/utility/image/convert_pixels.h"
#include "source/utility/image/image_bytes.h"
#include "texture/LevelConversion.h"
#include "tools/kst/Command.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <optional>
#include <vector>

namespace kst::tool {
namespace {

std::unique_ptr<ImageParser> open_parser(const std::string& file) {
    std::unique_ptr<ImageParser> parser;
    if (has_extension(file, ".dds"))
        parser = std::make_unique<DDSImageParser>(file);
    else if (has_extension(file, ".tga"))
        parser = std::make_unique<TargaImageParser>(file);
    else
        parser = std::make_unique<MIPImageParser>(file);
    parser->open();
    return parser;
}

/// The formats that the bitmap library reads.
std::optional<mosaicer::BitmapFormat> bitmap_format(const std::string& file) {
    if (has_extension(file, ".png"))
        return mosaicer::BitmapFormat::png;
    if (has_extension(file, ".bmp"))
        return mosaicer::BitmapFormat::bmp;
    if (has_extension(file, ".tga"))
        return mosaicer::BitmapFormat::tga;
    return std::nullopt;
}

bool has_parser(const std::string& file) {
    for (const char* const extension : {".dds", ".tga", ".mip"})
        if (has_extension(file, extension))
            return true;
    if (bitmap_format(file))
        return false;
    throw CommandFailure("cannot tell the format of " + file + ": its name must end in .dds, .tga, .mip, .png or .bmp");
}

void check_choice(const char* what, std::uint32_t chosen, std::size_t count, const std::string& file) {
    if (chosen >= count)
        throw CommandFailure(std::string("no ") + what + " " + std::to_string(chosen) + " in " + file + ": it has " +
                             std::to_string(count));
}

std::size_t read_from_archive(void* destination, std::size_t count, void* user) {
    Archive& archive = *static_cast<Archive*>(user);
    const auto left = static_cast<std::size_t>(archive.size() - archive.position());
    return archive.read(destination, std::min(count, left));
}

/// Block formats are decoded by the compression library, whose reader knows more formats than the engine's parser.
compression::DdsInfo read_dds_file(const std::string& file, std::uint32_t level_limit) {
    Archive archive = kst::open(file, "r");
    if (!archive)
        throw CommandFailure("cannot open " + file);
    compression::DdsInfo dds;
    if (compression::read_dds(dds, 0, level_limit, read_from_archive, &archive) != compression::OK)
        throw CommandFailure("cannot decode " + file);
    return dds;
}

mosaicer::Bitmap decode_dds(const ImageChoice& choice) {
    const compression::DdsInfo dds = read_dds_file(choice.file, 0);
    check_choice("level", choice.level, dds.levels, choice.file);
    if (dds.kind == 2) {
        check_choice("slice", choice.face, dds.slices[choice.level].size(), choice.file);
        return mosaicer::to_bitmap(dds.slices[choice.level][choice.face]);
    }
    check_choice("face", choice.face, dds.kind == 1 ? dds.faces.size() : 1, choice.file);
    const auto& levels = dds.kind == 1 ? dds.faces[choice.face] : dds.images;
    return mosaicer::to_bitmap(levels[choice.level]);
}

/// The engine's number of a format that the DDS reader knows by its published number.
std::uint32_t format_of_dds(std::uint32_t d3d_format) {
    struct Row {
        std::uint32_t d3d_format;
        std::uint32_t format;
    };
    constexpr std::array rows{Row{20, FORMAT_RGB_888},     Row{22, FORMAT_XRGB_8888}, Row{23, FORMAT_RGB_565},
                              Row{24, FORMAT_RGB_555},     Row{25, FORMAT_ARGB_1555}, Row{26, FORMAT_ARGB_4444},
                              Row{28, FORMAT_ALPHA_8},     Row{41, FORMAT_PALETTE_8}, Row{50, FORMAT_LUMINANCE_8},
                              Row{51, FORMAT_ALPHA_RED_88}};
    const auto row = std::ranges::find(rows, d3d_format, &Row::d3d_format);
    return row == rows.end() ? static_cast<std::uint32_t>(FORMAT_ARGB_8888) : row->format;
}

ImageFacts facts_of_dds(const std::string& file) {
    const compression::DdsInfo dds = read_dds_file(file, 1);
    return {format_of_dds(dds.d3d_format), dds.width, dds.height, dds.file_levels, dds.kind == 1 ? 6u : 1u};
}

ImageFacts facts_of_bitmap(const std::string& file) {
    const auto size = mosaicer::Bitmap::read_size(file, *bitmap_format(file));
    if (!size)
        throw CommandFailure("cannot decode " + file);
    return {FORMAT_ARGB_8888, static_cast<std::uint32_t>(size->first), static_cast<std::uint32_t>(size->second)};
}

ImageFacts facts_by_parser(const std::string& file) {
    const auto parser = open_parser(file);
    ImageDescription image;
    parser->get_format(image);
    return {image.format, image.width, image.height, parser->mip_count(), parser->face_count()};
}

mosaicer::Bitmap decode_bitmap(const ImageChoice& choice) {
    auto bitmap = mosaicer::Bitmap::load(choice.file, *bitmap_format(choice.file));
    if (!bitmap)
        throw CommandFailure("cannot decode " + choice.file);
    check_choice("face", choice.face, 1, choice.file);
    check_choice("level", choice.level, 1, choice.file);
    return std::move(*bitmap);
}

using Palette = std::array<std::uint32_t, 256>;

/// A channel of a pixel of four floats, 0 to 1, as a byte.
std::uint32_t byte_of_float(std::uint32_t bits) {
    const float value = std::bit_cast<float>(bits);
    return value > 0.0f ? static_cast<std::uint32_t>(std::min(value, 1.0f) * 255.0f + 0.5f) : 0;
}

/// One pixel in a format whose channels have no conversion of the engine's, as alpha, red, green, blue.
std::uint32_t argb_of(const std::uint8_t* pixel, std::uint32_t format, const Palette& palette) {
    const auto word = [pixel](std::size_t offset) { return word_32({pixel + offset, 4}, 0); };
    switch (format) {
    case FORMAT_LUMINANCE_8:
        return 0xFF000000u | pixel[0] * 0x010101u;
    case FORMAT_ALPHA_8:
        return std::uint32_t{pixel[0]} << 24;
    case FORMAT_PALETTE_8:
        return palette[pixel[0]];
    case FORMAT_PALETTE_ALPHA_88:
        return (palette[pixel[0]] & 0xFFFFFFu) | std::uint32_t{pixel[1]} << 24;
    case FORMAT_ALPHA_RED_88: // in DDS files luminance and alpha
        return pixel[0] * 0x010101u | std::uint32_t{pixel[1]} << 24;
    case FORMAT_GREEN_BLUE_88:
        return 0xFF000000u | std::uint32_t{pixel[1]} << 8 | pixel[0];
    case FORMAT_OTHER_8888:
        return word(0);
    case FORMAT_ARGB_16:
        return std::uint32_t{pixel[7]} << 24 | std::uint32_t{pixel[5]} << 16 | std::uint32_t{pixel[3]} << 8 | pixel[1];
    default: // FORMAT_ARGB_FLOAT
        return byte_of_float(word(12)) << 24 | byte_of_float(word(8)) << 16 | byte_of_float(word(4)) << 8 |
               byte_of_float(word(0));
    }
}

/// A level of a file in its own format, turned into blue, green, red, alpha.
void to_argb(const std::vector<std::uint8_t>& raw, const ImageDescription& image, const Palette& palette,
             const std::string& file, std::vector<std::uint8_t>& argb) {
    const std::size_t count = argb.size() / 4;
    const auto [bytes, kind, channels] =
        image.format < image_format_count ? image_format_info(image.format) : ImageFormatInfo{1, ImageKind::none, {}};
    if (kind == ImageKind::colour || kind == ImageKind::colour_alpha)
        return convert_pixels(raw.data(), image.format, count, FORMAT_ARGB_8888, argb.data());
    if (kind == ImageKind::none || image.format == FORMAT_OTHER_32)
        throw CommandFailure("cannot convert image format " + std::to_string(image.format) + " of " + file);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t value = argb_of(raw.data() + i * bytes, image.format, palette);
        for (std::size_t c = 0; c < 4; ++c)
            argb[i * 4 + c] = static_cast<std::uint8_t>(value >> (8 * c));
    }
}

mosaicer::Bitmap decode_level(ImageParser& parser, const ImageChoice& choice) {
    ImageDescription image;
    parser.get_format(image);
    // A side that was halved to nothing leaves a level without pixels; a header may promise any number of such levels.
    const std::uint32_t halvings = std::min(choice.level, 31u);
    image.width >>= halvings;
    image.height >>= halvings;
    if (image.width == 0 || image.height == 0)
        throw CommandFailure("level " + std::to_string(choice.level) + " of " + choice.file + " has no pixels");
    const std::uint64_t byte_count = image_byte_count(image);
    if (byte_count > static_cast<std::uint64_t>(kst::open(choice.file, "r").size()))
        throw CommandFailure(choice.file + " ends before its pixels do");
    mosaicer::Bitmap bitmap(static_cast<std::int32_t>(image.width), static_cast<std::int32_t>(image.height));
    std::vector<std::uint8_t> raw(byte_count);
    Palette palette{};
    parser.set_face(choice.face);
    parser.read(raw.data(), palette.data(), image);
    const bool palette_has_alpha = has_extension(choice.file, ".tga");
    for (std::uint32_t& entry : palette)
        entry |= palette_has_alpha ? 0 : 0xFF000000u;
    std::vector<std::uint8_t> argb(bitmap.pixels().size());
    to_argb(raw, image, palette, choice.file, argb);
    const std::size_t row_bytes = std::size_t{image.width} * 4;
    for (std::uint32_t y = 0; y < image.height; ++y)
        std::copy_n(argb.begin() + static_cast<std::ptrdiff_t>(y * row_bytes), row_bytes,
                    bitmap.row(static_cast<std::int32_t>(y)));
    return bitmap;
}

mosaicer::Bitmap decode_by_parser(const ImageChoice& choice) {
    const auto parser = open_parser(choice.file);
    check_choice("face", choice.face, parser->face_count(), choice.file);
    check_choice("level", choice.level, parser->mip_count(), choice.file);
    return decode_level(*parser, choice);
}

} // namespace

bool has_extension(std::string_view path, std::string_view extension) {
    return mosaicer::lower_name(path).ends_with(extension);
}

ImageFacts image_facts(const std::string& file) {
    if (!has_parser(file))
        return facts_of_bitmap(file);
    try {
        return facts_by_parser(file);
    } catch (const ErrorWithCStack&) {
        try {
            if (has_extension(file, ".dds"))
                return facts_of_dds(file);
            if (has_extension(file, ".tga"))
                return facts_of_bitmap(file);
        } catch (const CommandFailure&) {
            // The parser tells more.
        }
        throw;
    }
}

mosaicer::Bitmap decode_image(const ImageChoice& choice) {
    if (!has_parser(choice.file))
        return decode_bitmap(choice);
    if (has_extension(choice.file, ".dds"))
        return decode_dds(choice);
    try {
        return decode_by_parser(choice);
    } catch (const ImageParserException&) {
        // Run lengths and the like, which only the bitmap library knows.
        if (!has_extension(choice.file, ".tga") ||
            !mosaicer::Bitmap::read_size(choice.file, mosaicer::BitmapFormat::tga))
            throw;
        return decode_bitmap(choice);
    }
}

} // namespace kst::tool
