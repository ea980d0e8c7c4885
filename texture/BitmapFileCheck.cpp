#include "texture/BitmapFileCheck.h"

#include <array>
#include <cstddef>
#include <fstream>

namespace mosaicer {
namespace {

using FileHead = std::array<std::uint8_t, 34>;

std::int64_t little_endian(const FileHead& head, std::size_t offset, std::size_t count) {
    std::int64_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
        value |= std::int64_t{head[offset + i]} << (8 * i);
    return value;
}

/// Where the pixels of a TGA file begin: behind the head, the identification and the colour map.
std::int64_t tga_pixel_offset(const FileHead& head) {
    const std::int64_t colour_map = head[1] == 0 ? 0 : little_endian(head, 5, 2) * ((head[7] + 7) / 8);
    return 18 + head[0] + colour_map;
}

/// Walks the packets of a run-length TGA file: a byte with the count less one and, in its top bit, whether one pixel
/// follows for all of them or one for each.
bool tga_runs_are_whole(std::ifstream& file, const FileHead& head, std::int64_t pixels) {
    file.clear();
    file.seekg(tga_pixel_offset(head));
    const std::int64_t pixel_bytes = (head[16] + 7) / 8;
    while (pixels > 0) {
        const int packet = file.get();
        if (packet == std::ifstream::traits_type::eof())
            return false;
        const std::int64_t count = (packet & 0x7F) + 1;
        const std::int64_t bytes = (packet & 0x80) != 0 ? pixel_bytes : count * pixel_bytes;
        file.ignore(bytes);
        pixels -= count;
        if (file.gcount() != bytes)
            return false;
    }
    return pixels == 0;
}

std::int64_t least_bmp_size(const FileHead& head, const PromisedPicture& picture) {
    // Compression 1 and 2 are run lengths, where a file may also end early or skip; 16,384 pixels a byte are beyond
    // use.
    const bool has_compression_field = little_endian(head, 14, 4) >= 40;
    if (has_compression_field && (head[30] == 1 || head[30] == 2))
        return picture.width * picture.height / 16384;
    // Rows are filled up to 4 bytes; some writers leave the last row's filling out.
    return little_endian(head, 10, 4) + (picture.width * picture.bits + 31) / 32 * 4 * picture.height - 3;
}

} // namespace

bool file_can_hold(const std::string& path, BitmapFormat format, const PromisedPicture& picture) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::int64_t file_size = file.tellg();
    file.seekg(0);
    FileHead head{};
    file.read(reinterpret_cast<char*>(head.data()), head.size());

    const std::int64_t pixels = picture.width * picture.height;
    switch (format) {
    case BitmapFormat::png:
        // Deflate turns one byte into 1,032 at best, and a byte holds at most 8 pixels.
        return pixels / 8 / 1032 <= file_size;
    case BitmapFormat::bmp:
        return least_bmp_size(head, picture) <= file_size;
    case BitmapFormat::tga:
        break;
    }
    // Run-length types have numbers from 9 on; a packet covers 128 pixels.
    if (head[2] >= 9)
        return pixels / 128 <= file_size && tga_runs_are_whole(file, head, pixels);
    return tga_pixel_offset(head) + pixels * ((head[16] + 7) / 8) <= file_size;
}

} // namespace mosaicer
