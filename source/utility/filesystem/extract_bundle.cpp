#include "source/utility/filesystem/extract_bundle.h"

#include "source/utility/Errors.h"
#include "source/utility/FileDataStore.h"
#include "source/utility/platform/Directory.h"

#include <algorithm>

namespace kst {

namespace {

constexpr std::size_t extracted_block = 65'536;

void make_sure_of_directory(const std::string& path) {
    if (!platform::is_directory(path) && !platform::make_directory(path))
        throw_disk_error("Cannot make directory " + path);
}

void write_file(const BundleEntry& entry, const Archive& bundle, const std::string& path) {
    FileDataStore file(path, platform::Disposition::create_always, platform::Access::write, ShareMode::none);
    if (!file.is_valid())
        throw_disk_error("Cannot open " + path);
    Archive data(bundle, entry.offset, entry.size, /*unbounded=*/false);
    std::vector<std::byte> block(std::min(extracted_block, static_cast<std::size_t>(entry.size)));
    while (data.position() < data.size()) {
        const std::int64_t at = data.position();
        const std::size_t bytes =
            data.read(block.data(), std::min(block.size(), static_cast<std::size_t>(data.size() - at)));
        if (bytes == 0)
            throw_disk_error("Cannot read from file " + bundle.name());
        file.write(at, block.data(), bytes);
    }
}

} // namespace

std::vector<std::string> extract_bundle(const BundleDirectory& directory, const Archive& bundle,
                                        const std::string& host_directory) {
    const auto& entries = directory.entries();
    std::vector<std::string> refused;
    // Whether what an entry holds is written. A directory stands before its entries, so one pass settles all.
    std::vector<bool> opens(entries.size(), false);
    opens[0] = true;
    make_sure_of_directory(host_directory);
    for (std::size_t i = 1; i < entries.size(); ++i) {
        const BundleEntry& entry = entries[i];
        if (!opens[entry.parent] || !entry.present)
            continue;
        if (!is_plain_name(entry.name)) {
            refused.push_back(directory.path_of(i));
            continue;
        }
        const std::string path = host_directory + "/" + directory.path_of(i);
        opens[i] = entry.is_directory;
        if (entry.is_directory)
            make_sure_of_directory(path);
        else
            write_file(entry, bundle, path);
    }
    return refused;
}

} // namespace kst
