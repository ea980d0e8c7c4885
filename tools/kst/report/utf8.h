#pragma once

#include <string>
#include <string_view>

namespace kst::tool::report {

/// Well-formed by the Unicode table: shortest forms only, no surrogates, nothing above U+10FFFF.
bool is_utf8(std::string_view text);

/// The text itself where it is UTF-8; otherwise each byte taken as a character of ISO-8859-1, as the XML reader does.
std::string as_utf8(std::string_view text);

} // namespace kst::tool::report
