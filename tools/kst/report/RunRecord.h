#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kst::tool::report {

/// Texels of the top level, from the top left of the picture.
struct Rectangle {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool operator==(const Rectangle&) const = default;
};

/// What a database repeats of the definition.
struct TextureOrigin {
    std::string orig_name;
    std::string mip_filter;
    std::int32_t forced_width = -1;
    std::int32_t forced_height = -1;
};

/// A line of tdb_atlas_set.xml.
struct PlacedTexture {
    std::string name;
    TextureOrigin origin;
    std::string groups; ///< numbers, one blank between them
    std::int32_t rotation = 0;
    bool tiled_u = false;
    bool tiled_v = false;
    /// One copy of the texture without its padding, sampling offset undone; empty if the line tells no place on the
    /// picture.
    Rectangle inner;
};

/// An image file as its head and the directory tell it.
struct ImageRecord {
    std::string path; ///< host path; empty when there is no such file
    std::string file; ///< the path behind the output root, for people
    std::int64_t bytes = 0;
    std::int32_t width = 0; ///< of level 0; 0 when the head could not be read
    std::int32_t height = 0;
    bool is_cube = false;
};

struct Atlas {
    std::string folder; ///< behind the output root; empty for the root itself
    std::string name;
    std::string category;
    bool allow_autoload = false;
    ImageRecord image;
    std::vector<PlacedTexture> textures;
    std::vector<std::string> faults; ///< each names its file
};

/// A line of tdb_texture_set.xml.
struct SetImage {
    std::string name;
    std::string category;
    TextureOrigin origin;
    ImageRecord image;
    std::vector<std::string> faults;
};

struct TextureSet {
    std::string folder;
    std::string name;
    bool allow_autoload = false;
    std::vector<SetImage> images;
    std::vector<std::string> faults;
};

/// All that lies below an output root, folders in ascending order of their bytes. All text is UTF-8.
struct RunRecord {
    std::vector<Atlas> atlases;
    std::vector<TextureSet> sets;
};

} // namespace kst::tool::report
