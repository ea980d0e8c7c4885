#pragma once

#include "texture/AxisFilter.h"
#include "texture/Bitmap.h"
#include "texture/DownsampleKernels.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace mosaicer {

/// What makes one level: its kernel along x and along y.
struct LevelFilter {
    LevelFilter(const Bitmap& base, std::int32_t width, std::int32_t height, const FilterKernel& kernel);

    std::int32_t width;
    std::int32_t height;
    AxisFilter x;
    AxisFilter y;
};

/// The rows that are filtered together, in turned order: sample (x, row) at samples[x * rows + row].
struct RowGroup {
    std::size_t rows; ///< lanes: 4, 8 or 16; those below the picture hold any numbers
    std::vector<double> samples;
};

/// Filters the channels of a picture in linear light, one at a time. Sums are doubles, stored as floats behind each
/// axis, x first.
///
/// Level 0 is not held as floats. It goes by in groups of rows, from the first stored row on:
///
///     bytes --decode, turn--> RowGroup --x axis, for each level--> ring of the level --y axis, encode--> bytes
///
/// A ring keeps the rows that some window along y still needs. So nothing is held but what fits the cache: about five
/// source rows of floats a level.
class PlaneFilter {
public:
    /// Holds on to all three.
    PlaneFilter(const Bitmap& base, std::span<const LevelFilter> filters, const DownsampleKernels& kernels);

    /// Writes one channel (0 to 3) of the levels; `targets` has one for each filter, of its size.
    void run(std::size_t channel, std::span<Bitmap> targets);

private:
    struct Level {
        Level(const LevelFilter& filter, std::size_t group_rows);

        const LevelFilter& filter;
        std::size_t pitch;               ///< floats from row to row of the ring, a multiple of 4
        std::size_t capacity = 0;        ///< rows of the ring; source row y is in slot y % capacity
        std::vector<std::int32_t> slots; ///< the y axis's positions as slots
        std::vector<std::size_t> ready;  ///< source rows that must have gone by before an output row is made
        std::vector<float> ring;
        std::vector<float> line; ///< one output row before it is encoded
        std::size_t next = 0;    ///< output row
    };

    void store_rows(Level& level, std::size_t first_row) const;
    void make_outputs(Level& level, std::size_t rows, std::span<std::uint8_t> channel) const;

    const Bitmap& base_;
    const DownsampleKernels& kernels_;
    RowGroup group_;
    std::vector<Level> levels_;
    std::vector<float> turned_; ///< outputs of one level for a group, turned like the group
};

/// The byte of every pixel of a level that a channel of nothing but `byte` gives.
std::uint8_t filter_constant(std::uint8_t byte, const FilterKernel& kernel);

} // namespace mosaicer
