#pragma once

#include <cstdint>

namespace kst::platform {

/// Seconds from 1601, where file times begin, to 1970, where the host's clock begins: 369 years with 89 leap days.
inline constexpr std::int64_t seconds_from_1601_to_1970 = (std::int64_t{369} * 365 + 89) * 24 * 60 * 60;

/// A time of the host's clock as a file time: 100 ns ticks since 1601. 0 for times before that.
constexpr std::uint64_t file_time(std::int64_t seconds, std::int64_t nanoseconds) {
    const std::int64_t since_1601 = seconds + seconds_from_1601_to_1970;
    return since_1601 < 0
               ? 0
               : static_cast<std::uint64_t>(since_1601) * 10'000'000 + static_cast<std::uint64_t>(nanoseconds / 100);
}
static_assert(file_time(0, 0) == 116'444'736'000'000'000);
static_assert(file_time(1, 250) == 116'444'736'010'000'002);

} // namespace kst::platform
