#pragma once

#include "source/utility/image/ImageParser.h"

#include <cstdint>

namespace kst {

/// Reads the engine's own image files, levels largest first, in two forms. All numbers have 32 bits.
///
///    0  "MIP2"                                        0  bytes 46 C4 53 4B
///    4  type, 1                                       4  format
///    8  format                                        8  width
///   12  width                                        12  height
///   16  height                                       16  levels
///   20  level count
///   24  palette of 256 times 3 bytes, in format 12 only, then the levels
///
/// In the first form level i has width >> i by height >> i pixels. In the older one the first level takes 3 bytes a
/// pixel in format 9 and 4 in all others, each further one a quarter of the one before, and there are as many as the
/// smaller side can be halved before it is 0.
class MIPImageParser : public ImageParser {
public:
    using ImageParser::ImageParser;

    /// Throws ErrorWithCStack "NAME appears to be corrupted, or has the wrong file format" for any other start, and for
    /// a format number that does not exist.
    void open() override;
    void close() override;

    bool has_palette() const override { return false; }
    void get_format(ImageDescription& description) const override { description = description_; }
    std::uint32_t mip_count() const override { return mip_count_; }

    /// The level whose long side is that of `wanted`, the last if there is none. Sizes are not changed. Compressed
    /// formats take one byte a pixel here. `palette` takes the file's, red highest, top byte 0. A file of a type other
    /// than 0 and 1, or without levels, delivers nothing. Throws ImageParserException "Cannot convert a compressed
    /// image" like the DDS parser.
    void read(void* dest, std::uint32_t* palette, const ImageDescription& wanted) override;

private:
    void read_header();
    void read_older_header();
    void read_palette(std::uint32_t* palette);
    std::uint64_t level_size(std::uint32_t level) const;
    std::uint64_t level_offset(std::uint32_t level) const;

    Archive archive_;
    ImageDescription description_;
    std::uint32_t type_ = 0;
    std::uint32_t mip_count_ = 0;
    std::uint64_t levels_offset_ = 0;
    bool older_ = false;
};

} // namespace kst
