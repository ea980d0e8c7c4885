#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kst::script {

/// What the string methods do to their texts. Positions and counts are in characters, that is, 16-bit units.

/// No string of the language grows above this; what would is a DSError.
inline constexpr std::size_t max_string_bytes = std::size_t{64} << 20;

/// Throws DSError if a string of that many bytes is too long.
void check_string_size(std::size_t bytes);

/// From `start`, clamped to the text, `count` characters or what there is of them.
std::string substring(std::string_view text, float start);
std::string substring(std::string_view text, float start, float count);

/// The position of the first match, or -1.
std::int64_t index_of(std::string_view text, std::string_view wanted);

std::string strip_blanks(std::string_view text);

/// The text as often as that, truncated; not above 0 gives the empty text.
std::string repeat(std::string_view text, float times);

/// Steps a text like an odometer with the wheels 0-9, a-z and A-Z, from the last character backwards:
///   az -> ba    zz -> aaa    99 -> 000    a-9 -> a-00
/// A carry that meets anything else, or the front, appends a character like the last one.
std::string next_text(std::string text);

/// Replaces each piece from `left` to the next `right` behind it, where the pattern is `left*right`. `replacement` is
/// given what stood between the two. Throws DSError "Empty pattern" when both are empty.
std::string replace_pattern(std::string_view text, std::string_view pattern,
                            const std::function<std::string(std::string_view between)>& replacement);

/// Every byte XOR the key's, over and over; an empty key changes nothing.
std::string xor_text(std::string text, std::string_view key);

/// Each byte as four blank characters, lowest two bits first, and back. A last group of fewer than four is dropped,
/// any other character counts as two clear bits.
std::string to_blanks(std::string_view text);
std::string from_blanks(std::string_view text);

std::string to_upper_ascii(std::string text);
std::string to_lower_ascii(std::string text);

/// Two lower-case digits a byte, and back. What is no digit counts as 0; a lone last digit is the high one.
std::string to_hex(std::string_view text);
std::string from_hex(std::string_view text);

} // namespace kst::script
