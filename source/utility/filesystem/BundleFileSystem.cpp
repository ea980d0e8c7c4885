#include "source/utility/filesystem/BundleFileSystem.h"

#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/wildcards.h"

#include <limits>

namespace kst {

bool BundleFileSystem::load(const std::string& name, Kind kind) {
    const std::string directory = kind == Kind::custom_level ? "custom_levels\\" : "bundles\\";
    return load_file(directory + name + ".bundle") || load_file("bundles\\quick.bundle");
}

bool BundleFileSystem::load_file(const std::string& path) {
    unload();
    Archive archive = files_->open(path, "rc");
    if (!archive)
        return false;
    directory_ = BundleDirectory(archive);
    archive_ = std::move(archive);
    bundle_path_ = path;
    bundle_time_ = files_->last_modified(path);
    return true;
}

void BundleFileSystem::unload() {
    archive_ = Archive();
    directory_ = BundleDirectory();
}

const BundleEntry* BundleFileSystem::find(const std::string& path) const {
    return archive_ && files_->bundles_enabled() ? directory_.find(path) : nullptr;
}

const BundleEntry* BundleFileSystem::find_present(const std::string& path) const {
    const BundleEntry* const entry = find(path);
    return entry && entry->present ? entry : nullptr;
}

bool BundleFileSystem::exists(const std::string& path) {
    return find_present(path) != nullptr;
}

bool BundleFileSystem::is_dir(const std::string& path) {
    const BundleEntry* const entry = find_present(path);
    return entry && entry->is_directory;
}

bool BundleFileSystem::masks(const std::string& path) {
    return find(path) != nullptr;
}

std::uint64_t BundleFileSystem::last_modified(const std::string& path) {
    return exists(path) ? bundle_time_ : 0;
}

std::string BundleFileSystem::locate(const std::string& path, std::int64_t& offset, std::int32_t& size) {
    const BundleEntry* const entry = find_present(path);
    const bool told = entry && entry->size <= std::numeric_limits<std::int32_t>::max();
    offset = entry ? entry->offset : 0;
    size = told ? static_cast<std::int32_t>(entry->size) : -1;
    return entry ? files_->system_path(bundle_path_) : path;
}

std::string BundleFileSystem::system_path(const std::string& path) {
    return path;
}

std::string BundleFileSystem::full_path(const std::string& path) {
    return path;
}

Archive BundleFileSystem::open(const std::string& path, const std::string& mode) {
    const BundleEntry* const entry = find_present(path);
    const bool writes = mode.find_first_of("wa+") != std::string::npos;
    if (writes || !entry || entry->is_directory || entry->size == 0)
        return {};
    Archive file(archive_, entry->offset, entry->size, /*unbounded=*/false);
    file.set_name(path);
    return file;
}

bool BundleFileSystem::make_dir(const std::string& /*path*/) {
    return false;
}

bool BundleFileSystem::delete_file(const std::string& /*path*/) {
    return false;
}

void BundleFileSystem::list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
                            bool want_directories) {
    const bool at_root = path.find_first_not_of("/\\") == std::string::npos;
    const bool shown = archive_ && files_->bundles_enabled();
    const BundleEntry* const directory = at_root && shown ? &directory_.root() : find_present(path);
    if (!directory)
        return;
    for (const std::string& pattern : split_patterns(patterns))
        for (const auto& [name, index] : directory_.children_of(*directory)) {
            const BundleEntry& entry = directory_.entries()[index];
            if (entry.present && entry.is_directory == want_directories && fits_pattern(name, pattern))
                names.emplace_back(name);
        }
}

} // namespace kst
