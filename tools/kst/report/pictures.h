#pragma once

#include "texture/Bitmap.h"
#include "tools/kst/report/RunRecord.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kst::tool::report {

/// One picture of the page. Colour and alpha apart: a canvas forgets the colour of transparent texels.
struct Picture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> colour_png;
    std::vector<std::uint8_t> alpha_png; ///< empty where every texel is opaque
};

/// A level of an image file and the picture that shows it.
struct Level {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::size_t picture = 0;
};

/// An image file, decoded.
struct DecodedImage {
    std::string format; ///< "DXT5", "A8R8G8B8", ...
    bool lossy = false;
    /// A cube map's levels are its faces side by side, laid out as in `cube_faces`.
    mosaicer::MipChain levels;
};

/// The pictures of an image file. Levels above the size that was allowed share the picture of the first that fits.
struct ImagePictures {
    std::vector<Level> levels;
    std::vector<Picture> pictures;
    std::size_t thumbnail = 0;
};

/// Where a face stands on the picture of an opened cube, in units of one face, four wide and three high.
struct CubeFace {
    const char* name;
    std::int32_t column;
    std::int32_t row;
};
/// In file order: the four sides in a row, the sky above and the ground below the one that looks along +Z.
constexpr CubeFace cube_faces[6] = {{"+X", 2, 1}, {"-X", 0, 1}, {"+Y", 1, 0}, {"-Y", 1, 2}, {"+Z", 1, 1}, {"-Z", 3, 1}};

/// The longest side of a picture that cards show.
constexpr std::int32_t thumbnail_side = 256;

/// Decodes all levels. Throws std::runtime_error with the record's `file` in its text when that cannot be done.
DecodedImage decode_image(const ImageRecord& image);

/// Levels with a side above `max_side` are shown by the first level that fits, or by halving where there is none.
ImagePictures encode_pictures(mosaicer::MipChain levels, std::int32_t max_side);

} // namespace kst::tool::report
