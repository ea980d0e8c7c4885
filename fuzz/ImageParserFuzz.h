#pragma once

#include "source/utility/image/convert_pixels.h"
#include "tests/utility/BytesFileSystem.h"

#include <cstdint>
#include <exception>
#include <vector>

namespace fuzz {

/// Opens bytes with a parser and asks for what a client would: the image as it is, and two conversions at a small size.
/// Buffers have exactly the promised size, so that a sanitizer sees a byte too many.
template <class Parser>
void run_image_parser(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint64_t most_bytes = 1 << 16;
    for (const bool unbounded : {false, true}) {
        test_support::BytesFileSystem files(data, size, unbounded);
        Parser parser("fuzzed");
        parser.set_file_system(&files);
        kst::ImageDescription description;
        try {
            parser.open();
            parser.get_format(description);
            parser.set_face(parser.face_count() - 1);
        } catch (const std::exception&) {
            continue;
        }
        for (const kst::ImageDescription& wanted : {description, kst::ImageDescription{kst::FORMAT_ARGB_8888, 4, 4},
                                                    kst::ImageDescription{kst::FORMAT_RGB_565, description.width, 1},
                                                    kst::ImageDescription{description.format, 2, 3}}) {
            if (kst::image_byte_count(wanted) > most_bytes)
                continue;
            std::vector<std::uint8_t> pixels(kst::image_byte_count(wanted));
            std::vector<std::uint32_t> palette(256);
            try {
                parser.read(pixels.data(), palette.data(), wanted);
            } catch (const std::exception&) {
            }
        }
    }
}

} // namespace fuzz
