#include "driver/plan/edge_groups.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace mosaicer {
namespace {

using Indices = std::vector<std::size_t>;

/// Names are a few dozen bytes. Of longer ones, which only a hostile file has, the parts are not tried one by one.
constexpr std::size_t longest_name_to_divide = 256;

struct Run {
    std::string pattern;
    Indices sets; ///< ascending
};

class Grouping {
public:
    Grouping(std::span<const SetNaming> sets, std::span<const NestedSet> nested) : sets_(sets), nested_(nested) {}

    std::vector<EdgeGroup> groups() const {
        std::vector<Run> runs;
        runs.reserve(sets_.size());
        for (std::size_t i = 0; i < sets_.size(); ++i)
            runs.push_back(best_run(needed_with(i)));
        std::vector<EdgeGroup> groups;
        for (Indices& members : connected(runs))
            groups.push_back({members, patterns_for(members, runs)});
        return groups;
    }

private:
    Indices selected_by(std::string_view pattern) const {
        Indices selected;
        for (std::size_t i = 0; i < sets_.size(); ++i)
            if (sets_[i].name.find(pattern) != std::string::npos)
                selected.push_back(i);
        return selected;
    }

    bool is_good(const Run& run) const {
        const auto selects = [&](std::size_t i) { return std::ranges::binary_search(run.sets, i); };
        const auto is_complete = [&](std::size_t i) { return std::ranges::all_of(sets_[i].needs, selects); };
        const auto is_quiet = [&](const NestedSet& inner) {
            return inner.name.find(run.pattern) == std::string::npos || selects(inner.owner);
        };
        return std::ranges::all_of(run.sets, is_complete) && std::ranges::all_of(nested_, is_quiet);
    }

    /// The set and all that must be made with it: sets that bear its name within theirs, what any of them needs, and
    /// the owners of nested sets that a name of these would select.
    Indices needed_with(std::size_t start) const {
        std::set<std::size_t> found{start};
        Indices open{start};
        const auto reach = [&](std::size_t i) {
            if (found.insert(i).second)
                open.push_back(i);
        };
        while (!open.empty()) {
            const SetNaming& set = sets_[open.back()];
            open.pop_back();
            std::ranges::for_each(set.needs, reach);
            std::ranges::for_each(selected_by(set.name), reach);
            for (const NestedSet& inner : nested_)
                if (inner.name.find(set.name) != std::string::npos)
                    reach(inner.owner);
        }
        return {found.begin(), found.end()};
    }

    /// All parts that the names have in common, longest first, from left to right.
    std::vector<std::string_view> common_parts(const Indices& members) const {
        std::string_view shortest = sets_[members.front()].name;
        for (const std::size_t i : members)
            if (sets_[i].name.size() < shortest.size())
                shortest = sets_[i].name;
        const auto is_common = [&](std::string_view part) {
            return std::ranges::all_of(members,
                                       [&](std::size_t i) { return sets_[i].name.find(part) != std::string::npos; });
        };
        std::vector<std::string_view> parts;
        if (is_common(shortest))
            parts.push_back(shortest); // a part of it selects no less
        else if (shortest.size() <= longest_name_to_divide)
            for (std::size_t size = shortest.size(); --size > 0;)
                for (std::size_t at = 0; at + size <= shortest.size(); ++at)
                    if (is_common(shortest.substr(at, size)))
                        parts.push_back(shortest.substr(at, size));
        return parts;
    }

    /// Of the good runs that make all of `members`, the one that makes least.
    Run best_run(const Indices& members) const {
        std::optional<Run> best;
        for (const std::string_view part : common_parts(members)) {
            Run run{std::string(part), selected_by(part)};
            if ((!best || run.sets.size() < best->sets.size()) && is_good(run))
                best = std::move(run);
        }
        return best ? *best : Run{"", selected_by("")};
    }

    /// The sets that hang together by runs that make more than one of them, in order of their first set.
    std::vector<Indices> connected(const std::vector<Run>& runs) const {
        Indices parent(sets_.size());
        std::iota(parent.begin(), parent.end(), std::size_t{0});
        const auto root = [&](std::size_t i) {
            while (parent[i] != i)
                i = parent[i] = parent[parent[i]];
            return i;
        };
        for (std::size_t i = 0; i < runs.size(); ++i)
            for (const std::size_t j : runs[i].sets) {
                const auto [low, high] = std::minmax({root(i), root(j)});
                parent[high] = low;
            }
        std::vector<Indices> members(sets_.size());
        for (std::size_t i = 0; i < sets_.size(); ++i)
            members[root(i)].push_back(i);
        std::erase_if(members, [](const Indices& group) { return group.empty(); });
        return members;
    }

    /// One run for all of a group if there is one; else the biggest runs of its sets until every set is made.
    std::vector<std::string> patterns_for(const Indices& members, const std::vector<Run>& runs) const {
        const Run together = best_run(members);
        if (together.sets == members)
            return {together.pattern};
        std::vector<const Run*> candidates;
        for (const std::size_t i : members)
            candidates.push_back(&runs[i]);
        std::ranges::stable_sort(candidates, std::ranges::greater{}, [](const Run* run) { return run->sets.size(); });
        std::vector<std::string> patterns;
        std::set<std::size_t> made;
        for (const Run* const run : candidates) {
            const std::size_t before = made.size();
            made.insert(run->sets.begin(), run->sets.end());
            if (made.size() > before)
                patterns.push_back(run->pattern);
        }
        return patterns;
    }

    std::span<const SetNaming> sets_;
    std::span<const NestedSet> nested_;
};

} // namespace

std::vector<EdgeGroup> group_sets(std::span<const SetNaming> sets, std::span<const NestedSet> nested) {
    return Grouping(sets, nested).groups();
}

} // namespace mosaicer
