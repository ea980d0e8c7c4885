#include "driver/TextureIndex.h"

#include "driver/DirectoryListing.h"
#include "driver/records/PathText.h"
#include "driver/records/Report.h"
#include "texture/ImageReader.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace mosaicer {
namespace {

bool is_texture_extension(std::string_view extension) {
    constexpr std::array<std::string_view, 4> extensions{"dds", "tga", "png", "bmp"};
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

void warn_of_collision(const SourceTexture& standing, const std::string& path) {
    *Report.warnings << "Texture name collision between " << std::endl
                     << standing.image.file_path << std::endl
                     << " and " << std::endl
                     << path << " - check your texture roots!" << std::endl;
}

SourceTexture make_texture_of_file(std::string name, std::string path) {
    return make_source_texture(std::move(name), std::move(path));
}

} // namespace

TextureIndex::TextureIndex(std::string textures_root) : TextureIndex(std::move(textures_root), make_texture_of_file) {}

TextureIndex::TextureIndex(std::string textures_root, MakeTexture make_texture)
    : make_texture_(std::move(make_texture)), base_root_(std::move(textures_root)) {
    roots_[0] = base_root_;
}

/// Two files of one directory that differ only in extension are no collision.
void TextureIndex::file_texture(const DirectoryEntry& file) {
    std::string key = lower_name(file.base);
    auto texture = std::make_unique<SourceTexture>(make_texture_(key, file.path));
    std::unique_ptr<SourceTexture>& standing = records_[std::move(key)];
    if (standing == nullptr) {
        standing = std::move(texture);
        return;
    }
    const bool collide = directory_of(standing->image.file_path) != directory_of(file.path);
    if (collide)
        warn_of_collision(*standing, file.path);
    const bool replaces = file.extension == "dds";
    if (collide || (!replaces && !standing->image.file_path.ends_with(".dds"))) {
        const std::string& stays = replaces ? file.path : standing->image.file_path;
        const std::string& goes = replaces ? standing->image.file_path : file.path;
        walk_.findings.push_back({collide ? IndexFault::collision : IndexFault::twin, goes, stays, {}});
    }
    if (replaces)
        standing = std::move(texture);
}

/// Depth first, in listing order. `above` holds the directories that are being walked: a link that leads back to one of
/// them is passed over.
void TextureIndex::walk_directory(const std::string& directory, std::vector<kst::platform::FileIdentity>& above) {
    kst::platform::PathInfo info;
    if (kst::platform::path_info(directory, info) != kst::platform::PathResult::ok)
        return;
    if (std::find(above.begin(), above.end(), info.identity) != above.end()) {
        *Report.warnings << "Directory " << directory << " leads back to a directory above it and is passed over"
                         << std::endl;
        walk_.findings.push_back({IndexFault::directory_circle, directory, {}, {}});
        return;
    }
    above.push_back(info.identity);
    walk_.directories.push_back(directory);
    for (const DirectoryEntry& entry : list_directory(directory)) {
        if (entry.is_directory) {
            walk_directory(entry.path, above);
        } else if (is_texture_extension(entry.extension)) {
            walk_.files.push_back(entry.path);
            try {
                file_texture(entry);
            } catch (const std::runtime_error& failure) {
                *Report.warnings << failure.what() << std::endl;
                walk_.findings.push_back({IndexFault::unreadable, entry.path, {}, failure.what()});
            }
        } else if (is_texture_extension(lower_name(entry.extension))) {
            walk_.findings.push_back({IndexFault::extension_case, entry.path, {}, {}});
        }
    }
    above.pop_back();
}

void TextureIndex::set_root(std::size_t slot, std::string path) {
    if (path != roots_.at(slot)) {
        records_.clear();
        built_ = false;
    }
    roots_.at(slot) = std::move(path);
}

std::vector<std::string> TextureIndex::unique_roots() const {
    std::vector<std::string> unique;
    for (const std::string& root : roots_)
        if (!root.empty() && std::find(unique.begin(), unique.end(), root) == unique.end())
            unique.push_back(root);
    return unique;
}

void TextureIndex::ensure_built() {
    if (built_)
        return;
    walk_ = {.number = walk_.number + 1, .roots = unique_roots(), .directories = {}, .files = {}, .findings = {}};
    for (const std::string& root : walk_.roots) {
        *Report.verbose << "Indexing " << root << "... ";
        std::vector<kst::platform::FileIdentity> above;
        walk_directory(root, above);
        *Report.verbose << "done (" << records_.size() << " textures found)" << std::endl;
    }
    built_ = true;
}

SourceTexture* TextureIndex::find(const std::string& key) const {
    const auto found = records_.find(key);
    return found == records_.end() ? nullptr : found->second.get();
}

} // namespace mosaicer
