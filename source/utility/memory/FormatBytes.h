#pragma once

#include <cstdint>
#include <string>

namespace kst {

/// A number of bytes for people: "640 B", "1.25KB", "12.5MB", "268MB", "1.07GB". Units are powers of 1,000. The largest
/// unit is taken that is at most `max_unit` and in which the value is at least `min_value`; else bytes. Two decimals
/// below 10, one below 100, none above and for bytes.
std::string format_bytes(std::int64_t value, std::int64_t min_value = 1, std::int64_t max_unit = 1'000'000'000);

} // namespace kst
