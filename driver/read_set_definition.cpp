#include "driver/read_set_definition.h"

#include "driver/SetAttributes.h"
#include "driver/TextureIndex.h"
#include "driver/autofill.h"
#include "driver/set_entries.h"
#include "source/utility/xml/XMLNode.h"

namespace mosaicer {
namespace {

void make_set(AtlasSetDefinition& set, const kst::XMLNode& node, const DefinitionWalk& walk) {
    if (!set.autofill.empty())
        fill_from_directory(set, walk.index);
    walk.index.ensure_built();
    for (const kst::XMLNode& child : node.children()) {
        set.textures.push_back(read_set_entry(child, set, walk.index));
        add_groups(child, *set.textures.back().texture);
    }
    switch (set_road(set, node)) {
    case SetRoad::texture_set:
        return walk.makers.create_texture_set(set, walk.output_root);
    case SetRoad::split_atlas:
        return walk.makers.create_split_atlas(set, walk.output_root);
    case SetRoad::fixed_atlas:
        return walk.makers.create_atlas(set, walk.output_root);
    }
}

} // namespace

void read_set_definition(const AtlasSetDefinition& parent, const kst::XMLNode& node, const DefinitionWalk& walk) {
    const TextureIndex::Roots roots = walk.index.roots();
    AtlasSetDefinition set = read_set_attributes(parent, node, walk.index);
    if (is_set_element(node) && set.name.find(walk.pattern) != std::string::npos)
        make_set(set, node, walk);
    else
        for (const kst::XMLNode& child : node.children())
            read_set_definition(set, child, walk);
    walk.index.restore_roots(roots);
}

} // namespace mosaicer
