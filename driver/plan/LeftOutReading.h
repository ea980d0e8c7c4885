#pragma once

#include "driver/TextureIndex.h"
#include "driver/plan/edge_groups.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kst {
class XMLNode;
}

namespace mosaicer {

struct AtlasSetDefinition;

/// What the elements of a definition are where a pattern leaves out the set that they stand in: its texture entries are
/// then read as elements, with set attributes. Throws nothing: what only fails as an element makes it harmful.
class LeftOutReading {
public:
    LeftOutReading(const std::string& textures_root, const kst::XMLNode& definition);

    /// False: leaving out a set changes or fails the sets behind it, so that only a run of all sets is good.
    bool is_harmless() const { return is_harmless_; }
    /// Owners are numbered in the order in which a run of all sets makes them.
    const std::vector<NestedSet>& nested() const { return nested_; }

private:
    void read(const AtlasSetDefinition& parent, const kst::XMLNode& node);

    TextureIndex index_; ///< holds roots; never walked
    std::vector<NestedSet> nested_;
    std::optional<std::size_t> owner_; ///< the set that is being read
    std::size_t set_count_ = 0;
    bool is_harmless_ = true;
};

} // namespace mosaicer
