// A chain through the whole library: compressed into a file, read back, compared with what went in.

#include "compression/DdsReader.h"
#include "compression/compress_mip_chain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace compression {
namespace {

/// Level 0 is a round gradient with a soft alpha; each further level holds every second pixel.
std::vector<LevelImage> chain(std::int32_t side) {
    std::vector<LevelImage> levels;
    for (std::int32_t step = 1; side >= 1; step *= 2, side /= 2) {
        LevelImage level{side, side, {}};
        for (std::int32_t y = 0; y < side; ++y)
            for (std::int32_t x = 0; x < side; ++x)
                for (const std::int32_t value :
                     {40 + 9 * step * x, 220 - 7 * step * y, 3 * step * (x + y), 255 - 8 * step * y})
                    level.pixels.push_back(static_cast<std::uint8_t>(std::clamp(value, 0, 255)));
        levels.push_back(std::move(level));
    }
    return levels;
}

std::int32_t append(const void* bytes, std::size_t count, const LevelRecord*, void* user) {
    auto& file = *static_cast<std::vector<std::uint8_t>*>(user);
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    file.insert(file.end(), first, first + count);
    return 0;
}

struct Source {
    const std::vector<std::uint8_t>& bytes;
    std::size_t position = 0;
};

std::size_t take(void* destination, std::size_t count, void* user) {
    auto& source = *static_cast<Source*>(user);
    count = std::min(count, source.bytes.size() - source.position);
    std::memcpy(destination, source.bytes.data() + source.position, count);
    source.position += count;
    return count;
}

struct Error {
    double colour = 0; ///< root mean square over red, green and blue of all levels
    double alpha = 0;
};

Error error_between(const std::vector<LevelImage>& a, const std::vector<LevelImage>& b) {
    Error error;
    double count = 0;
    for (std::size_t level = 0; level < a.size(); ++level)
        for (std::size_t i = 0; i < a[level].pixels.size(); ++i) {
            const double d = a[level].pixels[i] - b[level].pixels[i];
            (i % 4 == 3 ? error.alpha : error.colour) += d * d;
            count += 0.25;
        }
    return {std::sqrt(error.colour / (3 * count)), std::sqrt(error.alpha / count)};
}

struct RoundTrip {
    std::int32_t format;
    std::int32_t quality;
    std::size_t bytes; ///< of a chain of 12 by 12
    double colour;     ///< greatest error, measured once and rounded up
    double alpha;      ///< negative: the format keeps none
};

class RoundTrips : public ::testing::TestWithParam<RoundTrip> {};

TEST_P(RoundTrips, come_back_close_to_what_went_in) {
    const RoundTrip& c = GetParam();
    const auto levels = chain(12);
    CompressionOptions options;
    options.g_texture_format = c.format;
    options.g_quality = c.quality;
    options.g_mip_map_type = 31;
    options.g_specified_mip_maps = static_cast<std::int32_t>(levels.size());
    std::vector<std::uint8_t> file;
    ASSERT_EQ(compress_mip_chain(levels, options, append, &file), OK);
    EXPECT_EQ(file.size(), 128 + c.bytes);

    DdsInfo info;
    Source source{file};
    ASSERT_EQ(read_dds(info, 0, 0, take, &source), OK);
    EXPECT_EQ(source.position, file.size());
    ASSERT_EQ(info.images.size(), levels.size());
    const Error error = error_between(levels, info.images);
    EXPECT_LT(error.colour, c.colour);
    if (c.alpha >= 0) {
        EXPECT_LE(error.alpha, c.alpha);
    }
}

// Levels of 12, 6, 3 and 1 texels: 9 + 4 + 1 + 1 blocks.
INSTANTIATE_TEST_SUITE_P(
    Formats, RoundTrips,
    ::testing::Values(RoundTrip{FORMAT_DXT1, 68, 15 * 8, 12, -1}, RoundTrip{FORMAT_DXT1, 72, 15 * 8, 11, -1},
                      RoundTrip{FORMAT_DXT3, 68, 15 * 16, 12, 5}, RoundTrip{FORMAT_DXT3, 72, 15 * 16, 11, 5},
                      RoundTrip{FORMAT_DXT5, 68, 15 * 16, 12, 2}, RoundTrip{FORMAT_DXT5, 72, 15 * 16, 11, 2},
                      RoundTrip{FORMAT_A8R8G8B8, 72, (144 + 36 + 9 + 1) * 4, 1e-9, 0}));

} // namespace
} // namespace compression
