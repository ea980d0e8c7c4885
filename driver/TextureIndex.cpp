#include "driver/TextureIndex.h"

#include "driver/DirectoryListing.h"
#include "driver/records/PathText.h"
#include "driver/records/Report.h"
#include "source/utility/platform/PathInfo.h"
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

/// Two files of one directory that differ only in extension are no collision.
void file_texture(const DirectoryEntry& file, TextureIndex::Records& records) {
    std::string key = lower_name(file.base);
    auto texture = std::make_unique<SourceTexture>(make_source_texture(key, file.path));
    std::unique_ptr<SourceTexture>& standing = records[key];
    if (standing == nullptr) {
        standing = std::move(texture);
        return;
    }
    if (directory_of(standing->image.file_path) != directory_of(file.path))
        warn_of_collision(*standing, file.path);
    if (file.extension == "dds")
        standing = std::move(texture);
}

/// Depth first, in listing order. `above` holds the directories that are being walked: a link that leads back to one of
/// them is passed over.
void walk_directory(const std::string& directory, std::vector<kst::platform::FileIdentity>& above,
                    TextureIndex::Records& records, IndexWalk& walk) {
    kst::platform::PathInfo info;
    if (kst::platform::path_info(directory, info) != kst::platform::PathResult::ok)
        return;
    if (std::find(above.begin(), above.end(), info.identity) != above.end()) {
        *Report.warnings << "Directory " << directory << " leads back to a directory above it and is passed over"
                         << std::endl;
        return;
    }
    above.push_back(info.identity);
    walk.directories.push_back(directory);
    for (const DirectoryEntry& entry : list_directory(directory)) {
        if (entry.is_directory) {
            walk_directory(entry.path, above, records, walk);
        } else if (is_texture_extension(entry.extension)) {
            walk.files.push_back(entry.path);
            try {
                file_texture(entry, records);
            } catch (const std::runtime_error& failure) {
                *Report.warnings << failure.what() << std::endl;
            }
        }
    }
    above.pop_back();
}

} // namespace

TextureIndex::TextureIndex(std::string textures_root) : base_root_(std::move(textures_root)) {
    roots_[0] = base_root_;
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
    walk_ = {.number = walk_.number + 1, .roots = unique_roots(), .directories = {}, .files = {}};
    for (const std::string& root : walk_.roots) {
        *Report.verbose << "Indexing " << root << "... ";
        std::vector<kst::platform::FileIdentity> above;
        walk_directory(root, above, records_, walk_);
        *Report.verbose << "done (" << records_.size() << " textures found)" << std::endl;
    }
    built_ = true;
}

SourceTexture* TextureIndex::find(const std::string& key) const {
    const auto found = records_.find(key);
    return found == records_.end() ? nullptr : found->second.get();
}

} // namespace mosaicer
