#pragma once

#include <string_view>

namespace kst::tool::report {

/// The files of the folder page, its scripts joined; the build puts them into the program. In page.html stand {{css}},
/// {{js}}, {{run}}, {{thumbnails}} and {{pictures}} for what the writer puts in.
extern const std::string_view page_html;
extern const std::string_view page_css;
extern const std::string_view page_js;

} // namespace kst::tool::report
