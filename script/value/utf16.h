#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kst::script {

/// The 16-bit units of a UTF-8 text; a character above 0xffff makes two. A byte that is no UTF-8 becomes the unit
/// 0xdc00 + byte, which no well-formed text decodes to, so that encoding gives the same bytes back.
std::u16string decode_utf8(std::string_view text);

/// Pairs of surrogates join to one character, 0xdc80 to 0xdcff on their own are raw bytes (see above), other single
/// surrogates are written in three bytes.
std::string encode_utf8(std::u16string_view units);

/// The number of 16-bit units of a text.
std::size_t count_units(std::string_view text);

bool is_ascii(std::string_view text);

} // namespace kst::script
