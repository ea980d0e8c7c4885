#include "driver/read_set_definition.h"

#include "driver/SetAttributes.h"
#include "driver/TextureIndex.h"
#include "driver/autofill.h"
#include "driver/records/DropMips.h"
#include "driver/records/PathText.h"
#include "source/utility/xml/XmlParameters.h"

#include <locale>
#include <sstream>
#include <stdexcept>

namespace mosaicer {
namespace {

void check_rotation(const SetTextureEntry& entry, const std::string& texture_name) {
    const std::int32_t rotation = entry.rotation;
    if (rotation > 0 && rotation != 90 && rotation != 180 && rotation != 270)
        throw std::runtime_error(texture_name + " - only 0, 90, 180 or 270 are legal rotation values");
}

/// A forced width without a height keeps the -1 of the height, which ends as 1: both are to be given.
void drop_entry_mips(SetTextureEntry& entry, std::int32_t drop_mips) {
    if (drop_mips == 0)
        return;
    if (entry.width < 0) {
        entry.width = entry.texture->image.width;
        entry.height = entry.texture->image.height;
    }
    entry.width = dropped_size(entry.width, drop_mips);
    entry.height = dropped_size(entry.height, drop_mips);
}

/// A piece that is no number counts as -1.
void add_groups(const kst::XMLNode& node, SourceTexture& texture) {
    std::string groups;
    kst::read_parameter(node, "used_by", groups);
    for (const std::string_view piece : split_string(groups, ' ')) {
        std::istringstream stream{std::string(piece)};
        stream.imbue(std::locale::classic());
        std::int32_t group = 0;
        if (!(stream >> group))
            group = -1;
        texture.used_by.insert(group);
    }
}

SetTextureEntry read_entry(const kst::XMLNode& node, const AtlasSetDefinition& set, const TextureIndex& index) {
    SetTextureEntry entry = entry_of_set(set);
    std::string name;
    kst::read_parameter(node, "name", name);
    name = lower_name(name);
    for (const EntryAttribute& attribute : entry_attributes())
        attribute.read(node, attribute, entry);
    check_rotation(entry, name);
    entry.texture = index.find(name);
    if (entry.texture == nullptr)
        throw std::runtime_error("Did not find texture " + name + " referenced in set " + set.name +
                                 ", operation aborted.");
    drop_entry_mips(entry, set.drop_mips);
    return entry;
}

bool is_set(const kst::XMLNode& node) {
    return node.name() == "atlas" || node.name() == "texture_set";
}

void make_set(AtlasSetDefinition& set, const kst::XMLNode& node, const DefinitionWalk& walk) {
    if (!set.autofill.empty())
        fill_from_directory(set, walk.index);
    walk.index.ensure_built();
    for (const kst::XMLNode& child : node.children()) {
        set.textures.push_back(read_entry(child, set, walk.index));
        add_groups(child, *set.textures.back().texture);
    }
    if (node.name() == "texture_set")
        walk.makers.create_texture_set(set, walk.output_root);
    else if (!set.autofill.empty() || set.autosplit)
        walk.makers.create_split_atlas(set, walk.output_root);
    else
        walk.makers.create_atlas(set, walk.output_root);
}

} // namespace

void read_set_definition(const AtlasSetDefinition& parent, const kst::XMLNode& node, const DefinitionWalk& walk) {
    const TextureIndex::Roots roots = walk.index.roots();
    AtlasSetDefinition set = read_set_attributes(parent, node, walk.index);
    if (is_set(node) && set.name.find(walk.pattern) != std::string::npos)
        make_set(set, node, walk);
    else
        for (const kst::XMLNode& child : node.children())
            read_set_definition(set, child, walk);
    walk.index.restore_roots(roots);
}

} // namespace mosaicer
