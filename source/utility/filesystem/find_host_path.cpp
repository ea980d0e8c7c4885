#include "source/utility/filesystem/find_host_path.h"

#include "source/utility/ascii.h"
#include "source/utility/platform/Directory.h"
#include "source/utility/platform/HostPath.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kst {

namespace {

using platform::PathResult;

bool equal_in_any_case(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

std::vector<std::string> parts_of(std::string_view path) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (end > start)
            parts.emplace_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

/// "" and "/" take a name directly, other directories need a slash.
std::string below(const std::string& directory, const std::string& name) {
    return directory.empty() || directory.back() == '/' ? directory + name : directory + "/" + name;
}

/// One search for one path, depth first.
class Search {
public:
    explicit Search(std::vector<std::string> parts) : parts_(std::move(parts)) {}

    /// True, with the whole path in `found`, if the parts from `depth` on lead from `directory` to something.
    bool run(const std::string& directory, std::size_t depth) {
        if (depth == parts_.size()) {
            found_ = directory;
            return true;
        }
        if (longest_.empty() || depth > longest_depth_) {
            longest_ = directory;
            longest_depth_ = depth;
        }
        const std::string& part = parts_[depth];
        if (try_name(directory, part, depth))
            return true;
        if (part == "." || part == "..")
            return false;
        // A directory that cannot be read leads on by exact names only.
        std::vector<platform::DirectoryEntry> entries;
        platform::list_directory(directory, entries);
        return std::any_of(entries.begin(), entries.end(), [&](const platform::DirectoryEntry& entry) {
            return entry.name != part && equal_in_any_case(entry.name, part) && try_name(directory, entry.name, depth);
        });
    }

    const std::string& found() const { return found_; }

    /// The first directory that matched furthest, with the other parts as given.
    std::string place_to_make() const {
        std::string path = longest_;
        for (std::size_t i = longest_depth_; i < parts_.size(); ++i)
            path = below(path, parts_[i]);
        return path;
    }

private:
    bool try_name(const std::string& directory, const std::string& name, std::size_t depth) {
        const std::string path = below(directory, name);
        const bool is_last = depth + 1 == parts_.size();
        platform::PathInfo info;
        return platform::path_info(path, info) == PathResult::ok && (is_last || info.is_directory) &&
               run(path, depth + 1);
    }

    std::vector<std::string> parts_;
    std::string found_;
    std::string longest_;
    std::size_t longest_depth_ = 0;
};

} // namespace

std::string find_host_path(std::string_view path) {
    std::string given = platform::host_path(path);
    platform::PathInfo info;
    if (given.empty() || !platform::is_host_path(given) || platform::path_info(given, info) != PathResult::missing)
        return given;
    Search search(parts_of(given));
    const bool found = search.run(given.front() == '/' ? "/" : "", 0);
    std::string result = found ? search.found() : search.place_to_make();
    if (given.back() == '/' && !result.ends_with('/'))
        result.push_back('/');
    return result;
}

} // namespace kst
