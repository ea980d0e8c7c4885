#include "texture/TextureDatabase.h"

#include "driver/records/Report.h"
#include "texture/OutputFile.h"

#include <locale>
#include <sstream>

namespace mosaicer {
namespace {

/// Numbers look the same whatever the process's locale.
std::ostringstream number_stream() {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    return out;
}

/// What the definition asked for, as both databases repeat it.
void write_origin(std::ostream& out, const SetTextureEntry& entry) {
    out << "orig_name=\"" << entry.texture->name << "\" orig_mip_filter=\"" << keyword_of(entry.mip_filter)
        << "\" orig_forced_width=\"" << entry.width << "\" orig_forced_height=\"" << entry.height << "\" />\n";
}

void write_atlas_line(std::ostream& out, const AtlasSurface& surface, const AtlasEntry& entry) {
    const TextureMapping mapping = texture_mapping(surface, entry);
    out << "\t<atlas_mapping texture=\"" << output_name(entry.source) << "\" groups=\"";
    for (const std::int32_t group : entry.source.texture->used_by)
        out << group << ' ';
    out << "\"  u_off=\"" << mapping.u_off << "\" v_off=\"" << mapping.v_off << "\" u_scale=\"" << mapping.u_scale
        << "\" v_scale=\"" << mapping.v_scale << "\" rotation=\"" << entry.source.rotation << "\" tiled_u=\""
        << true_or_false(entry.tiled_u) << "\" tiled_v=\"" << true_or_false(entry.tiled_v) << "\" ";
    write_origin(out, entry.source);
}

} // namespace

const std::string& output_name(const SetTextureEntry& entry) {
    return entry.rename_to.empty() ? entry.texture->name : entry.rename_to;
}

TextureMapping texture_mapping(const AtlasSurface& surface, const AtlasEntry& entry) {
    const auto atlas_width = static_cast<float>(surface.width());
    const auto atlas_height = static_cast<float>(surface.height());
    const std::int32_t pad_u = entry.source.pad_texels_u;
    const std::int32_t pad_v = entry.source.pad_texels_v;
    const float offset = entry.source.texel_offset;
    const auto left = static_cast<float>(pad_u + entry.x);
    const auto bottom = static_cast<float>(entry.y + entry.height - pad_v);
    const auto width = static_cast<float>(entry.width - 2 * pad_u);
    const auto height = static_cast<float>(entry.height - 2 * pad_v);
    // A tiled direction keeps its full length, or its repetitions would not meet.
    const float inset_u = entry.tiled_u ? 0.0f : 2 * offset;
    const float inset_v = entry.tiled_v ? 0.0f : 2 * offset;
    return {(left + offset) / atlas_width, (bottom - offset) / atlas_height, (width - inset_u) / atlas_width,
            (height - inset_v) / atlas_height};
}

std::string atlas_database_text(const AtlasSurface& surface, const std::string& atlas_name, const std::string& category,
                                bool allow_autoload) {
    std::ostringstream out = number_stream();
    out << "<atlas_set name=\"" << atlas_name << "\" category=\"" << category << "\" allow_autoload=\""
        << true_or_false(allow_autoload) << "\">\n";
    for (const AtlasEntry& entry : surface.entries())
        write_atlas_line(out, surface, entry);
    out << "</atlas_set>\n";
    return std::move(out).str();
}

void write_atlas_database(const AtlasSurface& surface, const std::string& path, const std::string& atlas_name,
                          const std::string& category, bool allow_autoload) {
    OutputFile file(path);
    file.write(atlas_database_text(surface, atlas_name, category, allow_autoload));
    if (!file.close())
        file.discard();
}

std::string texture_set_head(const AtlasSetDefinition& definition) {
    return "<texture_set name=\"" + definition.name + "\" allow_autoload=\"" +
           true_or_false(definition.allow_autoload) + "\">\n";
}

std::string texture_set_line(const SetTextureEntry& entry) {
    std::ostringstream out = number_stream();
    out << "\t<image name=\"" << output_name(entry) << "\" category=\"" << entry.category << "\" ";
    write_origin(out, entry);
    return std::move(out).str();
}

std::string texture_set_end() {
    return "</texture_set>\n";
}

} // namespace mosaicer
