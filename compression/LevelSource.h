#pragma once

#include "compression/CompressionOptions.h"
#include "compression/LevelImage.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace compression {

/// The working copy of a chain, made a level at a time: what the options do to the supplied levels before they are
/// encoded. Converts bytes to floats, rescales, brings levels to their size, makes the missing ones, applies scale and
/// bias. Where nothing of this changes a level, its bytes can be had as they are.
///
/// Views the supplied levels; they outlive the source.
class LevelSource {
public:
    /// Level 0 has at least one pixel.
    LevelSource(std::span<const LevelImage> supplied, const CompressionOptions& options);

    std::size_t level_count() const { return level_count_; }
    /// Each side of a level is half the one before, rounded down, at least 1.
    std::int32_t width(std::size_t level) const;
    std::int32_t height(std::size_t level) const;

    /// The supplied level whose bytes are the wanted ones; null if a step of the options stands between.
    const LevelImage* untouched(std::size_t level) const;

    /// The level as floats, ready for its encoder.
    FloatImage prepare(std::size_t level);

private:
    enum class Origin { supplied, resized, made };

    Origin origin(std::size_t level) const;
    FloatImage prepare_input(std::size_t level) const;
    FloatImage prepare_made(std::size_t level);

    std::span<const LevelImage> supplied_;
    const CompressionOptions& options_;
    std::size_t level_count_ = 0;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    FloatImage base_; ///< level 0 in the form that levels are made from, once one has been
};

} // namespace compression
