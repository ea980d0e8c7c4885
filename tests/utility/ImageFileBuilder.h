#pragma once

#include "source/utility/image/DDSImageParser.h"
#include "source/utility/image/MIPImageParser.h"
#include "source/utility/image/TargaImageParser.h"
#include "tests/utility/BytesFileSystem.h"

#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

namespace kst {

inline void PrintTo(const ImageDescription& image, std::ostream* out) {
    *out << "format " << image.format << ", " << image.width << " by " << image.height;
}

} // namespace kst

namespace test_support {

using Bytes = std::vector<std::uint8_t>;

inline Bytes counting(std::size_t count, int first = 0) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(first));
    return bytes;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Bytes words(const std::vector<std::uint32_t>& values) {
    Bytes bytes;
    for (const std::uint32_t value : values)
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    return bytes;
}

struct TargaHead {
    std::uint8_t id_length = 0;
    std::uint8_t colormap_type = 0;
    std::uint8_t image_type = 2;
    std::uint8_t colormap_first = 0;
    std::uint8_t colormap_length = 0;
    std::uint8_t colormap_depth = 0;
    std::uint8_t width = 0;
    std::uint8_t height = 0;
    std::uint8_t depth = 32;
    std::uint8_t descriptor = 32 | 8;

    Bytes bytes() const {
        return {id_length,  colormap_type,
                image_type, colormap_first,
                0,          colormap_length,
                0,          colormap_depth,
                0,          0,
                0,          0,
                width,      0,
                height,     0,
                depth,      descriptor};
    }
};

struct DdsHead {
    std::uint32_t flags = 0x1007;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t linear_size = 0;
    std::uint32_t mip_count = 0;
    std::uint32_t code = 0;
    std::uint32_t bits = 0;
    std::uint32_t masks[4] = {};
    std::uint32_t caps2 = 0;
    std::uint32_t magic = 0x20534444;

    Bytes bytes() const {
        return words({magic, 124, flags, height, width, linear_size, 0, mip_count}) + Bytes(44) +
               words({32, 4, code, bits, masks[0], masks[1], masks[2], masks[3], 0x1000, caps2, 0, 0, 0});
    }
    static DdsHead compressed(char digit, std::uint32_t side_x, std::uint32_t side_y) {
        return {.width = side_x, .height = side_y, .code = 0x00545844U | static_cast<std::uint32_t>(digit) << 24};
    }
    static DdsHead argb(std::uint32_t side_x, std::uint32_t side_y) {
        return {.width = side_x, .height = side_y, .bits = 32, .masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000}};
    }
};

/// A parser on bytes, opened.
template <class Parser>
struct Opened {
    Bytes file;
    BytesFileSystem files;
    Parser parser;

    explicit Opened(Bytes bytes, bool unbounded = false)
        : file(std::move(bytes)), files(file.data(), file.size(), unbounded), parser("the.file") {
        parser.set_file_system(&files);
        parser.open();
    }

    kst::ImageDescription format() const {
        kst::ImageDescription description;
        parser.get_format(description);
        return description;
    }

    /// What `read` makes of a buffer of exactly the promised size, filled with 0xEE.
    Bytes read(const kst::ImageDescription& wanted, std::uint32_t* palette = nullptr) {
        Bytes pixels(kst::image_byte_count(wanted), 0xEE);
        parser.read(pixels.data(), palette, wanted);
        return pixels;
    }
    Bytes read() { return read(format()); }
};

/// The text of the exception that opening throws.
template <class Parser>
std::string open_failure(const Bytes& bytes, bool unbounded = false) {
    try {
        Opened<Parser> opened(bytes, unbounded);
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

} // namespace test_support
