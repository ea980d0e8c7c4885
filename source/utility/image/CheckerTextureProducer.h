#pragma once

#include "source/utility/image/ImageParser.h"

#include <cstdint>

namespace kst {

/// An image made from nothing, which stands in for a missing file: four quadrants in two colours.
class CheckerTextureProducer : public ImageParser {
public:
    static constexpr std::uint32_t class_type_id = 0x3ECA1DDA;

    CheckerTextureProducer() : ImageParser(std::string{}) {}

    bool is_a(std::uint32_t type_id) const override { return type_id == class_type_id || ImageParser::is_a(type_id); }
    std::uint32_t type_id() const override { return class_type_id; }

    bool has_palette() const override { return false; }
    /// Format 10, 8 by 8, whatever was asked for.
    void get_format(ImageDescription& description) const override;
    std::uint32_t mip_count() const override { return 1; }
    /// Any size; any format that convert_pixels makes of format 10, and 11 with the same bytes.
    void read(void* dest, std::uint32_t* palette, const ImageDescription& wanted) override;
};

} // namespace kst
