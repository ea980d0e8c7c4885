#include "driver/check/SetCheck.h"

#include "driver/SetAttributes.h"
#include "driver/check/AttributeCheck.h"
#include "driver/check/Findings.h"
#include "driver/records/DropMips.h"
#include "driver/records/PaddedSize.h"
#include "driver/records/PathText.h"
#include "packing/AtlasSurface.h"
#include "packing/PackingOrders.h"
#include "packing/SetDrivers.h"
#include "source/utility/xml/XMLNode.h"
#include "texture/MipChain.h"
#include "texture/TextureDatabase.h"
#include "texture/TextureLoader.h"

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>

namespace mosaicer {
namespace {

bool is_dxt(TexelFormat format) {
    return format != TexelFormat::AF_A8R8G8B8 && format != TexelFormat::AF_BUMP_A8L8;
}

/// Whether a DXT format takes a level 0 with this side.
bool is_dxt_side(std::int32_t side) {
    return side == 1 || side == 2 || side % 4 == 0;
}

std::string size_text(std::int64_t width, std::int64_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

/// The side that `shrink` leaves at best of a surface that holds so many texels along it.
std::int32_t shrunk_side(std::int32_t side, std::int64_t content) {
    while (side / 2 >= 2 && content <= side / 2)
        side /= 2;
    return side;
}

/// The driver's text lists every texture with its reason in parentheses; the first few will do.
std::string first_reasons(const std::string& text) {
    constexpr int most_reasons = 3;
    std::size_t end = 0;
    for (int reason = 0; reason < most_reasons && end != std::string::npos; ++reason)
        end = text.find("), ", reason == 0 ? 0 : end + 1);
    return end == std::string::npos ? text : text.substr(0, end + 1) + " and more";
}

/// With the padding that the drivers give the entry.
SetTextureEntry with_padding(const SetTextureEntry& entry, const AtlasSetDefinition& set, SetRoad road) {
    SetTextureEntry padded = entry;
    if (road == SetRoad::fixed_atlas && entry.pad_texels_u < 0)
        padded.pad_texels_u = set.pad_texels_u;
    if (road == SetRoad::fixed_atlas && entry.pad_texels_v < 0)
        padded.pad_texels_v = set.pad_texels_v;
    return padded;
}

/// The sides of level 0 once a texture is loaded.
TexelSize loaded_size(const SetTextureEntry& entry) {
    const TextureImage& image = entry.texture->image;
    const auto drop = static_cast<std::int32_t>(
        levels_to_drop(image.width, image.height, entry.width, entry.height, image.file_path));
    return {dropped_size(image.width, drop), dropped_size(image.height, drop)};
}

/// Databases are written without escapes.
bool breaks_xml(const std::string& text) {
    return text.find_first_of("&<\"") != std::string::npos;
}

/// Whether two placed textures share texels of their own, padding left out. The packer does not see the last column and
/// row of an odd size.
bool share_texels(const AtlasEntry& a, const AtlasEntry& b) {
    const auto apart = [](std::int32_t begin_a, std::int32_t size_a, std::int32_t begin_b, std::int32_t size_b) {
        return std::int64_t{begin_a} + size_a <= begin_b || std::int64_t{begin_b} + size_b <= begin_a;
    };
    const SetTextureEntry& in_a = a.source;
    const SetTextureEntry& in_b = b.source;
    return !apart(a.x + in_a.pad_texels_u, a.width - 2 * in_a.pad_texels_u, b.x + in_b.pad_texels_u,
                  b.width - 2 * in_b.pad_texels_u) &&
           !apart(a.y + in_a.pad_texels_v, a.height - 2 * in_a.pad_texels_v, b.y + in_b.pad_texels_v,
                  b.height - 2 * in_b.pad_texels_v);
}

} // namespace

void SetCheck::check(SetUnderCheck& checked) {
    AtlasSetDefinition& set = checked.set;
    Work work{.checked = checked,
              .road = set_road(set, checked.node),
              .surface_width = shifted_size(set.width, set.drop_mips),
              .surface_height = shifted_size(set.height, set.drop_mips)};
    check_attributes_in_use(work);
    if (set.textures.empty()) {
        if (checked.is_complete && set.autofill.empty())
            findings_.at(checked.node, set.name, FindingKind::element,
                         "set " + in_quotes(set.name) + " names no texture: " +
                             (work.road == SetRoad::texture_set ? "it makes an empty database" : "it makes nothing"));
        return;
    }
    check_formats(work);
    if (work.road == SetRoad::split_atlas)
        precook(set.textures, set.precook_strat);
    for (std::size_t i = 0; i < set.textures.size(); ++i)
        check_entry(work, i);
    check_names(work);
    if (work.road != SetRoad::texture_set)
        pack(work);
    tell_of_autofill(work);
}

/// At the entry's own line; what concerns the textures of the autofill directory is gathered.
void SetCheck::tell(Work& work, std::size_t entry, FindingKind kind, const std::string& rest) {
    const SetUnderCheck& checked = work.checked;
    const std::string& name = checked.set.textures[entry].texture->name;
    if (checked.entry_nodes[entry] == &checked.node)
        work.of_autofill[{kind, rest}].push_back(name);
    else
        findings_.at(*checked.entry_nodes[entry], checked.set.name, kind, "texture " + in_quotes(name) + " " + rest);
}

void SetCheck::tell_of_autofill(const Work& work) {
    constexpr std::size_t most_names = 3;
    for (const auto& [what, names] : work.of_autofill) {
        std::string message = "texture " + in_quotes(names.front());
        for (std::size_t i = 1; i < std::min(names.size(), most_names); ++i)
            message += (i == 1 ? " (and " : ", ") + in_quotes(names[i]);
        if (names.size() > most_names)
            message += " and " + std::to_string(names.size() - most_names) + " more";
        if (names.size() > 1)
            message += ")";
        findings_.at(work.checked.node, work.checked.set.name, what.first, message + " " + what.second);
    }
}

/// Only attributes of the set's own element: what is inherited is meant for others too.
void SetCheck::check_attributes_in_use(const Work& work) {
    const SetUnderCheck& checked = work.checked;
    const auto ignored = [&](const kst::XMLNode& node, std::string_view name, const char* why) {
        findings_.at(node, checked.set.name, FindingKind::ignored, std::string(name) + " has no effect " + why);
    };
    for (const SetAttribute& attribute : set_attributes()) {
        if (!checked.node.has_parameter(attribute.name))
            continue;
        if (attribute.use != AttributeUse::every_set && work.road == SetRoad::texture_set)
            ignored(checked.node, attribute.name, "on a texture_set");
        else if (attribute.use == AttributeUse::split_atlases && work.road == SetRoad::fixed_atlas)
            ignored(checked.node, attribute.name, "on an atlas without autosplit or autofill");
        else if (attribute.name == "nr_mips" && checked.set.file_format != TextureFileFormat::DDS &&
                 checked.set.nr_mips > 1)
            ignored(checked.node, attribute.name, "here: only DDS files hold more than one level");
    }
    for (std::size_t i = 0; i < checked.entry_nodes.size(); ++i) {
        const kst::XMLNode& node = *checked.entry_nodes[i];
        if (&node == &checked.node || work.road != SetRoad::texture_set)
            continue;
        for (const EntryAttribute& attribute : entry_attributes())
            if (attribute.use != AttributeUse::every_set && node.has_parameter(attribute.name))
                ignored(node, attribute.name, "in a texture_set");
    }
}

void SetCheck::check_formats(const Work& work) {
    const SetUnderCheck& checked = work.checked;
    const AtlasSetDefinition& set = checked.set;
    const bool saves =
        std::ranges::any_of(set.textures, [](const SetTextureEntry& entry) { return !entry.texture->image.is_cube; });
    if (set.file_format != TextureFileFormat::DDS && set.texel_format != TexelFormat::AF_A8R8G8B8 && saves)
        findings_.at(checked.node, set.name, FindingKind::format,
                     std::string(keyword_of(set.file_format)) + " files hold AF_A8R8G8B8 alone, not " +
                         std::string(keyword_of(set.texel_format)) + ": the run ends here",
                     "AF_A8R8G8B8");
    const bool has_surface = work.surface_width > 0 && work.surface_height > 0;
    if (work.road != SetRoad::texture_set && !has_surface)
        findings_.at(checked.node, set.name, FindingKind::size,
                     "no surface is left: " + size_text(set.width, set.height) + " with drop_mips " +
                         std::to_string(set.drop_mips));
}

void SetCheck::check_entry(Work& work, std::size_t index) {
    const SetTextureEntry& entry = work.checked.set.textures[index];
    if (work.road != SetRoad::texture_set)
        check_place(work, index);
    if (entry.texture->image.is_cube)
        return; // its file is copied as it is
    check_size_on_load(work, index);
    check_pixels(work, index);
}

/// What no surface of the set's size takes, in whatever company.
void SetCheck::check_place(Work& work, std::size_t index) {
    const AtlasSetDefinition& set = work.checked.set;
    const SetTextureEntry entry = with_padding(set.textures[index], set, work.road);
    const TextureImage& image = entry.texture->image;
    if (const std::string fault = insertion_fault(entry); !fault.empty()) {
        ++work.packing_faults;
        const bool tiles = !image.is_cube && (entry.texture->tile_u || entry.texture->tile_v);
        std::string why = "has no texels left between its padding";
        if (image.is_cube)
            why = "is a cube map, which no atlas takes: the run ends here";
        else if (tiles)
            why = "repeats and has padding along the same axis: the run ends here";
        return tell(work, index, FindingKind::packing, why);
    }
    const WideSize size = padded_size(entry);
    if (size.width <= work.surface_width && size.height <= work.surface_height)
        return;
    ++work.packing_faults;
    if (work.surface_width > 0 && work.surface_height > 0)
        tell(work, index, FindingKind::size,
             "is larger than the surface: " + size_text(size.width, size.height) + " with padding on " +
                 size_text(work.surface_width, work.surface_height));
}

void SetCheck::check_size_on_load(Work& work, std::size_t index) {
    const AtlasSetDefinition& set = work.checked.set;
    const SetTextureEntry& entry = set.textures[index];
    const TextureImage& image = entry.texture->image;
    const std::string forced = size_text(entry.width, entry.height);
    const std::string own = size_text(image.width, image.height);
    TexelSize loaded;
    try {
        loaded = loaded_size(entry);
    } catch (const std::runtime_error& failure) {
        std::string text = failure.what();
        text.erase(std::min(text.find(image.file_path), text.size()));
        text.erase(text.find_last_not_of("; ") + 1);
        return tell(work, index, FindingKind::size,
                    "cannot be brought from " + own + " to " + forced + ": the run ends here (" + text +
                        "); it must be the size of a mip level");
    }
    if ((entry.width > 0) != (entry.height > 0))
        tell(work, index, FindingKind::size,
             "keeps its size of " + own + ": a forced size needs both width and height above 0");
    else if (entry.width > 0 && (loaded.width != entry.width || loaded.height != entry.height))
        tell(work, index, FindingKind::size,
             "is loaded at " + size_text(loaded.width, loaded.height) + " but placed as " + forced);
    if (work.road == SetRoad::texture_set && set.file_format == TextureFileFormat::DDS && is_dxt(set.texel_format) &&
        !(is_dxt_side(loaded.width) && is_dxt_side(loaded.height)))
        tell(work, index, FindingKind::format,
             "of " + size_text(loaded.width, loaded.height) + " cannot be written as " +
                 std::string(keyword_of(set.texel_format)) + ": each side must be 1, 2 or a multiple of 4");
}

void SetCheck::check_pixels(Work& work, std::size_t index) {
    const AtlasSetDefinition& set = work.checked.set;
    const SetTextureEntry& entry = set.textures[index];
    const TextureImage& image = entry.texture->image;
    const PixelOutlook& pixels = outlook(image.file_path);
    if (!pixels.fault.empty())
        return tell(work, index, FindingKind::pixels,
                    pixels.fault + ": loading it ends the run (" + image.file_path + ")");
    const bool with_mips = set.nr_mips != 1 || entry.width > 0 || entry.height > 0;
    if (with_mips && entry.mip_filter == MipFilter::KEEP &&
        pixels.levels != full_level_count(image.width, image.height))
        tell(work, index, FindingKind::filter,
             "has no mip levels that KEEP could keep, only " + std::to_string(pixels.levels) + ": BOX_GAMMA is used");
}

const PixelOutlook& SetCheck::outlook(const std::string& path) {
    const auto [known, is_new] = outlooks_.try_emplace(path);
    if (is_new)
        known->second = pixel_outlook(path);
    return known->second;
}

/// The engine finds textures by name, so each should stand once in a database.
void SetCheck::check_names(Work& work) {
    const SetUnderCheck& checked = work.checked;
    const AtlasSetDefinition& set = checked.set;
    if (work.road == SetRoad::texture_set)
        claims_.claim(join_path(set.name, "tdb_texture_set.xml"), checked.node, set.name);
    if (breaks_xml(set.name) || breaks_xml(set.category))
        findings_.at(checked.node, set.name, FindingKind::output,
                     "name or category of the set holds &, < or a double quote, which breaks its database");
    std::set<std::string> names;
    for (std::size_t i = 0; i < set.textures.size(); ++i) {
        const std::string& name = output_name(set.textures[i]);
        const std::string& category = set.textures[i].category;
        if (breaks_xml(name) || (category != set.category && breaks_xml(category)))
            tell(work, i, FindingKind::output,
                 "has a name or category with &, < or a double quote, which breaks the database");
        if (!names.insert(name).second)
            findings_.at(*checked.entry_nodes[i], set.name, FindingKind::output,
                         "the set holds " + in_quotes(name) + " a second time, under the same name");
        else if (work.road == SetRoad::texture_set)
            check_image_name(work, i);
    }
}

void SetCheck::check_image_name(const Work& work, std::size_t index) {
    const SetUnderCheck& checked = work.checked;
    const SetTextureEntry& entry = checked.set.textures[index];
    const std::string& name = output_name(entry);
    const std::string& source = entry.texture->image.file_path;
    const std::string extension = entry.texture->image.is_cube ? source.substr(source.rfind('.') + 1)
                                                               : std::string(file_extension(checked.set.file_format));
    claims_.claim(join_path(checked.set.name, name) + "." + extension, *checked.entry_nodes[index], checked.set.name);
    if (name.find_first_of("/\\") != std::string::npos)
        findings_.at(*checked.entry_nodes[index], checked.set.name, FindingKind::output,
                     "rename_to " + in_quotes(name) + " names a folder, which is not made: the file can't be written");
}

void SetCheck::pack(Work& work) {
    SetUnderCheck& checked = work.checked;
    const bool can_pack = checked.is_complete && work.packing_faults == 0;
    if (work.road == SetRoad::fixed_atlas) {
        claim_atlas(work, checked.set.name);
        if (can_pack)
            pack_fixed(work);
        return;
    }
    if (can_pack && checked.set.textures.size() <= most_packed_textures)
        return pack_split(work, checked.set);
    claim_atlas(work, join_path(checked.set.name, "atlas0"));
    check_strategies(work);
    if (can_pack)
        check_area(work);
}

void SetCheck::claim_atlas(const Work& work, const std::string& atlas_name) {
    claims_.claim(join_path(atlas_name, "tdb_atlas_set.xml"), work.checked.node, work.checked.set.name);
}

void SetCheck::pack_fixed(Work& work) {
    AtlasSetDefinition& set = work.checked.set;
    std::size_t placed = 0;
    create_atlas(set, {}, [&](AtlasSurface& surface, const BakeRequest& request) {
        placed = surface.entries().size();
        check_atlas(work, surface, request.atlas_name);
    });
    const std::size_t left_out = set.textures.size() - placed;
    if (left_out > 0)
        tell(work, placed, FindingKind::packing,
             "finds no place on the " + size_text(work.surface_width, work.surface_height) + " surface beside the " +
                 std::to_string(placed) + " ahead of it: it and the " + std::to_string(left_out - 1) +
                 " behind it are left out");
}

/// What a split set fails of before its first texture is placed.
void SetCheck::check_strategies(Work& work) {
    AtlasSetDefinition without_textures = work.checked.set;
    without_textures.textures.clear();
    pack_split(work, without_textures);
}

void SetCheck::pack_split(Work& work, const AtlasSetDefinition& set) {
    try {
        create_split_atlas(set, {}, [&](AtlasSurface& surface, const BakeRequest& request) {
            if (!surface.entries().empty())
                claim_atlas(work, request.atlas_name);
            check_atlas(work, surface, request.atlas_name);
        });
    } catch (const std::runtime_error& failure) {
        const std::string text = first_reasons(failure.what());
        const bool falls_short = set.min_usage > 0 && text.starts_with("Unable to pack set");
        findings_.at(work.checked.node, set.name, falls_short ? FindingKind::usage : FindingKind::packing,
                     text + ": the run ends here");
    }
}

/// All textures of the set together, beside one of them, on the smallest surface that holds that one: no atlas with it
/// can be fuller.
void SetCheck::check_area(Work& work) {
    const AtlasSetDefinition& set = work.checked.set;
    double total = 0;
    for (const SetTextureEntry& entry : set.textures) {
        const WideSize size = padded_size(entry);
        total += static_cast<double>(size.width) * static_cast<double>(size.height);
    }
    // The packer's sum is one of 32 bits: beyond that nothing can be said.
    if (set.min_usage <= 0 || total > std::numeric_limits<std::uint32_t>::max())
        return;
    for (std::size_t i = 0; i < set.textures.size(); ++i) {
        const SetTextureEntry& entry = set.textures[i];
        if (entry.texture->tile_u || entry.texture->tile_v)
            continue; // follows the content, and may take the whole surface
        const WideSize size = padded_size(entry);
        const double surface = static_cast<double>(shrunk_side(work.surface_width, size.width)) *
                               static_cast<double>(shrunk_side(work.surface_height, size.height));
        if (static_cast<float>(total / surface) < set.min_usage)
            tell(work, i, FindingKind::usage,
                 "can never stand on an atlas that is full enough: all textures of the set together fill too little of "
                 "the " +
                     size_text(shrunk_side(work.surface_width, size.width),
                               shrunk_side(work.surface_height, size.height)) +
                     " that it needs");
    }
}

/// One texture of a pair is written over a column or row of the other.
void SetCheck::check_overlaps(Work& work, const AtlasSurface& surface) {
    const std::vector<AtlasEntry>& entries = surface.entries();
    const AtlasEntry* first = nullptr;
    const AtlasEntry* second = nullptr;
    std::size_t pairs = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        for (std::size_t j = i + 1; j < entries.size(); ++j) {
            if (!share_texels(entries[i], entries[j]))
                continue;
            if (pairs++ == 0) {
                first = &entries[i];
                second = &entries[j];
            }
        }
    }
    if (pairs > 0 && !std::exchange(work.told_overlap, true))
        findings_.at(work.checked.node, work.checked.set.name, FindingKind::packing,
                     "textures " + in_quotes(first->source.texture->name) + " and " +
                         in_quotes(second->source.texture->name) +
                         (pairs > 1 ? " (and " + std::to_string(pairs - 1) + " more pairs)" : "") +
                         " overlap by a texel, because they have odd sides: pad them by 1 or more");
}

/// Takes the surface to the size of its image, as the baker does.
void SetCheck::check_atlas(Work& work, AtlasSurface& surface, const std::string& atlas_name) {
    const SetUnderCheck& checked = work.checked;
    const AtlasSetDefinition& set = checked.set;
    if (surface.entries().empty())
        return;
    check_overlaps(work, surface);
    surface.adjust_tiling();
    surface.shrink();
    if (set.file_format == TextureFileFormat::DDS && is_dxt(set.texel_format) && !work.told_sides &&
        !(is_dxt_side(surface.width()) && is_dxt_side(surface.height()))) {
        work.told_sides = true;
        findings_.at(checked.node, set.name, FindingKind::format,
                     "atlas " + in_quotes(atlas_name) + " of " + size_text(surface.width(), surface.height()) +
                         " cannot be written as " + std::string(keyword_of(set.texel_format)) +
                         ": each side must be 1, 2 or a multiple of 4; the run ends here");
    }
    const auto is_bump = [](const AtlasEntry& entry) { return entry.source.texture->is_bump; };
    const bool mixed =
        std::ranges::any_of(surface.entries(), is_bump) && !std::ranges::all_of(surface.entries(), is_bump);
    if (set.texel_format == TexelFormat::AF_BUMP_DXT5 && mixed && !std::exchange(work.told_mixture, true))
        findings_.at(checked.node, set.name, FindingKind::format,
                     "atlas " + in_quotes(atlas_name) +
                         " holds bump maps (names that end in _bm) and other textures: red is copied to alpha in all");
}

} // namespace mosaicer
