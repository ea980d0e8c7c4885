#include "tools/kst/report/collect_run.h"

#include "driver/DirectoryListing.h"
#include "driver/records/PathText.h"
#include "source/utility/platform/PathInfo.h"
#include "source/utility/xml/XMLDocument.h"
#include "source/utility/xml/XmlParameters.h"
#include "texture/ImageReader.h"
#include "tools/kst/report/utf8.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace kst::tool::report {
namespace {

constexpr std::string_view atlas_database = "tdb_atlas_set.xml";
constexpr std::string_view set_database = "tdb_texture_set.xml";
/// In the order of choice: a DDS atlas may have an extra BMP beside it.
constexpr std::array<std::string_view, 4> image_extensions = {".dds", ".tga", ".png", ".bmp"};

std::string below(const std::string& folder, std::string_view name) {
    return folder.empty() ? std::string(name) : folder + "/" + std::string(name);
}

/// Not a directory, and no pipe that would be waited at for ever.
bool is_ordinary_file(const std::string& path) {
    std::error_code missing;
    return std::filesystem::is_regular_file(path, missing);
}

/// Parser messages begin with the name that a text without a file has.
std::string with_file_name(std::string message, const std::string& file) {
    constexpr std::string_view nameless = "#internal_file";
    const std::size_t at = message.find(nameless);
    return at == std::string::npos ? file + ": " + message : message.replace(at, nameless.size(), file);
}

bool holds_a_quote(const XMLNode& node) {
    return std::ranges::any_of(node.parameters(), [](const XMLParameter& parameter) {
        return parameter.value().find('"') != std::string_view::npos;
    });
}

/// Whether what follows an & in a name was taken into the name: its closing quote and all behind it up to some ;.
bool has_swallowed_lines(const XMLDocument& document) {
    bool has = holds_a_quote(document);
    for (const XMLNode& line : document.children())
        has = has || holds_a_quote(line);
    return has;
}

/// Fills the document as far as the file can be read. The tool writes databases without a declaration and in UTF-8,
/// which the parser knows by a mark alone.
void read_database(XMLDocument& document, const std::string& path, const std::string& file,
                   std::vector<std::string>& faults) {
    std::string text;
    if (is_ordinary_file(path)) {
        std::ifstream stream(path, std::ios::binary);
        text.assign(std::istreambuf_iterator<char>(stream), {});
    }
    if (text.empty()) {
        faults.push_back(file + ": the file is empty or cannot be read");
        return;
    }
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (!text.starts_with(mark) && is_utf8(text))
        text.insert(0, mark);
    try {
        // False is an entity that the dialect does not know: names are written unescaped, so it is part of one.
        if (!document.parse_string(text) && has_swallowed_lines(document))
            faults.push_back(file +
                             ": textures are missing; a name holds &, and the lines behind it are read as part of it");
    } catch (const std::range_error&) {
        faults.push_back(file + ": the file ends too early; it is cut off, or a name in it holds a quote, < or &");
    } catch (const std::exception& failure) {
        faults.push_back(with_file_name(failure.what(), file));
    }
}

void read_head(ImageRecord& image, std::string path, const std::string& file, std::vector<std::string>& faults) {
    platform::PathInfo info;
    if (platform::path_info(path, info) == platform::PathResult::ok)
        image.bytes = info.size;
    image.file = as_utf8(file);
    image.path = std::move(path);
    try {
        if (const auto head = mosaicer::read_image_info(image.path)) {
            image.width = head->width;
            image.height = head->height;
            image.is_cube = head->is_cube;
            return;
        }
        faults.push_back(image.file + ": the image cannot be read");
    } catch (const std::exception& failure) {
        // The text names the host path, which is not the same for everyone who makes this page.
        std::string reason = failure.what();
        if (const std::size_t at = reason.find(image.path); at != std::string::npos)
            reason.replace(at, image.path.size(), image.file);
        faults.push_back(reason.find(image.file) == std::string::npos ? image.file + ": " + reason : reason);
    }
}

/// Finds `stem` with one of the extensions in a folder.
void find_image(ImageRecord& image, const std::string& directory, const std::string& folder, const std::string& stem,
                std::vector<std::string>& faults) {
    for (const std::string_view extension : image_extensions) {
        const std::string name = stem + std::string(extension);
        std::string path = mosaicer::join_path(directory, name);
        if (!is_ordinary_file(path))
            continue;
        read_head(image, std::move(path), below(folder, name), faults);
        return;
    }
    faults.push_back(as_utf8(below(folder, stem)) + ": there is no image of that name (.dds, .tga, .png, .bmp)");
}

TextureOrigin read_origin(const XMLNode& line) {
    TextureOrigin origin;
    origin.orig_name = line.parameter("orig_name");
    origin.mip_filter = line.parameter("orig_mip_filter");
    read_parameter(line, "orig_forced_width", origin.forced_width);
    read_parameter(line, "orig_forced_height", origin.forced_height);
    return origin;
}

std::string trimmed(std::string_view text) {
    return std::string(mosaicer::trim_blanks(text));
}

PlacedTexture read_mapping(const XMLNode& line, const Atlas& atlas) {
    PlacedTexture texture;
    texture.name = line.parameter("texture");
    texture.origin = read_origin(line);
    texture.groups = trimmed(line.parameter("groups"));
    read_parameter(line, "rotation", texture.rotation);
    read_parameter(line, "tiled_u", texture.tiled_u);
    read_parameter(line, "tiled_v", texture.tiled_v);
    std::array<float, 4> mapping{};
    constexpr std::array<std::string_view, 4> names = {"u_off", "v_off", "u_scale", "v_scale"};
    bool complete = true;
    for (std::size_t i = 0; i < names.size(); ++i)
        complete = read_parameter(line, names[i], mapping[i]) && complete;
    if (complete)
        texture.inner =
            inner_rectangle(mapping, texture.tiled_u, texture.tiled_v, atlas.image.width, atlas.image.height);
    return texture;
}

Atlas read_atlas(const std::string& directory, const std::string& folder, bool has_database) {
    Atlas atlas;
    atlas.folder = as_utf8(folder);
    atlas.name = atlas.folder;
    find_image(atlas.image, directory, folder, "atlas", atlas.faults);
    const std::string file = as_utf8(below(folder, atlas_database));
    if (!has_database) {
        atlas.faults.push_back(file + ": missing, so the places of the textures are not known");
        return atlas;
    }
    XMLDocument document;
    read_database(document, mosaicer::join_path(directory, atlas_database), file, atlas.faults);
    if (document.has_parameter("name"))
        atlas.name = document.parameter("name");
    atlas.category = document.parameter("category");
    read_parameter(document, "allow_autoload", atlas.allow_autoload);
    for (const XMLNode& line : document.children()) {
        if (line.name() != "atlas_mapping")
            continue;
        atlas.textures.push_back(read_mapping(line, atlas));
        if (atlas.image.width > 0 && atlas.textures.back().inner.width == 0)
            atlas.faults.push_back(file + ": no place on the picture for texture " + atlas.textures.back().name);
    }
    return atlas;
}

TextureSet read_set(const std::string& directory, const std::string& folder) {
    TextureSet set;
    set.folder = as_utf8(folder);
    set.name = set.folder;
    XMLDocument document;
    read_database(document, mosaicer::join_path(directory, set_database), as_utf8(below(folder, set_database)),
                  set.faults);
    if (document.has_parameter("name"))
        set.name = document.parameter("name");
    read_parameter(document, "allow_autoload", set.allow_autoload);
    for (const XMLNode& line : document.children()) {
        if (line.name() != "image")
            continue;
        SetImage image;
        image.name = line.parameter("name");
        image.category = line.parameter("category");
        image.origin = read_origin(line);
        find_image(image.image, directory, folder, image.name, image.faults);
        set.images.push_back(std::move(image));
    }
    return set;
}

class Walk {
public:
    explicit Walk(RunRecord& run) : run_(&run) {}

    void visit(const std::string& directory, const std::string& folder) {
        platform::PathInfo info;
        if (platform::path_info(directory, info) != platform::PathResult::ok ||
            !seen_.insert({info.identity.device, info.identity.number}).second)
            return;
        const std::vector<mosaicer::DirectoryEntry> entries = mosaicer::list_directory(directory);
        const auto holds = [&entries](auto&& wanted) {
            return std::any_of(entries.begin(), entries.end(),
                               [&](const auto& entry) { return !entry.is_directory && wanted(entry.name); });
        };
        const bool has_atlas = holds([](const std::string& name) { return name == atlas_database; });
        const bool has_set = holds([](const std::string& name) { return name == set_database; });
        // In a set's folder it may be a texture called "atlas".
        const bool has_lone_image = !has_set && holds([](const std::string& name) {
            return std::any_of(image_extensions.begin(), image_extensions.end(),
                               [&](const auto extension) { return name == "atlas" + std::string(extension); });
        });
        if (has_atlas || has_lone_image)
            run_->atlases.push_back(read_atlas(directory, folder, has_atlas));
        if (has_set)
            run_->sets.push_back(read_set(directory, folder));
        for (const mosaicer::DirectoryEntry& entry : entries)
            if (entry.is_directory)
                visit(entry.path, below(folder, entry.name));
    }

private:
    RunRecord* run_;
    std::set<std::pair<std::uint64_t, std::uint64_t>> seen_; ///< identities of directories
};

} // namespace

Rectangle inner_rectangle(const std::array<float, 4>& mapping, bool tiled_u, bool tiled_v, std::int32_t width,
                          std::int32_t height) {
    const auto sane = [](float value) { return std::abs(value) < 16.0f; }; // false for what is no number
    if (!std::all_of(mapping.begin(), mapping.end(), sane))
        return {};
    // Six digits are written: on 16384 texels an edge is off by up to a hundredth.
    constexpr double slack = 0.05;
    const auto& [u_off, v_off, u_scale, v_scale] = mapping;
    // An offset pulls both edges in, so they are rounded outwards. Along a tiled direction it moves the whole copy, and
    // the length is true.
    double left = std::floor(double{u_off} * width + slack);
    double right = tiled_u ? left + std::ceil(double{u_scale} * width - slack)
                           : std::ceil((double{u_off} + double{u_scale}) * width - slack);
    double bottom = std::ceil(double{v_off} * height - slack);
    double top = tiled_v ? bottom - std::ceil(double{v_scale} * height - slack)
                         : std::floor((double{v_off} - double{v_scale}) * height + slack);
    if (left < -1 || top < -1 || right > width + 1 || bottom > height + 1)
        return {};
    left = std::max(left, 0.0);
    top = std::max(top, 0.0);
    right = std::min(right, double(width));
    bottom = std::min(bottom, double(height));
    if (left >= right || top >= bottom)
        return {};
    return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top), static_cast<std::int32_t>(right - left),
            static_cast<std::int32_t>(bottom - top)};
}

RunRecord collect_run(const std::string& output_root) {
    if (!platform::is_directory(output_root))
        throw std::runtime_error("cannot read " + output_root + ": there is no such directory");
    RunRecord run;
    Walk(run).visit(output_root, "");
    return run;
}

} // namespace kst::tool::report
