#include "source/utility/image/CheckerTextureProducer.h"

#include "source/utility/image/convert_pixels.h"

#include <cstring>
#include <vector>

namespace kst {
namespace {

constexpr std::uint32_t yellow = 0x00FFFF00;
constexpr std::uint32_t pure_blue = 0x000000FF;

void fill_quadrants(std::uint8_t* out, std::uint32_t width, std::uint32_t height) {
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x, out += sizeof(yellow)) {
            const bool on_diagonal = (x < width / 2) == (y < height / 2);
            std::memcpy(out, on_diagonal ? &yellow : &pure_blue, sizeof(yellow));
        }
}

} // namespace

void CheckerTextureProducer::get_format(ImageDescription& description) const {
    description = {FORMAT_XRGB_8888, 8, 8};
}

void CheckerTextureProducer::read(void* dest, std::uint32_t*, const ImageDescription& wanted) {
    auto* out = static_cast<std::uint8_t*>(dest);
    if (wanted.format == FORMAT_XRGB_8888 || wanted.format == FORMAT_ARGB_8888)
        return fill_quadrants(out, wanted.width, wanted.height);
    const std::size_t count = std::size_t{wanted.width} * wanted.height;
    std::vector<std::uint8_t> block(count * sizeof(yellow));
    fill_quadrants(block.data(), wanted.width, wanted.height);
    convert_pixels(block.data(), FORMAT_XRGB_8888, count, wanted.format, out);
}

} // namespace kst
