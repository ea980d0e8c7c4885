#include "driver/plan/set_outputs.h"

#include "driver/records/PathText.h"
#include "driver/records/RunFlags.h"
#include "texture/TextureDatabase.h"

#include <algorithm>

namespace mosaicer {
namespace {

std::string extra_bitmap(const std::string& folder, std::string atlas_name) {
    if (RunFlags.extra_bmp_path.empty())
        return join_path(folder, "atlas.bmp");
    std::ranges::replace_if(
        atlas_name, [](char c) { return c == '\\' || c == '/'; }, '_');
    return join_path(RunFlags.extra_bmp_path, atlas_name + ".bmp");
}

std::string extension_of(const SourceTexture& texture, TextureFileFormat file_format) {
    if (!texture.image.is_cube)
        return "." + std::string(file_extension(file_format));
    return texture.image.file_path.substr(texture.image.file_path.rfind('.'));
}

} // namespace

std::vector<std::string> atlas_outputs(const std::string& output_root, const std::string& atlas_name,
                                       TextureFileFormat file_format) {
    const std::string folder = join_path(output_root, atlas_name);
    std::vector<std::string> files{join_path(folder, "atlas." + std::string(file_extension(file_format))),
                                   join_path(folder, "tdb_atlas_set.xml")};
    if (RunFlags.output_extra_bmp && file_format != TextureFileFormat::BMP)
        files.push_back(extra_bitmap(folder, atlas_name));
    return files;
}

std::vector<std::string> texture_set_outputs(const AtlasSetDefinition& set, const std::string& output_root) {
    const std::string folder = join_path(output_root, set.name);
    std::vector<std::string> files{join_path(folder, "tdb_texture_set.xml")};
    for (const SetTextureEntry& entry : set.textures)
        files.push_back(join_path(folder, output_name(entry)) + extension_of(*entry.texture, set.file_format));
    return files;
}

} // namespace mosaicer
