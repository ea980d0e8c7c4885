#pragma once

#include <cstddef>
#include <cstdint>

namespace compression {

/// Where a decoder puts some rows of a level: red, green, blue, alpha bytes, rows packed. Not owned.
struct DecodedRows {
    std::int32_t width;
    std::int32_t height;
    std::uint8_t* pixels; ///< byte_count()

    std::size_t byte_count() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4; }
};

} // namespace compression
