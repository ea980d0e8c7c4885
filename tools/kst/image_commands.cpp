#include "tools/kst/Command.h"
#include "tools/kst/decode_image.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

namespace kst::tool {
namespace {

struct ImageArguments {
    ImageChoice choice;
    std::string output;
};

void info(const ImageArguments& arguments) {
    const ImageFacts image = image_facts(arguments.choice.file);
    std::cout << "format=" << image.format << " width=" << image.width << " height=" << image.height
              << " levels=" << image.levels << " faces=" << image.faces << '\n';
}

mosaicer::BitmapFormat output_format(const std::string& file) {
    if (has_extension(file, ".png"))
        return mosaicer::BitmapFormat::png;
    if (has_extension(file, ".tga"))
        return mosaicer::BitmapFormat::tga;
    if (has_extension(file, ".bmp"))
        return mosaicer::BitmapFormat::bmp;
    throw CommandFailure("cannot tell the format of " + file + ": its name must end in .png, .tga or .bmp");
}

void convert(const ImageArguments& arguments) {
    const mosaicer::BitmapFormat format = output_format(arguments.output);
    if (!decode_image(arguments.choice).save(arguments.output, format))
        throw CommandFailure("cannot write " + arguments.output);
}

/// How far two pictures of one size are apart.
struct ImageDifference {
    std::uint64_t colour_squares = 0; ///< sum over red, green and blue of all pixels
    std::uint64_t alpha_squares = 0;
    int largest = 0;
    std::int32_t x = 0; ///< of the first largest one, rows from the top, red before green, blue and alpha
    std::int32_t y = 0;
    const char* channel = "";
};

ImageDifference difference(const mosaicer::Bitmap& a, const mosaicer::Bitmap& b) {
    struct Channel {
        const char* name;
        std::size_t offset;
    };
    constexpr std::array channels{Channel{"red", 2}, Channel{"green", 1}, Channel{"blue", 0}, Channel{"alpha", 3}};
    ImageDifference all;
    for (std::int32_t y = 0; y < a.height(); ++y) {
        const std::uint8_t* left = a.row(y);
        const std::uint8_t* right = b.row(y);
        for (std::int32_t x = 0; x < a.width(); ++x, left += 4, right += 4) {
            for (const Channel& channel : channels) {
                const int apart = std::abs(left[channel.offset] - right[channel.offset]);
                (channel.offset == 3 ? all.alpha_squares : all.colour_squares) +=
                    static_cast<std::uint64_t>(apart * apart);
                if (apart > all.largest) {
                    all.largest = apart;
                    all.x = x;
                    all.y = y;
                    all.channel = channel.name;
                }
            }
        }
    }
    return all;
}

/// Decibels with two decimals: "inf" where nothing differs.
std::string psnr_text(std::uint64_t squares, std::uint64_t samples) {
    if (squares == 0)
        return "inf";
    const double mean = static_cast<double>(squares) / static_cast<double>(samples);
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), 10.0 * std::log10(255.0 * 255.0 / mean),
                                   std::chars_format::fixed, 2);
    return {text.data(), end.ptr};
}

void diff(const ImageArguments& arguments) {
    const mosaicer::Bitmap a = decode_image(arguments.choice);
    const mosaicer::Bitmap b = decode_image({arguments.output, arguments.choice.level, arguments.choice.face});
    if (a.width() != b.width() || a.height() != b.height())
        throw CommandFailure("the sizes differ: " + std::to_string(a.width()) + "x" + std::to_string(a.height()) +
                             " and " + std::to_string(b.width()) + "x" + std::to_string(b.height()));
    const ImageDifference all = difference(a, b);
    const std::uint64_t pixels = a.pixels().size() / 4;
    std::cout << "psnr_colour=" << psnr_text(all.colour_squares, 3 * pixels)
              << " psnr_alpha=" << psnr_text(all.alpha_squares, pixels) << " largest=" << all.largest;
    if (all.largest > 0)
        std::cout << " x=" << all.x << " y=" << all.y << " channel=" << all.channel;
    std::cout << '\n';
}

void add_level_and_face(CLI::App& command, ImageArguments& arguments) {
    command.add_option("--level", arguments.choice.level, "Which mip level; 0, the default, is the largest");
    command.add_option("--face", arguments.choice.face, "Which face of a cube map, 0 to 5, or slice of a volume");
}

} // namespace

void add_image_commands(CLI::App& app) {
    constexpr const char* image_file = "A .dds, .tga, .mip, .png or .bmp file";
    CLI::App* const image = app.add_subcommand("image", "Look at image files");
    image->require_subcommand(1);
    const auto arguments = std::make_shared<ImageArguments>();

    CLI::App* const info_command = image->add_subcommand("info", "Print format, size, levels and faces");
    info_command->add_option("FILE", arguments->choice.file, image_file)->required();
    info_command->callback([arguments] { info(*arguments); });

    CLI::App* const convert_command = image->add_subcommand("convert", "Decode one level and write it as an image");
    convert_command->add_option("FILE", arguments->choice.file, image_file)->required();
    convert_command->add_option("OUT", arguments->output, "The image to write: .png, .tga or .bmp")->required();
    add_level_and_face(*convert_command, *arguments);
    convert_command->callback([arguments] { convert(*arguments); });

    CLI::App* const diff_command = image->add_subcommand(
        "diff",
        "Print how far two images of one size are apart: the PSNR of colour and of alpha in decibels, inf where "
        "nothing differs, and the largest difference of a channel with its place from the top left");
    diff_command->add_option("A", arguments->choice.file, image_file)->required();
    diff_command->add_option("B", arguments->output, image_file)->required();
    add_level_and_face(*diff_command, *arguments);
    diff_command->callback([arguments] { diff(*arguments); });
}

} // namespace kst::tool
