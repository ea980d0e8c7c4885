#include "source/utility/image/image_bytes.h"

#include "source/utility/image/ImageParser.h"

#include <algorithm>
#include <limits>

namespace kst {
namespace {

/// Taken before the file has shown that it holds as much.
constexpr std::size_t first_chunk = std::size_t{1} << 20;

} // namespace

void read_exactly(Archive& archive, const std::string& file_name, void* data, std::size_t count) {
    if (archive.read(data, count) != count)
        throw ImageParserException(file_name, "Unexpected end of file");
}

std::vector<std::uint8_t> read_block(Archive& archive, const std::string& file_name, std::uint64_t count) {
    std::vector<std::uint8_t> block;
    // A bounded archive that is too short throws here, before it looks at where the bytes should go.
    const auto room = static_cast<std::uint64_t>(std::max<std::int64_t>(archive.size() - archive.position(), 0));
    if (!archive.unbounded() && count > room)
        archive.read(nullptr, static_cast<std::size_t>(count));
    while (block.size() < count) {
        const std::size_t have = block.size();
        const auto chunk = static_cast<std::size_t>(std::min<std::uint64_t>(count - have, std::max(first_chunk, have)));
        block.resize(have + chunk);
        read_exactly(archive, file_name, block.data() + have, chunk);
    }
    return block;
}

std::uint16_t word_16(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

std::uint32_t word_32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return word_16(bytes, offset) | std::uint32_t{word_16(bytes, offset + 2)} << 16;
}

std::uint32_t level_by_long_side(std::uint32_t long_side, std::uint32_t wanted, std::uint32_t level_count) {
    // After 32 halvings the side is 0 and stays there.
    const std::uint32_t last = level_count - 1;
    for (std::uint32_t level = 0; level < std::min(last, 32U); ++level)
        if (long_side >> level == wanted)
            return level;
    return last;
}

} // namespace kst
