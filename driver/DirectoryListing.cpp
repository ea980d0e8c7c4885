#include "driver/DirectoryListing.h"

#include "driver/records/PathText.h"
#include "source/utility/platform/Directory.h"

#include <utility>

namespace mosaicer {

std::vector<DirectoryEntry> list_directory(const std::string& directory) {
    std::vector<kst::platform::DirectoryEntry> names;
    kst::platform::list_directory(directory, names);
    std::vector<DirectoryEntry> entries;
    entries.reserve(names.size());
    for (kst::platform::DirectoryEntry& listed : names) {
        DirectoryEntry entry;
        entry.path = join_path(directory, listed.name);
        entry.is_directory = listed.is_directory;
        entry.name = std::move(listed.name);
        const std::size_t dot = entry.is_directory ? std::string::npos : entry.name.rfind('.');
        entry.base = entry.name.substr(0, dot);
        if (dot != std::string::npos)
            entry.extension = entry.name.substr(dot + 1);
        entries.push_back(std::move(entry));
    }
    return entries;
}

} // namespace mosaicer
