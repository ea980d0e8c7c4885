#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace mosaicer {

/// One set of a definition as the choice of patterns sees it.
struct SetNaming {
    std::string name; ///< the full name, which a pattern must be a part of to select the set
    /// Earlier or later sets, by index, without which a run gives this set other bytes than a run of all sets does.
    std::vector<std::size_t> needs;
};

/// An element named like a set inside a set: an entry where the set around it is made, a set of its own where not.
struct NestedSet {
    std::string name;
    std::size_t owner = 0; ///< index of the set around it
};

/// Sets that are made together, by one run or a few.
struct EdgeGroup {
    std::vector<std::size_t> sets;     ///< ascending
    std::vector<std::string> patterns; ///< one a run; together they select these sets and nothing else
};

/// Divides the sets of a definition among edges of a build graph, each as small as the pattern switch allows.
///
/// A pattern selects every set whose full name contains it, in exact case, so a run for "ui" also makes "ui/hud" and
/// "build". Two sets that one run would make share a group, and so on from set to set:
///
///     "ui"  "ui/hud"  "build"      one run, -pui
///     "a"   "b"  "ab"              two runs, -pa and -pb; the second makes "ab" again, with the same bytes
///     "sky" "terrain"              two groups
///
/// A run is good if it selects all that its sets need and no nested set. The best pattern for a set on its own is its
/// name, as no shorter part selects less; a set that needs others takes the part common to all of them that selects
/// fewest, and in the end the empty pattern, which selects everything.
std::vector<EdgeGroup> group_sets(std::span<const SetNaming> sets, std::span<const NestedSet> nested);

} // namespace mosaicer
