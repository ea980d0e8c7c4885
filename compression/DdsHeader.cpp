#include "compression/DdsHeader.h"

#include "compression/LevelSize.h"

#include <algorithm>

namespace compression {
namespace {

/// Caps, height, width, pixel format, mip count, linear size.
constexpr std::uint32_t written_flags = 0x000A1007;
/// Complex, mipmap, texture; the same for a single level.
constexpr std::uint32_t written_caps = 0x00401008;

/// The fields in file order, each with its offset from the start of the header. Writer and reader walk this one list.
template <class Header, class Visit>
void visit_fields(Header& header, Visit visit) {
    visit(4, header.flags);
    visit(8, header.height);
    visit(12, header.width);
    visit(16, header.linear_size);
    visit(20, header.depth);
    visit(24, header.mip_count);
    for (std::size_t i = 0; i < header.pixel_format.size(); ++i)
        visit(72 + 4 * i, header.pixel_format[i]);
    visit(104, header.caps);
    visit(108, header.caps2);
}

void put_word(DdsHeaderBytes& bytes, std::size_t offset, std::uint32_t word) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(word >> (8 * i));
}

std::uint32_t get_word(const DdsHeaderBytes& bytes, std::size_t offset) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word |= std::uint32_t{bytes[offset + i]} << (8 * i);
    return word;
}

std::array<std::uint32_t, 8> written_pixel_format(std::int32_t format) {
    constexpr std::uint32_t size = 32;
    constexpr std::uint32_t has_four_cc = 4;
    switch (format) {
    case FORMAT_DXT3:
        return {size, has_four_cc, four_cc('D', 'X', 'T', '3')};
    case FORMAT_DXT5:
        return {size, has_four_cc, four_cc('D', 'X', 'T', '5')};
    case FORMAT_A8R8G8B8:
        return {size, 0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    case FORMAT_A8L8:
        return {size, 0x20001, 0, 16, 0xFF, 0, 0, 0xFF00};
    default:
        return {size, has_four_cc, four_cc('D', 'X', 'T', '1')};
    }
}

} // namespace

DdsHeader make_dds_header(std::int32_t format, std::int32_t width, std::int32_t height, std::size_t level_count) {
    DdsHeader header;
    header.flags = written_flags;
    header.height = static_cast<std::uint32_t>(height);
    header.width = static_cast<std::uint32_t>(width);
    header.linear_size = static_cast<std::uint32_t>(level_byte_count(format, width, height));
    header.mip_count =
        static_cast<std::uint32_t>(std::min(level_count, static_cast<std::size_t>(full_level_count(width, height))));
    header.pixel_format = written_pixel_format(format);
    header.caps = written_caps;
    return header;
}

DdsHeaderBytes encode_dds_header(const DdsHeader& header) {
    DdsHeaderBytes bytes{};
    put_word(bytes, 0, dds_header_size);
    visit_fields(header, [&](std::size_t offset, std::uint32_t field) { put_word(bytes, offset, field); });
    return bytes;
}

DdsHeader decode_dds_header(const DdsHeaderBytes& bytes) {
    DdsHeader header;
    visit_fields(header, [&](std::size_t offset, std::uint32_t& field) { field = get_word(bytes, offset); });
    return header;
}

} // namespace compression
