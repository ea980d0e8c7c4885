#include "tools/kst/Command.h"

#include "compression/DdsReader.h"
#include "driver/records/PathText.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/image/DDSImageParser.h"
#include "source/utility/image/MIPImageParser.h"
#include "source/utility/image/TargaImageParser.h"
#include "source/utility/image/convert_pixels.h"
#include "texture/Bitmap.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kst::tool {
namespace {

struct ImageArguments {
    std::string file;
    std::string output;
    std::uint32_t level = 0;
    std::uint32_t face = 0;
};

bool ends_with(std::string_view path, std::string_view extension) {
    return mosaicer::lower_name(path).ends_with(extension);
}

std::unique_ptr<ImageParser> open_parser(const std::string& file) {
    std::unique_ptr<ImageParser> parser;
    if (ends_with(file, ".dds"))
        parser = std::make_unique<DDSImageParser>(file);
    else if (ends_with(file, ".tga"))
        parser = std::make_unique<TargaImageParser>(file);
    else if (ends_with(file, ".mip"))
        parser = std::make_unique<MIPImageParser>(file);
    else
        throw CommandFailure("cannot tell the format of " + file + ": its name must end in .dds, .tga or .mip");
    parser->open();
    return parser;
}

void info(const ImageArguments& arguments) {
    const auto parser = open_parser(arguments.file);
    ImageDescription image;
    parser->get_format(image);
    std::cout << "format=" << image.format << " width=" << image.width << " height=" << image.height
              << " levels=" << parser->mip_count() << " faces=" << parser->face_count() << '\n';
}

void check_choice(const char* what, std::uint32_t chosen, std::uint32_t count, const std::string& file) {
    if (chosen >= count)
        throw CommandFailure(std::string("no ") + what + " " + std::to_string(chosen) + " in " + file + ": it has " +
                             std::to_string(count));
}

/// Red, green, blue, alpha with the top row first becomes blue, green, red, alpha with the bottom row first.
mosaicer::Bitmap to_bitmap(const compression::LevelImage& level) {
    mosaicer::Bitmap bitmap(level.width, level.height);
    const std::uint8_t* source = level.pixels.data();
    for (std::int32_t y = 0; y < level.height; ++y) {
        std::uint8_t* row = bitmap.row(y);
        for (std::int32_t x = 0; x < level.width; ++x, source += 4, row += 4) {
            row[0] = source[2];
            row[1] = source[1];
            row[2] = source[0];
            row[3] = source[3];
        }
    }
    return bitmap;
}

std::size_t read_from_archive(void* destination, std::size_t count, void* user) {
    Archive& archive = *static_cast<Archive*>(user);
    const auto left = static_cast<std::size_t>(archive.size() - archive.position());
    return archive.read(destination, std::min(count, left));
}

/// Block formats are decoded by the compression library, whose reader knows more formats than the engine's parser.
mosaicer::Bitmap decode_dds(const ImageArguments& arguments) {
    Archive archive = kst::open(arguments.file, "r");
    if (!archive)
        throw CommandFailure("cannot open " + arguments.file);
    compression::DdsInfo dds;
    if (compression::read_dds(dds, 0, 0, read_from_archive, &archive) != compression::OK)
        throw CommandFailure("cannot decode " + arguments.file);
    if (dds.kind == 2)
        throw CommandFailure(arguments.file + " is a volume texture");
    check_choice("face", arguments.face, dds.kind == 1 ? 6 : 1, arguments.file);
    check_choice("level", arguments.level, dds.levels, arguments.file);
    const auto& levels = dds.kind == 1 ? dds.faces[arguments.face] : dds.images;
    return to_bitmap(levels[arguments.level]);
}

/// A level of a file in its own format, turned into blue, green, red, alpha.
void to_argb(const std::vector<std::uint8_t>& raw, const ImageDescription& image,
             const std::array<std::uint32_t, 256>& palette, const std::string& file, std::vector<std::uint8_t>& argb) {
    const std::size_t count = argb.size() / 4;
    const ImageKind kind = image.format < image_format_count ? image_format_info(image.format).kind : ImageKind::none;
    const auto put = [&argb](std::size_t i, std::uint32_t value) {
        for (std::size_t c = 0; c < 4; ++c)
            argb[i * 4 + c] = static_cast<std::uint8_t>(value >> (8 * c));
    };
    if (kind == ImageKind::colour || kind == ImageKind::colour_alpha) {
        convert_pixels(raw.data(), image.format, count, FORMAT_ARGB_8888, argb.data());
    } else if (kind == ImageKind::luminance) {
        for (std::size_t i = 0; i < count; ++i)
            put(i, 0xFF000000u | raw[i] * 0x010101u);
    } else if (kind == ImageKind::alpha) {
        for (std::size_t i = 0; i < count; ++i)
            put(i, std::uint32_t{raw[i]} << 24);
    } else if (image.format == FORMAT_PALETTE_8) {
        for (std::size_t i = 0; i < count; ++i)
            put(i, palette[raw[i]]);
    } else {
        throw CommandFailure("cannot convert image format " + std::to_string(image.format) + " of " + file);
    }
}

mosaicer::Bitmap decode_level(ImageParser& parser, const ImageArguments& arguments) {
    ImageDescription image;
    parser.get_format(image);
    // A side that was halved to nothing leaves a level without pixels; a header may promise any number of such levels.
    const std::uint32_t halvings = std::min(arguments.level, 31u);
    image.width >>= halvings;
    image.height >>= halvings;
    if (image.width == 0 || image.height == 0)
        throw CommandFailure("level " + std::to_string(arguments.level) + " of " + arguments.file + " has no pixels");
    const std::uint64_t byte_count = image_byte_count(image);
    if (byte_count > static_cast<std::uint64_t>(kst::open(arguments.file, "r").size()))
        throw CommandFailure(arguments.file + " ends before its pixels do");
    mosaicer::Bitmap bitmap(static_cast<std::int32_t>(image.width), static_cast<std::int32_t>(image.height));
    std::vector<std::uint8_t> raw(byte_count);
    std::array<std::uint32_t, 256> palette{};
    parser.set_face(arguments.face);
    parser.read(raw.data(), palette.data(), image);
    const bool palette_has_alpha = ends_with(arguments.file, ".tga");
    for (std::uint32_t& entry : palette)
        entry |= palette_has_alpha ? 0 : 0xFF000000u;
    std::vector<std::uint8_t> argb(bitmap.pixels().size());
    to_argb(raw, image, palette, arguments.file, argb);
    const std::size_t row_bytes = std::size_t{image.width} * 4;
    for (std::uint32_t y = 0; y < image.height; ++y)
        std::copy_n(argb.begin() + static_cast<std::ptrdiff_t>(y * row_bytes), row_bytes,
                    bitmap.row(static_cast<std::int32_t>(y)));
    return bitmap;
}

mosaicer::Bitmap decode(const ImageArguments& arguments) {
    if (ends_with(arguments.file, ".dds"))
        return decode_dds(arguments);
    const auto parser = open_parser(arguments.file);
    check_choice("face", arguments.face, parser->face_count(), arguments.file);
    check_choice("level", arguments.level, parser->mip_count(), arguments.file);
    return decode_level(*parser, arguments);
}

mosaicer::BitmapFormat output_format(const std::string& file) {
    if (ends_with(file, ".png"))
        return mosaicer::BitmapFormat::png;
    if (ends_with(file, ".tga"))
        return mosaicer::BitmapFormat::tga;
    if (ends_with(file, ".bmp"))
        return mosaicer::BitmapFormat::bmp;
    throw CommandFailure("cannot tell the format of " + file + ": its name must end in .png, .tga or .bmp");
}

void convert(const ImageArguments& arguments) {
    const mosaicer::BitmapFormat format = output_format(arguments.output);
    if (!decode(arguments).save(arguments.output, format))
        throw CommandFailure("cannot write " + arguments.output);
}

} // namespace

void add_image_commands(CLI::App& app) {
    CLI::App* const image = app.add_subcommand("image", "Look at image files");
    image->require_subcommand(1);
    const auto arguments = std::make_shared<ImageArguments>();

    CLI::App* const info_command = image->add_subcommand("info", "Print format, size, levels and faces");
    info_command->add_option("FILE", arguments->file, "A .dds, .tga or .mip file")->required();
    info_command->callback([arguments] { info(*arguments); });

    CLI::App* const convert_command = image->add_subcommand("convert", "Decode one level and write it as an image");
    convert_command->add_option("FILE", arguments->file, "A .dds, .tga or .mip file")->required();
    convert_command->add_option("OUT", arguments->output, "The image to write: .png, .tga or .bmp")->required();
    convert_command->add_option("--level", arguments->level, "Which mip level; 0, the default, is the largest");
    convert_command->add_option("--face", arguments->face, "Which face of a cube map, 0 to 5");
    convert_command->callback([arguments] { convert(*arguments); });
}

} // namespace kst::tool
