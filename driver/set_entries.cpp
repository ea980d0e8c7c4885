#include "driver/set_entries.h"

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

} // namespace

bool is_set_element(const kst::XMLNode& node) {
    return node.name() == "atlas" || node.name() == "texture_set";
}

SetRoad set_road(const AtlasSetDefinition& set, const kst::XMLNode& node) {
    if (node.name() == "texture_set")
        return SetRoad::texture_set;
    return !set.autofill.empty() || set.autosplit ? SetRoad::split_atlas : SetRoad::fixed_atlas;
}

SetTextureEntry read_set_entry(const kst::XMLNode& node, const AtlasSetDefinition& set, const TextureIndex& index) {
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

} // namespace mosaicer
