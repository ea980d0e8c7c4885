#pragma once

#include "tools/kst/report/RunRecord.h"

#include <string>

namespace kst::tool::report {

/// Reads the databases and the heads of the images below a directory. No pixel is decoded but those of PNG and BMP
/// files, whose heads have no reader of their own. Links are followed, each directory is visited once.
///
/// What cannot be read becomes a fault of its atlas, set or image, and the rest goes on: a database that is cut off
/// gives what stands ahead of the cut, an atlas image without a database is an atlas without textures. Throws
/// std::runtime_error "cannot read PATH" for the root itself.
RunRecord collect_run(const std::string& output_root);

/// Where one copy of a texture stands on a picture of the given size. The mapping is u_off, v_off, u_scale and v_scale
/// of a database; sampling offsets below one texel are undone. Empty, width and height 0, when the mapping is no
/// number, lies more than a texel outside, or leaves no texel.
Rectangle inner_rectangle(const std::array<float, 4>& mapping, bool tiled_u, bool tiled_v, std::int32_t width,
                          std::int32_t height);

} // namespace kst::tool::report
