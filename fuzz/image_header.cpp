// Image files of any bytes, looked at without their pixels: as each of the four formats. What the header tells of must
// be what the reader with the pixels tells.

#include "tests/support/TemporaryDirectory.h"
#include "texture/ImageHeader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const test_support::TemporaryDirectory folder;
    for (const char* const name : {"f.dds", "f.tga", "f.png", "f.bmp"}) {
        const std::string path = folder.write(name, {reinterpret_cast<const char*>(data), size});
        try {
            const auto header = mosaicer::read_image_header(path);
            const auto info = mosaicer::read_image_info(path);
            if (info && (!header || header->width != info->width || header->height != info->height))
                std::abort();
            if (header && !header->is_cube)
                mosaicer::pixel_outlook(path);
        } catch (const std::runtime_error&) {
            // The promised errors.
        }
    }
    return 0;
}
