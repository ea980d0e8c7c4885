#include "driver/plan/LeftOutReading.h"

#include "driver/SetAttributes.h"
#include "source/utility/xml/XMLNode.h"

#include <stdexcept>

namespace mosaicer {

LeftOutReading::LeftOutReading(const std::string& textures_root, const kst::XMLNode& definition)
    : index_(textures_root) {
    try {
        read(AtlasSetDefinition{}, definition);
    } catch (const std::runtime_error&) {
        is_harmless_ = false; // an entry that only fails as an element fails every run with a pattern
    }
}

void LeftOutReading::read(const AtlasSetDefinition& parent, const kst::XMLNode& node) {
    const TextureIndex::Roots roots = index_.roots();
    const AtlasSetDefinition element = read_set_attributes(parent, node, index_);
    const bool is_set = node.name() == "atlas" || node.name() == "texture_set";
    const bool is_inside = owner_.has_value();
    if (is_inside && index_.roots() != roots)
        is_harmless_ = false;
    if (is_set && is_inside)
        nested_.push_back({element.name, *owner_});
    else if (is_set)
        owner_ = set_count_++;
    for (const kst::XMLNode& child : node.children())
        read(element, child);
    if (is_set && !is_inside)
        owner_.reset();
    index_.restore_roots(roots);
}

} // namespace mosaicer
