#include "packing/NeverPlaced.h"

#include "driver/records/NaturalSize.h"
#include "packing/AtlasSurface.h"
#include "packing/InsertionStrategies.h"

#include <algorithm>
#include <sstream>

namespace mosaicer {

namespace {

/// Equal in all that packing looks at.
bool packs_alike(const SetTextureEntry& a, const SetTextureEntry& b) {
    return a.texture == b.texture && a.width == b.width && a.height == b.height && a.rotation == b.rotation &&
           a.pad_texels_u == b.pad_texels_u && a.pad_texels_v == b.pad_texels_v;
}

bool inserts_alone(AtlasSurface& surface, const SetTextureEntry& entry, InsertionStrategy strategy) {
    const InsertionStrategyInfo& info = insertion_strategy_info(strategy);
    surface.reset();
    return surface.insert(entry, info.pixel_step, info.expanding_square);
}

/// Why the texture fails even alone; empty if it doesn't.
std::string reason(AtlasSurface& surface, const SetTextureEntry& entry, const AtlasSetDefinition& definition) {
    // Never asked for until now where its texels alone were too many.
    if (std::string fault = insertion_fault(entry); !fault.empty())
        return fault;
    std::ostringstream text;
    const TexelSize natural = natural_size(entry);
    const bool too_large =
        std::int64_t{natural.width} * natural.height > std::int64_t{surface.width()} * surface.height();
    if (too_large || !inserts_alone(surface, entry, InsertionStrategy::PIXEL_STEP)) {
        // Texels are counted without padding, and a negative one could make the size look as if it fitted.
        const std::int64_t frame = too_large ? 0 : 2;
        text << "larger than the surface: " << natural.width + frame * entry.pad_texels_u << " x "
             << natural.height + frame * entry.pad_texels_v << " on " << surface.width() << " x " << surface.height();
        return text.str();
    }
    const InsertionStrategy configured = definition.insertion_strat;
    const InsertionStrategy alternative = insertion_strategy_info(configured).alternative;
    if (!inserts_alone(surface, entry, configured) &&
        !(definition.try_alternative_insertion && inserts_alone(surface, entry, alternative))) {
        text << "the insertion strategy ends before its regions reach the size of the texture";
        return text.str();
    }
    if (const float alone = surface.usage(); definition.min_usage > 0.0f && alone < definition.min_usage)
        text << "reaches a usage of only " << alone << " alone, " << definition.min_usage << " is required";
    return text.str();
}

} // namespace

bool StandstillWatch::begins_again_with(const std::vector<SetTextureEntry>& list) {
    const bool seen = std::any_of(lists_.begin(), lists_.end(), [&](const auto& earlier) {
        return std::equal(earlier.begin(), earlier.end(), list.begin(), list.end(), packs_alike);
    });
    if (!seen)
        lists_.push_back(list);
    return seen;
}

std::string never_placed_text(const AtlasSetDefinition& definition, std::span<const SetTextureEntry> textures,
                              std::int32_t width, std::int32_t height) {
    std::string text = "Unable to pack set " + definition.name + ", textures that can never be placed: ";
    std::string_view separator;
    AtlasSurface surface(width, height);
    for (const SetTextureEntry& entry : textures) {
        const std::string why = reason(surface, entry, definition);
        if (why.empty())
            continue;
        text.append(separator).append(entry.texture->name).append(" (").append(why).append(")");
        separator = ", ";
    }
    return text;
}

} // namespace mosaicer
