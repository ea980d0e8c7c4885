#include "bench/compression/Pictures.h"

#include "compression/CompressionOptions.h"

#include <FreeImage.h>
#include <squish.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>

namespace mosaicer::bench {
namespace {

struct Unload {
    void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using Bitmap = std::unique_ptr<FIBITMAP, Unload>;

Bitmap read_32_bits(const std::string& path) {
    const FREE_IMAGE_FORMAT format = FreeImage_GetFileType(path.c_str(), 0);
    if (format == FIF_UNKNOWN)
        return nullptr;
    const Bitmap read(FreeImage_Load(format, path.c_str(), 0));
    return Bitmap(read ? FreeImage_ConvertTo32Bits(read.get()) : nullptr);
}

compression::LevelImage to_level(FIBITMAP* bitmap) {
    compression::LevelImage level;
    level.width = static_cast<std::int32_t>(FreeImage_GetWidth(bitmap)) & ~3;
    level.height = static_cast<std::int32_t>(FreeImage_GetHeight(bitmap)) & ~3;
    for (int y = 0; y < level.height; ++y) {
        const int row = static_cast<int>(FreeImage_GetHeight(bitmap)) - 1 - y; // stored from the bottom
        const BYTE* line = FreeImage_GetScanLine(bitmap, row);
        for (int x = 0; x < level.width; ++x)
            level.pixels.insert(level.pixels.end(), {line[4 * x + FI_RGBA_RED], line[4 * x + FI_RGBA_GREEN],
                                                     line[4 * x + FI_RGBA_BLUE], line[4 * x + FI_RGBA_ALPHA]});
    }
    return level;
}

std::uint8_t to_byte(double value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
}

} // namespace

Picture make_picture(std::string name, compression::LevelImage bytes) {
    Picture picture{std::move(name), std::move(bytes), {}};
    picture.floats.width = picture.bytes.width;
    picture.floats.height = picture.bytes.height;
    for (const std::uint8_t byte : picture.bytes.pixels)
        picture.floats.pixels.push_back(static_cast<float>(byte) / 255.0f);
    return picture;
}

std::vector<Picture> load_pictures(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<Picture> pictures;
    for (const auto& file : files) {
        const Bitmap bitmap = read_32_bits(file.string());
        if (!bitmap || FreeImage_GetWidth(bitmap.get()) < 4 || FreeImage_GetHeight(bitmap.get()) < 4)
            continue;
        pictures.push_back(make_picture(file.lexically_relative(folder).string(), to_level(bitmap.get())));
    }
    return pictures;
}

Picture photograph(int width, int height) {
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0, 2.5);
    compression::LevelImage level{width, height, {}};
    level.pixels.reserve(static_cast<std::size_t>(width * height) * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double u = static_cast<double>(x) / 256;
            const double v = static_cast<double>(y) / 256;
            const double soft = 110 + 60 * std::sin(u * 2.1 + v) + 30 * std::cos(v * 3.3 - u);
            const double leaf = 38 * std::sin(u * 31 + 9 * std::sin(v * 7)) * std::sin(v * 43 + u * 5);
            const double edge = std::sin(u * 11 + std::sin(v * 5) * 3) > 0.6 ? 35 : 0;
            const double grain = noise(random);
            level.pixels.push_back(to_byte(soft + leaf + edge + grain + noise(random)));
            level.pixels.push_back(to_byte(soft * 0.9 + leaf * 1.1 + edge * 0.4 + grain + noise(random)));
            level.pixels.push_back(to_byte(soft * 0.7 + leaf * 0.5 - edge * 0.3 + 20 + grain + noise(random)));
            level.pixels.push_back(to_byte(400 - 350 * std::hypot(u - width / 512.0, v - height / 512.0)));
        }
    return make_picture("photograph", std::move(level));
}

std::vector<std::uint8_t> decode_blocks(const std::vector<std::uint8_t>& blocks, std::int32_t format, int width,
                                        int height) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width * height) * 4);
    const int flag = format == compression::FORMAT_DXT1   ? squish::kDxt1
                     : format == compression::FORMAT_DXT3 ? squish::kDxt3
                                                          : squish::kDxt5;
    squish::DecompressImage(pixels.data(), width, height, blocks.data(), flag);
    return pixels;
}

} // namespace mosaicer::bench
