#pragma once

#include "source/utility/image/ImageParser.h"

#include <cstdint>
#include <vector>

namespace kst {

/// Reads uncompressed TARGA files.
///
///    0  1  length of the image's identifier          8  4  origin, unused
///    1  1  1: the file has a colour map             12  2  width
///    2  1  image type: 1 palette, 2 colour, 3 grey  14  2  height
///    3  2  first entry of the colour map            16  1  bits a pixel
///    5  2  entries of the colour map                17  1  bits 0-3: alpha bits; 16: rows run right to left;
///    7  1  bits of an entry                                32: the first row is at the top
///   18     identifier, colour map, pixels
class TargaImageParser : public ImageParser {
public:
    using ImageParser::ImageParser;

    /// Throws ImageParserException "Unsupported TARGA type" for other types, compressed ones among them, "Palettized
    /// TARGA files with palette resolution other than 24 or 32 bits unsupported", and "Unsupported color depth" unless
    /// pixels have 8 bits with 8 alpha bits, 16 or 24 with none, or 32 with 8.
    void open() override;
    void close() override;

    bool has_palette() const override { return false; }
    void get_format(ImageDescription& description) const override { description = description_; }
    std::uint32_t mip_count() const override { return 1; }

    /// Any size, by nearest neighbour, and any format that convert_pixels makes of the file's. `palette`, where the
    /// file has a colour map, takes its entries, the file's first byte lowest, with 255 on top where they have three
    /// bytes. Throws ImageParserException "Color map exceeds 256 entries" for a map that does not fit.
    void read(void* dest, std::uint32_t* palette, const ImageDescription& wanted) override;

private:
    struct Header {
        std::uint8_t id_length = 0;
        std::uint8_t colormap_type = 0;
        std::uint8_t image_type = 0;
        std::uint16_t colormap_first = 0;
        std::uint16_t colormap_length = 0;
        std::uint8_t colormap_depth = 0;
        std::uint8_t depth = 0;
        std::uint8_t descriptor = 0;
    };

    void read_header();
    void check_header();
    void read_palette(std::uint32_t* palette);
    void orient(std::uint8_t* rows) const;
    std::size_t bytes_per_pixel() const;
    std::vector<std::uint8_t> resized(const std::vector<std::uint8_t>& source, const ImageDescription& wanted) const;

    Archive archive_;
    Header header_;
    ImageDescription description_;
};

} // namespace kst
