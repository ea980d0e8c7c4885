#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

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
enum class AttributeForm { text, integer, decimal, boolean, keyword, offset_word, template_word, directory };

/// One attribute that any element may carry. The table of them is in reading order, which is the order of any failure.
struct SetAttribute {
    std::string_view name;
    AttributeForm form;
    void (*read)(ElementReading& reading, const SetAttribute& attribute);
    std::int32_t number = 0; ///< which of several: the slot of a textures root
};

/// One attribute of the child elements of a set.
struct EntryAttribute {
    std::string_view name;
    AttributeForm form;
    void (*read)(const kst::XMLNode& node, const EntryAttribute& attribute, SetTextureEntry& entry);
};

std::span<const SetAttribute> set_attributes();

/// Without `name` and `used_by`, which the reader itself resolves against the index.
std::span<const EntryAttribute> entry_attributes();

/// The settings of one element: its parent's, with its own attributes read over them. Root attributes change the slots
/// of `index`. Throws std::runtime_error for an unknown keyword.
AtlasSetDefinition read_set_attributes(const AtlasSetDefinition& parent, const kst::XMLNode& node, TextureIndex& index);

} // namespace mosaicer
