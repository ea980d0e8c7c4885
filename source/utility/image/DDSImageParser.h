#pragma once

#include "source/utility/image/ImageParser.h"

#include <cstdint>

namespace kst {

/// Reads DDS files: header, sizes and stored levels, without decoding blocks. The tool takes a texture's size and faces
/// from here.
///
/// Offsets of the fields in the file: flags 8, height 12, width 16, linear size 20, mip count 28, four character code
/// 84, bits a pixel 88, masks 92 to 107, caps 2 112. The magic is not compared. Levels follow at 128, face by face,
/// level 0 first. A level takes a quarter of the one before; a size of 8 or less stays.
class DDSImageParser : public ImageParser {
public:
    using ImageParser::ImageParser;

    /// Throws ErrorWithCStack "NAMEHas an unrecognized DDS file type." unless the file holds DXT1 to DXT5, A8R8G8B8,
    /// two 8-bit channels (format 14) or four floats.
    void open() override;
    void close() override;

    bool has_palette() const override { return false; }
    void get_format(ImageDescription& description) const override { description = description_; }
    /// As the header says; 1 where it says 0.
    std::uint32_t mip_count() const override { return mip_count_; }
    /// 6 for a cube map.
    std::uint32_t face_count() const override { return face_count_; }
    void set_face(std::uint32_t index) override { face_ = index; }

    /// The level of the current face whose long side is that of `wanted`, the last if there is none. Sizes are not
    /// changed. Throws ImageParserException "Cannot convert a compressed image" if the file's format is compressed and
    /// not the wanted one.
    void read(void* dest, std::uint32_t* palette, const ImageDescription& wanted) override;

private:
    std::uint64_t level_size(std::uint32_t level) const;
    std::uint64_t entry_offset(std::uint32_t face, std::uint32_t level) const;

    Archive archive_;
    ImageDescription description_;
    std::uint32_t mip_count_ = 1;
    std::uint32_t face_count_ = 1;
    std::uint32_t face_ = 0;
    std::uint64_t first_size_ = 0; ///< bytes of level 0
};

} // namespace kst
