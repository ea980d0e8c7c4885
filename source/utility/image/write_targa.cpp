#include "source/utility/image/write_targa.h"

#include <array>

namespace kst {

bool write_targa(Archive& archive, const ImageDescription& description, const void* pixels) {
    constexpr std::uint32_t longest_side = 0xFFFF;
    if ((description.format != FORMAT_XRGB_8888 && description.format != FORMAT_ARGB_8888) ||
        description.width > longest_side || description.height > longest_side)
        return false;
    std::array<std::uint8_t, 18> header{};
    header[2] = 2; // colour without a palette
    header[12] = static_cast<std::uint8_t>(description.width);
    header[13] = static_cast<std::uint8_t>(description.width >> 8);
    header[14] = static_cast<std::uint8_t>(description.height);
    header[15] = static_cast<std::uint8_t>(description.height >> 8);
    header[16] = static_cast<std::uint8_t>(image_format_info(description.format).bytes_per_pixel * 8);
    header[17] = 0x28; // first row at the top, 8 alpha bits
    archive.write(header.data(), header.size());
    archive.write(pixels, image_byte_count(description));
    return true;
}

} // namespace kst
