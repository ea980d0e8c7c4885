#include "texture/AtlasBaker.h"

#include "driver/records/PathText.h"
#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"
#include "texture/AtlasBlit.h"
#include "texture/ImageOutput.h"
#include "texture/MipChain.h"
#include "texture/TagMips.h"
#include "texture/TextureDatabase.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace mosaicer {
namespace {

std::int32_t level_count(const AtlasSurface& surface, std::int32_t wanted) {
    const auto full = static_cast<std::int32_t>(full_level_count(surface.width(), surface.height()));
    return wanted == 0 || wanted > full ? full : wanted;
}

/// Loads the textures, then makes the atlas's levels in their mean colour. Only DDS files hold more than level 0, so
/// for the others the levels below are not made at all.
MipChain load_and_fill(const AtlasSurface& surface, std::int32_t levels, TextureFileFormat file_format,
                       AtlasTextures& loaded) {
    const bool top_level_only = file_format != TextureFileFormat::DDS;
    *Report.debug << "loading/filtering mips/calculating average color... ";
    loaded = load_textures(surface.entries(), {.with_mips = levels != 1, .top_level_only = top_level_only});
    *Report.debug << "filling... ";
    return filled_chain(surface.width(), surface.height(), top_level_only ? std::min(levels, 1) : levels,
                        loaded.mean_colour);
}

void blit_all(MipChain& chain, AtlasSurface& surface, AtlasTextures loaded) {
    const CornerTags tags = RunFlags.color_tag_atlases ? CornerTags::red : CornerTags::none;
    for (std::size_t i = 0; i < surface.entries().size(); ++i) {
        blit_entry(chain, surface.entries()[i], loaded.textures[i], tags);
        loaded.textures[i] = {}; // its pixels are not needed any more
    }
}

MipChain make_chain(AtlasSurface& surface, std::int32_t wanted_levels, TextureFileFormat file_format) {
    *Report.debug << "Baking... " << std::endl << "Adjusting tiling width/shrinking... ";
    surface.adjust_tiling();
    surface.shrink();
    *Report.debug << "done." << std::endl << "Creating atlas image... ";
    AtlasTextures loaded;
    MipChain chain = load_and_fill(surface, level_count(surface, wanted_levels), file_format, loaded);
    *Report.debug << "blitting.... ";
    blit_all(chain, surface, std::move(loaded));
    *Report.debug << "dilating... ";
    dilate(chain, surface.entries());
    if (RunFlags.tag_mips)
        tag_mip_levels(chain);
    *Report.debug << "done." << std::endl;
    return chain;
}

bool mixes_bump_and_plain(const AtlasSurface& surface) {
    const auto is_bump = [](const AtlasEntry& entry) { return entry.source.texture->is_bump; };
    return std::ranges::any_of(surface.entries(), is_bump) && !std::ranges::all_of(surface.entries(), is_bump);
}

std::string extra_bitmap_path(const BakeRequest& request, const std::string& folder) {
    if (request.extra_bitmap_path.empty())
        return join_path(folder, "atlas.bmp");
    // One folder takes the bitmaps of all atlases, so the name holds the atlas's whole path.
    std::string name = request.atlas_name;
    std::ranges::replace_if(
        name, [](char c) { return c == '\\' || c == '/'; }, '_');
    return join_path(request.extra_bitmap_path, name + ".bmp");
}

void save_files(MipChain& chain, const BakeRequest& request, const std::string& folder) {
    const std::string image = join_path(folder, "atlas." + std::string(file_extension(request.file_format)));
    save_image(chain, request.texel_format, request.file_format, image);
    if (!request.extra_bitmap || request.file_format == TextureFileFormat::BMP)
        return;
    const std::string bitmap = extra_bitmap_path(request, folder);
    *Report.verbose << "Saving extra bitmap to " << bitmap << "...";
    save_image(chain, TexelFormat::AF_A8R8G8B8, TextureFileFormat::BMP, bitmap);
    *Report.verbose << " done." << std::endl;
}

void report_usage(const AtlasSurface& surface, const std::string& atlas_name) {
    std::int64_t used = 0;
    for (const AtlasEntry& entry : surface.entries())
        used += std::int64_t{entry.width} * entry.height;
    const std::int64_t area = std::int64_t{surface.width()} * surface.height();
    const auto percent = static_cast<std::int32_t>(static_cast<float>(used) / static_cast<float>(area) * 100.0f);
    *Report.statistics << "Baked atlas " << atlas_name << ", " << percent << "% used (" << surface.textures().size()
                       << " textures)" << std::endl;
}

} // namespace

AtlasTextures load_textures(std::span<const AtlasEntry> entries, LoadOptions options) {
    AtlasTextures loaded;
    loaded.textures.reserve(entries.size());
    for (const AtlasEntry& entry : entries) {
        const SetTextureEntry& source = entry.source;
        options.forced_width = source.width;
        options.forced_height = source.height;
        options.rotation = source.rotation;
        options.mip_filter = source.mip_filter;
        const LoadedTexture& texture = loaded.textures.emplace_back(load_image(source.texture->image, options));
        for (std::size_t c = 0; c < 3; ++c)
            loaded.mean_colour[c] += texture.average_colour[c];
    }
    for (float& channel : loaded.mean_colour)
        channel /= static_cast<float>(entries.size());
    return loaded;
}

void bake_atlas(AtlasSurface& surface, const BakeRequest& request) {
    if (surface.entries().empty())
        return;
    MipChain chain = make_chain(surface, RunFlags.draft_mode ? 1 : request.nr_mips, request.file_format);

    *Report.debug << "Saving to disk... ";
    const std::string folder = join_path(request.output_root, request.atlas_name);
    create_directories(folder);
    if (request.texel_format == TexelFormat::AF_BUMP_DXT5 && mixes_bump_and_plain(surface))
        *Report.warnings << "Atlas is compressed and has mixed bump and diffuse textures; red will be copied to alpha"
                         << std::endl;
    save_files(chain, request, folder);
    chain.clear();
    *Report.debug << "done." << std::endl;

    report_usage(surface, request.atlas_name);
    write_atlas_database(surface, join_path(folder, "tdb_atlas_set.xml"), request.atlas_name, request.category,
                         request.allow_autoload);
    *Report.debug << "done baking." << std::endl;
}

} // namespace mosaicer
