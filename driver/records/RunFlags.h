#pragma once

#include <string>

namespace mosaicer {

/// What the switches of the command line say; written while the line is read, only read afterwards.
struct RunFlagValues {
    bool draft_mode = false;        ///< -draft: cheaper filters and compression, one level in atlases
    bool color_tag_atlases = false; ///< -c: red corners on each texture of an atlas
    bool tag_mips = false;          ///< -tag_mips: levels 1 and up of atlases are tinted
    bool output_extra_bmp = false;  ///< -b: a BMP beside each atlas
    std::string extra_bmp_path;     ///< what stood behind -b; empty: the atlas's own folder
};

extern RunFlagValues RunFlags; ///< process-wide

} // namespace mosaicer
