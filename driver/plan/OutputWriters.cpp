#include "driver/plan/OutputWriters.h"

#include "driver/records/PathText.h"

#include <filesystem>
#include <string_view>

namespace mosaicer {
namespace {

/// One spelling for each file, for comparison alone.
std::string one_spelling(const std::string& path) {
    return std::filesystem::absolute(path).lexically_normal().string();
}

std::string_view name_of(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

/// The name of a folder that a split set may make: "atlas" and a number.
bool is_numbered_atlas(std::string_view name) {
    constexpr std::string_view prefix = "atlas";
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           name.find_first_not_of("0123456789", prefix.size()) == std::string_view::npos;
}

} // namespace

std::set<std::size_t> OutputWriters::add(std::size_t number, const SurveyedSet& set, const std::string& output_root) {
    std::set<std::size_t> others;
    for (const std::string& output : set.outputs) {
        if (const auto writer = writer_of(output); writer && *writer != number)
            others.insert(*writer);
        const std::string file = one_spelling(output);
        files_.emplace(file, number);
        folders_.emplace(directory_of(file), number);
    }
    if (set.is_split)
        add_split(number, one_spelling(join_path(output_root, set.name)), others);
    return others;
}

std::optional<std::size_t> OutputWriters::writer_of(const std::string& path) const {
    const std::string file = one_spelling(path);
    if (const auto found = files_.find(file); found != files_.end())
        return found->second;
    const std::string_view folder = directory_of(file);
    const auto split = split_folders_.find(std::string(directory_of(folder)));
    if (split == split_folders_.end() || !is_numbered_atlas(name_of(folder)))
        return std::nullopt;
    return split->second;
}

void OutputWriters::add_split(std::size_t number, const std::string& folder, std::set<std::size_t>& others) {
    const auto [split, is_new] = split_folders_.emplace(folder, number);
    if (!is_new)
        others.insert(split->second);
    const std::string prefix = folder + "/";
    for (auto at = folders_.lower_bound(prefix); at != folders_.end() && at->first.starts_with(prefix); ++at)
        if (is_numbered_atlas(at->first.substr(prefix.size())))
            others.insert(at->second);
}

} // namespace mosaicer
