#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kst {
class XMLNode;
}

namespace mosaicer {

class TextureIndex;

/// One element of the definition tree while its attributes are read over the parent's settings.
struct ElementReading {
    const kst::XMLNode& node;
    const AtlasSetDefinition& parent;
    TextureIndex& index;
    AtlasSetDefinition& set;
    bool removal_list_cleared = false; ///< a removal strategy of this element has taken the place of its template's
};

/// What the values of an attribute look like.
enum class AttributeForm : std::uint8_t { text, integer, integers, decimal, boolean, keyword, word, directory };

/// Which sets an attribute of a set means anything to.
enum class AttributeUse : std::uint8_t { every_set, atlases, split_atlases };

/// What an attribute's values are and mean, for those who look a definition over before it is read.
struct AttributeValues {
    std::string_view help;                              ///< what it sets, in a sentence or two
    std::vector<std::string_view> (*words)() = nullptr; ///< the legal ones, where they can be listed
    float least = std::numeric_limits<float>::lowest(); ///< of a number
    float most = std::numeric_limits<float>::max();     ///< of a number
};

/// One attribute that any element may carry. The table of them is in reading order, which is the order of any failure.
struct SetAttribute {
    std::string_view name;
    AttributeForm form;
    void (*read)(ElementReading& reading, const SetAttribute& attribute);
    AttributeValues values;
    AttributeUse use = AttributeUse::every_set;
    std::int32_t number = 0; ///< which of several: the slot of a textures root
};

/// One attribute of the child elements of a set.
struct EntryAttribute {
    std::string_view name;
    AttributeForm form;
    void (*read)(const kst::XMLNode& node, const EntryAttribute& attribute, SetTextureEntry& entry);
    AttributeValues values;
    AttributeUse use = AttributeUse::every_set;
};

std::span<const SetAttribute> set_attributes();

/// Without `name` and `used_by`, which the reader itself resolves against the index.
std::span<const EntryAttribute> entry_attributes();

/// Those two. Their `read` is null.
std::span<const EntryAttribute> resolved_entry_attributes();

/// The settings of one element: its parent's, with its own attributes read over them. Root attributes change the slots
/// of `index`. Throws std::runtime_error for an unknown keyword.
AtlasSetDefinition read_set_attributes(const AtlasSetDefinition& parent, const kst::XMLNode& node, TextureIndex& index);

/// The same, but an attribute that cannot be read is handed to `failed` with the reason and keeps its inherited value.
AtlasSetDefinition
read_set_attributes(const AtlasSetDefinition& parent, const kst::XMLNode& node, TextureIndex& index,
                    const std::function<void(const SetAttribute&, const std::runtime_error&)>& failed);

} // namespace mosaicer
