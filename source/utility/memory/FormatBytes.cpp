#include "source/utility/memory/FormatBytes.h"

#include <array>
#include <charconv>
#include <string_view>

namespace kst {
namespace {

struct ByteUnit {
    std::int64_t bytes;
    std::string_view text;
};

constexpr std::array byte_units{ByteUnit{1'000'000'000, "GB"}, ByteUnit{1'000'000, "MB"}, ByteUnit{1'000, "KB"}};

std::string in_unit(std::int64_t value, const ByteUnit& unit) {
    const double amount = static_cast<double>(value) / static_cast<double>(unit.bytes);
    const int decimals = amount < 10 ? 2 : amount < 100 ? 1 : 0;
    std::array<char, 32> digits{}; // 2^63 bytes are ten digits of GB
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), amount, std::chars_format::fixed, decimals);
    return std::string(digits.data(), end.ptr).append(unit.text);
}

} // namespace

std::string format_bytes(std::int64_t value, std::int64_t min_value, std::int64_t max_unit) {
    for (const ByteUnit& unit : byte_units)
        if (unit.bytes <= max_unit && value / unit.bytes >= min_value)
            return in_unit(value, unit);
    return std::to_string(value) + " B";
}

} // namespace kst
