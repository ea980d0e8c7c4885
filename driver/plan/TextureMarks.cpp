#include "driver/plan/TextureMarks.h"

#include "driver/TextureIndex.h"

#include <algorithm>
#include <utility>

namespace mosaicer {
namespace {

constexpr std::array<float, 3> unset{};

} // namespace

std::set<std::size_t> TextureMarks::exchange(std::size_t set_number, const AtlasSetDefinition& set,
                                             const TextureIndex& index) {
    std::set<std::size_t> needed;
    for (const SetTextureEntry& entry : set.textures)
        add_needed(*entry.texture, set.has_positions, needed);
    for (const SetTextureEntry& entry : set.textures)
        if (!entry.texture->used_by.empty())
            take_mark(set_number, *entry.texture);
    if (set.has_positions)
        for (const auto& [key, texture] : index.records())
            if (texture->position != unset)
                take_mark(set_number, *texture);
    return needed;
}

void TextureMarks::add_needed(const SourceTexture& texture, bool has_positions, std::set<std::size_t>& needed) const {
    const auto found = marks_.find(&texture);
    if (found == marks_.end())
        return;
    for (const Mark& mark : found->second) {
        const bool adds_groups = !std::ranges::includes(texture.used_by, mark.used_by);
        // A position of 0 may be the set's own word, but a texture that it does not place has the same.
        const bool places = has_positions && texture.position == unset && mark.position != unset;
        if (adds_groups || places)
            needed.insert(mark.set_number);
    }
}

void TextureMarks::take_mark(std::size_t set_number, SourceTexture& texture) {
    marks_[&texture].push_back({set_number, std::move(texture.used_by), texture.position});
    texture.used_by.clear();
    texture.position = unset;
}

} // namespace mosaicer
