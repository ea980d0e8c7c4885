#include "packing/SetDrivers.h"

#include "driver/records/DropMips.h"
#include "driver/records/NaturalSize.h"
#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"
#include "packing/AtlasSurface.h"
#include "packing/InsertionStrategies.h"
#include "packing/NeverPlaced.h"
#include "packing/PackingOrders.h"
#include "packing/RemovalStrategy.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace mosaicer {

namespace {

AtlasSurface surface_of(const AtlasSetDefinition& definition) {
    return {shifted_size(definition.width, definition.drop_mips),
            shifted_size(definition.height, definition.drop_mips)};
}

BakeRequest bake_request(const AtlasSetDefinition& definition, const std::string& output_root, std::string atlas_name) {
    return {.output_root = output_root,
            .atlas_name = std::move(atlas_name),
            .category = definition.category,
            .nr_mips = definition.nr_mips,
            .texel_format = definition.texel_format,
            .file_format = definition.file_format,
            .extra_bitmap = RunFlags.output_extra_bmp,
            .extra_bitmap_path = RunFlags.extra_bmp_path,
            .allow_autoload = definition.allow_autoload};
}

void add_removal_strategies(CompoundStrategy& compound, const AtlasSetDefinition& definition) {
    const auto& kinds = definition.removal_strats;
    if (!definition.has_positions && std::find(kinds.begin(), kinds.end(), RemovalKind::FURTHEST) != kinds.end())
        throw std::runtime_error("Furthest specified as removal strategy, but no position data is present");
    for (const RemovalKind kind : kinds)
        compound.add(make_removal_strategy(kind));
}

/// True if the textures have no more texels, padding left out, than the surface: only then is packing them tried.
bool may_fit(const TextureList& textures, const AtlasSurface& surface) {
    std::int64_t room = std::int64_t{surface.width()} * surface.height();
    for (const SetTextureEntry& entry : textures) {
        const TexelSize size = natural_size(entry);
        room -= std::max<std::int64_t>(std::int64_t{size.width} * size.height, 0);
        if (room < 0)
            return false;
    }
    return true;
}

/// Fills the surface with what is left of `working` after as many removals as it takes; `removed` gets the others in
/// the order of their removal.
void pack_what_passes(AtlasSurface& surface, TextureList working, TextureList& removed,
                      const AtlasSetDefinition& definition, PackingOrder order, const RemovalStrategy& removal) {
    while (!working.empty()) {
        if (may_fit(working, surface) &&
            surface.generate_atlas(working, definition.min_usage, order, definition.insertion_strat,
                                   definition.try_alternative_insertion))
            return;
        const TexturePick pick = removal.pick_texture_to_remove(working);
        removed.push_back(*pick);
        working.erase(pick);
    }
}

} // namespace

void create_atlas(AtlasSetDefinition& definition, const std::string& output_root, const BakeAtlas& bake) {
    *Report.verbose << "Creating atlas " << definition.name << "..." << std::endl;
    AtlasSurface surface = surface_of(definition);
    for (SetTextureEntry& entry : definition.textures) {
        if (entry.pad_texels_u < 0)
            entry.pad_texels_u = definition.pad_texels_u;
        if (entry.pad_texels_v < 0)
            entry.pad_texels_v = definition.pad_texels_v;
        if (!surface.insert(entry, /*pixel_step=*/true, /*expanding_square=*/false)) {
            *Report.errors << "Insert of " << entry.texture->name << " in atlas " << definition.name
                           << " failed, packing aborted" << std::endl;
            break;
        }
    }
    bake(surface, bake_request(definition, output_root, definition.name));
    *Report.verbose << "Done." << std::endl;
}

void create_split_atlas(const AtlasSetDefinition& definition, const std::string& output_root, const BakeAtlas& bake) {
    *Report.verbose << "Creating splitted atlas, output root: " << output_root
                    << ", number of textures: " << definition.textures.size() << std::endl;
    CompoundStrategy removal;
    add_removal_strategies(removal, definition);
    *Report.verbose << "Removal strategy:" << std::endl << removal.describe() << std::endl;

    TextureList remaining = definition.textures;
    precook(remaining, definition.precook_strat);
    *Report.verbose << precook_text(definition.precook_strat) << std::endl;
    *Report.verbose << "Generating atlases with a min usage ratio of " << definition.min_usage << "." << std::endl;
    *Report.verbose << "Inserting textures using " << insertion_strategy_info(definition.insertion_strat).text
                    << std::endl;
    const PackingOrder order = resolve_packing_order(definition.packing_order_strat, definition.precook_strat);
    *Report.verbose << "Inserting textures in " << packing_order_text(order) << std::endl;

    AtlasSurface surface = surface_of(definition);
    StandstillWatch watch;
    std::size_t baked = 0;
    for (std::size_t number = 0; !remaining.empty(); ++number) {
        if (watch.begins_again_with(remaining))
            throw std::runtime_error(never_placed_text(definition, remaining, surface.width(), surface.height()));
        pack_what_passes(surface, std::exchange(remaining, {}), remaining, definition, order, removal);
        if (!surface.entries().empty())
            watch.progress();
        baked += surface.entries().size();
        bake(surface, bake_request(definition, output_root, definition.name + "/atlas" + std::to_string(number)));
        surface.reset();
    }
    if (baked != definition.textures.size())
        throw std::runtime_error("Failed to bake all textures that were supplied; only baked " + std::to_string(baked) +
                                 " of " + std::to_string(definition.textures.size()));
    *Report.verbose << "Done." << std::endl;
}

} // namespace mosaicer
