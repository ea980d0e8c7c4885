#include "driver/autofill.h"

#include "driver/TextureIndex.h"
#include "driver/records/DropMips.h"
#include "driver/records/PathText.h"
#include "driver/records/Report.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/xml/XMLDocument.h"
#include "source/utility/xml/XmlParameters.h"

#include <algorithm>

namespace mosaicer {
namespace {

void add_entries(AtlasSetDefinition& set, const std::vector<std::string>& directories, const TextureIndex& index) {
    for (const auto& [key, texture] : index.records()) {
        const std::string& path = texture->image.file_path;
        const auto holds = [&path](const std::string& directory) { return path.starts_with(directory); };
        if (std::none_of(directories.begin(), directories.end(), holds))
            continue;
        SetTextureEntry entry = entry_of_set(set);
        entry.texture = texture.get();
        if (set.drop_mips != 0) {
            entry.width = dropped_size(texture->image.width, set.drop_mips);
            entry.height = dropped_size(texture->image.height, set.drop_mips);
        }
        set.textures.push_back(entry);
    }
}

/// Records of textures that are not indexed are passed over. Later files overwrite earlier ones.
void read_positions(const std::string& path, const TextureIndex& index) {
    kst::XMLDocument document;
    document.load(path);
    for (const kst::XMLNode& record : document.children()) {
        std::string name;
        kst::read_parameter(record, "name", name);
        SourceTexture* texture = index.find(name);
        if (texture == nullptr)
            continue;
        texture->position = {};
        kst::read_parameter(record, "position", texture->position);
    }
}

} // namespace

SetTextureEntry entry_of_set(const AtlasSetDefinition& set) {
    SetTextureEntry entry;
    entry.pad_texels_u = set.pad_texels_u;
    entry.pad_texels_v = set.pad_texels_v;
    entry.mip_filter = set.mip_filter;
    entry.category = set.category;
    entry.texel_offset = set.texel_offset;
    return entry;
}

void fill_from_directory(AtlasSetDefinition& set, TextureIndex& index) {
    const std::vector<std::string> roots = index.unique_roots();
    std::vector<std::string> directories;
    directories.reserve(roots.size());
    for (const std::string& root : roots)
        directories.push_back(kst::find_host_path(join_path(root, set.autofill)));
    index.ensure_built();
    add_entries(set, directories, index);
    for (const std::string& root : roots) {
        const std::string positions = join_path(root, join_path(set.autofill, "lightmap_positions.xml"));
        if (!kst::exists(positions))
            continue;
        *Report.debug << "Encountered positions map for autofilled set " << set.name << std::endl;
        set.has_positions = true;
        read_positions(positions, index);
    }
    *Report.debug << "Encountered autofilled set with autofill root " << set.autofill << ", found "
                  << set.textures.size() << " textures" << std::endl;
}

} // namespace mosaicer
