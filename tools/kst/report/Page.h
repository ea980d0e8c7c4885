#pragma once

#include "tools/kst/report/RunRecord.h"
#include "tools/kst/report/pictures.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kst::tool::report {

/// All that the page shows, ready to be written.
struct Page {
    /// The run as JSON in ASCII without "<", so that it may stand in a script element whatever the names are. Its shape
    /// is told in page/data.js. Pictures are named by their index.
    std::string run_json;
    std::vector<Picture> pictures;
    std::vector<std::size_t> thumbnails; ///< indices of the pictures that cards show
    std::vector<std::string> faults;     ///< all of the run, one line each
};

/// The longest side that pictures get when nobody asks for one: 2048, or so much less (but not below 256) that a run
/// with many large images still makes a page that opens. About 2^27 texels of top levels are let in.
std::int32_t choose_max_side(const RunRecord& run);

/// Decodes every image of the run, measures the atlases and encodes the pictures. An image that cannot be decoded
/// becomes a fault and has no picture.
Page build_page(const RunRecord& run, std::int32_t max_side);

/// Writes one HTML file with all in it, and gives its size in bytes. The same page gives the same bytes. Throws
/// std::runtime_error "cannot write PATH"; then nothing half-written stays.
std::int64_t write_page(const Page& page, const std::string& path);

} // namespace kst::tool::report
