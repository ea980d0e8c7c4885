#pragma once

#include <cstdint>

namespace kst::platform {

/// Ticks of a clock that only goes forward, from a start of its own.
std::int64_t performance_counter();

/// Ticks a second.
inline constexpr std::int64_t performance_frequency = 1'000'000'000;

} // namespace kst::platform
