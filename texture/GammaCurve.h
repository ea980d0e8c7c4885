#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace mosaicer {

/// The two power curves between bytes and linear light, as tables of exact values, so that no byte hangs on the last
/// bit of some system's `pow`.
///
/// Decoding: sample = (byte * 0.003921569f) ^ 2.2f, the product and the power each rounded to the nearest float.
/// Encoding: power = sample ^ 0.45454544f rounded to the nearest float, times 255 without rounding, rounded half up,
/// clamped. Both steps rise with the sample, so the byte is the number of thresholds that the sample has reached.
///
/// A negative sample, as a filter's negative lobes leave beside hard edges, has no power; it counts as 0.

/// Linear light of each byte, 0 to 1.
extern const std::array<float, 256> decoded_bytes;

/// Element k - 1 is the least sample that encodes to byte k.
extern const std::array<float, 255> encoding_thresholds;

namespace detail {
/// One bucket for every 128th of an octave from the first threshold to 1. None holds more than one threshold.
struct EncodingBucket {
    float threshold;           ///< the one inside the bucket, or one above it
    std::uint32_t bytes_below; ///< the byte of a sample of this bucket below the threshold
};
inline constexpr std::uint32_t encoding_bucket_shift = 16; ///< 23 bits of fraction less the 7 that count buckets
inline constexpr std::size_t encoding_bucket_count = 2539;
extern const std::array<EncodingBucket, encoding_bucket_count> encoding_buckets;
} // namespace detail

/// The byte of a sample; any float but NaN.
inline std::uint8_t encoded_byte(float sample) {
    // Floats above 0 are ordered like their bits.
    if (!(sample >= encoding_thresholds.front()))
        return 0;
    if (sample >= encoding_thresholds.back())
        return 255;
    const std::uint32_t first = std::bit_cast<std::uint32_t>(encoding_thresholds.front());
    const std::uint32_t bucket = (std::bit_cast<std::uint32_t>(sample) >> detail::encoding_bucket_shift) -
                                 (first >> detail::encoding_bucket_shift);
    const detail::EncodingBucket& entry = detail::encoding_buckets[bucket];
    return static_cast<std::uint8_t>(entry.bytes_below + (sample >= entry.threshold ? 1u : 0u));
}

} // namespace mosaicer
