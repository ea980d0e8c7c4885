#include "source/utility/filesystem/file_functions.h"

#include "source/utility/Errors.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/normalize_path.h"
#include "source/utility/platform/PathInfo.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kst {

namespace {

constexpr std::size_t copy_block = 16'384;

/// In one spelling, but still absolute if it was.
std::string normalized(const std::string& path) {
    return normalize_path(path, /*trailing_separator=*/false, /*keep_leading_separator=*/true);
}

bool are_same_file(VirtualFileSystem& files, const std::string& a, const std::string& b) {
    platform::PathInfo first;
    platform::PathInfo second;
    return platform::path_info(files.system_path(a), first) == platform::PathResult::ok &&
           platform::path_info(files.system_path(b), second) == platform::PathResult::ok &&
           first.identity == second.identity;
}

bool copy_bytes(Archive& from, Archive& to) {
    std::array<char, copy_block> block; // NOLINT(cppcoreguidelines-pro-type-member-init)
    while (from.position() < from.size()) {
        const auto left = static_cast<std::size_t>(from.size() - from.position());
        const std::size_t bytes = from.read(block.data(), std::min(left, block.size()));
        if (bytes == 0 || to.write(block.data(), bytes) != bytes)
            return false;
    }
    return true;
}

} // namespace

bool delete_recursively(VirtualFileSystem& files, const std::string& path) {
    const std::string directory = normalized(path);
    if (directory.empty())
        return false;
    if (files.is_dir(directory) && !platform::is_link(files.system_path(directory)))
        for (const bool directories : {false, true}) {
            std::vector<std::string> names;
            files.list(names, directory, "*.*", directories);
            for (const std::string& name : names)
                delete_recursively(files, std::string(directory).append("\\").append(name));
        }
    return files.delete_file(directory);
}

bool copy_file(VirtualFileSystem& files, const std::string& source, const std::string& destination) {
    const std::string from = normalized(source);
    std::string to = normalized(destination);
    Archive input = files.open(from, "r");
    if (!input)
        return false;
    if (files.is_dir(to))
        to.append("\\").append(file_name_of(from));
    // Opening the destination empties it, and with it the source if they are one.
    if (are_same_file(files, from, to))
        return false;
    Archive output = files.open(to, "w");
    return output && copy_bytes(input, output);
}

bool can_write_to(VirtualFileSystem& files, const std::string& path) {
    try {
        const std::string file = files.is_dir(path) ? path + "/__write_test_file.txt" : path;
        const bool was_there = files.exists(file);
        const bool opened = static_cast<bool>(files.open(file, "a"));
        if (opened && !was_there)
            files.delete_file(file);
        return opened;
    } catch (const DiskError&) {
        return false;
    }
}

} // namespace kst
