// The DDS reader on any bytes: both results are allowed, but no level without its bytes. The densest formats hold two
// pixels a byte, so the images never take more than eight times of what the file holds.

#include "compression/Codes.h"
#include "compression/DdsReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

struct Stream {
    const std::uint8_t* data;
    std::size_t size;
    std::size_t position = 0;
};

std::size_t read(void* destination, std::size_t count, void* user) {
    auto& stream = *static_cast<Stream*>(user);
    const std::size_t given = std::min(count, stream.size - stream.position);
    if (given > 0)
        std::memcpy(destination, stream.data + stream.position, given);
    stream.position += given;
    return given;
}

std::size_t pixel_bytes(const std::vector<compression::LevelImage>& images) {
    std::size_t sum = 0;
    for (const auto& image : images) {
        if (image.pixels.size() != static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height) * 4)
            std::abort();
        sum += image.pixels.size();
    }
    return sum;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const std::uint32_t level_limit : {0U, 1U}) {
        Stream stream{data, size};
        compression::DdsInfo info;
        const std::int32_t code = compression::read_dds(info, 0, level_limit, read, &stream);
        std::size_t sum = pixel_bytes(info.images);
        for (const auto& face : info.faces)
            sum += pixel_bytes(face);
        for (const auto& level : info.slices)
            sum += pixel_bytes(level);
        if (sum > 8 * size || (code == compression::OK && sum == 0))
            std::abort();
    }
    return 0;
}
