#include "compression/GreyColourTables.h"

#include "compression/ColourLattice.h"
#include "compression/CompressionOptions.h"
#include "compression/PaletteError.h"

#include <gtest/gtest.h>

namespace compression {
namespace {

struct RowCase {
    int grey;
    bool in_free, in_four;
    std::array<std::uint8_t, 3> end0, end1;
    int colour_count, index;
};

TEST(GreyColourTables, hold_the_known_rows) {
    const GreyColourTables& tables = GreyColourTables::instance();
    const std::array rows{
        RowCase{0, true, true, {0, 0, 0}, {0, 0, 0}, 4, 0},
        RowCase{1, true, true, {0, 0, 0}, {0, 1, 0}, 4, 2},
        RowCase{3, true, false, {0, 0, 0}, {1, 1, 1}, 3, 2},
        RowCase{3, false, true, {0, 0, 0}, {1, 2, 1}, 4, 2},
        RowCase{100, true, true, {1, 0, 1}, {18, 37, 18}, 4, 3},
        RowCase{127, true, false, {0, 0, 0}, {31, 63, 31}, 3, 2},
        RowCase{127, false, true, {0, 16, 0}, {23, 39, 23}, 4, 3},
        RowCase{128, true, true, {1, 1, 1}, {23, 47, 23}, 4, 3},
        RowCase{254, true, true, {0, 0, 0}, {31, 63, 31}, 4, 1},
        RowCase{255, true, true, {0, 0, 0}, {31, 63, 31}, 4, 1},
    };
    for (const RowCase& expected : rows)
        for (const bool free : {true, false}) {
            if (!(free ? expected.in_free : expected.in_four))
                continue;
            const GreyRow& row = (free ? tables.free : tables.four)[static_cast<std::size_t>(expected.grey)];
            EXPECT_EQ(row.end0, expected.end0) << expected.grey << free;
            EXPECT_EQ(row.end1, expected.end1) << expected.grey << free;
            EXPECT_EQ(row.colour_count, expected.colour_count) << expected.grey << free;
            EXPECT_EQ(row.index, expected.index) << expected.grey << free;
        }
}

// The least distance from a grey that a channel can reach through one palette entry, over all pairs of ends.
int least_distance(int grey, std::size_t channel, int colour_count, std::size_t index) {
    int least = 256;
    for (int a = 0; a <= channel_max[channel]; ++a)
        for (int b = 0; b <= channel_max[channel]; ++b) {
            std::array<int, 3> end0{};
            std::array<int, 3> end1{};
            end0[channel] = a;
            end1[channel] = b;
            const Palette palette = make_palette(end0, end1, colour_count, FORMAT_DXT1);
            least = std::min(least, std::abs(palette.entries[index][channel] - grey));
        }
    return least;
}

double weighted(const std::array<int, 3>& distances) {
    double error = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const double difference = static_cast<double>(CompressionOptions{}.colour_weights[c]) * distances[c];
        error += difference * difference;
    }
    return error;
}

double row_error(const GreyRow& row, int grey) {
    std::array<int, 3> end0{};
    std::array<int, 3> end1{};
    std::copy(row.end0.begin(), row.end0.end(), end0.begin());
    std::copy(row.end1.begin(), row.end1.end(), end1.begin());
    const Palette palette = make_palette(end0, end1, row.colour_count, FORMAT_DXT1);
    std::array<int, 3> distances{};
    for (std::size_t c = 0; c < 3; ++c)
        distances[c] = std::abs(palette.entries[row.index][c] - grey);
    return weighted(distances);
}

TEST(GreyColourTables, leave_no_grey_a_nearer_entry) {
    for (int grey = 0; grey < 256; grey += 5) {
        double four = 1e9;
        for (std::size_t index = 0; index < 4; ++index)
            four = std::min(four, weighted({least_distance(grey, 0, 4, index), least_distance(grey, 1, 4, index),
                                            least_distance(grey, 2, 4, index)}));
        const double three =
            weighted({least_distance(grey, 0, 3, 2), least_distance(grey, 1, 3, 2), least_distance(grey, 2, 3, 2)});
        const GreyColourTables& tables = GreyColourTables::instance();
        EXPECT_EQ(row_error(tables.four[static_cast<std::size_t>(grey)], grey), four) << grey;
        EXPECT_EQ(row_error(tables.free[static_cast<std::size_t>(grey)], grey), std::min(three, four)) << grey;
    }
}

} // namespace
} // namespace compression
