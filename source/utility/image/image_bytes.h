#pragma once

#include "source/utility/Archive.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kst {

// Bytes of an image file, read whole or not at all. A bounded archive throws its own std::range_error past its end; on
// one that ends without telling, these throw ImageParserException "Unexpected end of file", with `file_name` in front.

void read_exactly(Archive& archive, const std::string& file_name, void* data, std::size_t count);

/// Takes memory only as the file delivers, so that a count out of a header cannot ask for more than the file holds.
std::vector<std::uint8_t> read_block(Archive& archive, const std::string& file_name, std::uint64_t count);

/// The little-endian number at an offset.
std::uint16_t word_16(std::span<const std::uint8_t> bytes, std::size_t offset);
std::uint32_t word_32(std::span<const std::uint8_t> bytes, std::size_t offset);

/// The level whose long side is the wanted one: halves `long_side` until it is, and gives the last of `level_count`
/// levels if it never is.
std::uint32_t level_by_long_side(std::uint32_t long_side, std::uint32_t wanted, std::uint32_t level_count);

} // namespace kst
