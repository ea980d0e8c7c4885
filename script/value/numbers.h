#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kst::script {

/// The integer part, saturated at the ends of the range; NaN gives 0.
std::int32_t truncate_to_int(float value);
std::int64_t truncate_to_int64(float value);

/// A strict weak order over all floats: as `<`, with NaN behind everything and equal to itself.
inline bool ordered_before(float a, float b) {
    return a < b || (std::isnan(b) && !std::isnan(a));
}
/// The same over tuples, first component first.
template <std::size_t size>
bool ordered_before(const std::array<float, size>& a, const std::array<float, size>& b) {
    for (std::size_t i = 0; i < size; ++i)
        if (ordered_before(a[i], b[i]) || ordered_before(b[i], a[i]))
            return ordered_before(a[i], b[i]);
    return false;
}

/// How a number prints: a whole number that fits 32 bits without a point ("3"), any other with up to eight significant
/// digits, as "%1.8g" does ("3.5", "1e+20"). Never by locale; NaN has no sign.
std::string number_text(float value);

/// Fixed notation with `precision` digits behind the point.
std::string fixed_text(float value, int precision);

/// What "%f" reads at the start of a text: blanks, a sign, then a decimal or hexadecimal number, "inf" or "nan".
/// What follows does not matter. Too large is infinite, too small 0. Nothing for a text that begins with no number.
std::optional<float> scan_number(std::string_view text);

} // namespace kst::script
