#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace mosaicer {

class TextureIndex;

/// What sets have left on the textures of one walk of the index: `used_by` and positions stay on a texture from set to
/// set, so a later set may come out differently for having an earlier one in its run.
class TextureMarks {
public:
    /// For a new walk, whose textures are new.
    void forget() { marks_.clear(); }

    /// Notes what this set put on textures and takes it off again, so that each set shows what it puts on by itself.
    /// Gives the earlier sets whose marks would have changed this one.
    std::set<std::size_t> exchange(std::size_t set_number, const AtlasSetDefinition& set, const TextureIndex& index);

private:
    struct Mark {
        std::size_t set_number;
        std::set<std::int32_t> used_by;
        std::array<float, 3> position;
    };

    void add_needed(const SourceTexture& texture, bool has_positions, std::set<std::size_t>& needed) const;
    void take_mark(std::size_t set_number, SourceTexture& texture);

    std::map<const SourceTexture*, std::vector<Mark>> marks_;
};

} // namespace mosaicer
