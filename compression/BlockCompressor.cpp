#include "compression/BlockCompressor.h"

#include <cassert>

namespace compression {

void encode_blocks(const FloatImage&, const CompressionOptions&, std::uint8_t*) {
    assert(false && "block formats are refused before this");
}

} // namespace compression
