#pragma once

#include "compression/DdsReader.h"
#include "driver/records/SourceTexture.h"
#include "texture/Bitmap.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mosaicer {

/// What packing needs of an image file.
struct ImageInfo {
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool is_cube = false;
};

/// The levels of an image file, level 0 first; none for a file that holds a cube map or a volume.
struct ImageFile {
    MipChain mips;
    bool is_cube = false;
};

enum class FileLevels { all, first };

/// Size and cube flag. Of ".dds" and ".tga" files only the header is read; the other formats have to be decoded. The
/// path's end picks the format, lower case only. Empty when a ".bmp" or ".png" file cannot be decoded, or a
/// header tells a side of 0 or above 2^24. Throws what the
/// header parsers throw, with the path in the text, and std::runtime_error "Unhandled image format for " + path.
std::optional<ImageInfo> read_image_info(const std::string& path);

/// Decodes the file. Only DDS files hold more than one level. Empty when the file is missing or cannot be decoded.
/// Throws std::runtime_error "Unhandled image format for " + path.
std::optional<ImageFile> read_image_file(const std::string& path, FileLevels levels);

/// Decodes a DDS file of any kind, faces and slices included, with what its header says of the format. Empty when it is
/// missing or cannot be decoded.
std::optional<compression::DdsInfo> read_dds_levels(const std::string& path, FileLevels levels);

/// The record of one texture: its flags from the name, its size from the file. A name that ends in "_bm" marks a bump
/// map; the first of "_x_", "_y_", then "_xy_" or "_yx_" found in it says where the texture tiles. Throws as
/// read_image_info, and std::runtime_error "Failure getting info for file " + path when that gives nothing. `read_info`
/// may be another reader of the same answer.
SourceTexture make_source_texture(std::string name, std::string path,
                                  std::optional<ImageInfo> (*read_info)(const std::string&) = read_image_info);

} // namespace mosaicer
