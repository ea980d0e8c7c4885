#pragma once

#include "driver/check/Finding.h"
#include "driver/check/OutputClaims.h"
#include "driver/records/AtlasSetDefinition.h"
#include "driver/set_entries.h"
#include "texture/ImageHeader.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kst {
class XMLNode;
}

namespace mosaicer {

class AtlasSurface;
class Findings;

/// A set as the reader would hand it over.
struct SetUnderCheck {
    const kst::XMLNode& node;
    AtlasSetDefinition set;
    /// For each of `set.textures` the element that named it; the set's own for those of its autofill directory.
    std::vector<const kst::XMLNode*> entry_nodes;
    bool is_complete = true; ///< no entry had to be left out
};

/// Looks over what sets ask of their textures: sizes, formats, filters, room on the surface, and the files that they
/// write. Sets are packed on paper by the packing drivers themselves, so what is told of packing is what a run would do.
class SetCheck {
public:
    /// A split set with more textures is not packed on paper, as that may take long: only what holds of any packing is
    /// told of it.
    static constexpr std::size_t most_packed_textures = 512;

    explicit SetCheck(Findings& findings) : findings_(findings), claims_(findings) {}

    void check(SetUnderCheck& checked);

private:
    /// One set in work.
    struct Work {
        SetUnderCheck& checked;
        SetRoad road;
        std::int32_t surface_width;
        std::int32_t surface_height;
        std::size_t packing_faults = 0; ///< that a run would stop at
        bool told_sides = false;
        bool told_mixture = false;
        bool told_overlap = false;
        /// What concerns textures of the autofill directory, with their names, so that each thing is told once.
        std::map<std::pair<FindingKind, std::string>, std::vector<std::string>> of_autofill{};
    };

    void tell(Work& work, std::size_t entry, FindingKind kind, const std::string& rest);
    void tell_of_autofill(const Work& work);
    void check_attributes_in_use(const Work& work);
    void check_formats(const Work& work);
    void check_entry(Work& work, std::size_t index);
    void check_size_on_load(Work& work, std::size_t index);
    void check_pixels(Work& work, std::size_t index);
    void check_place(Work& work, std::size_t index);
    void check_names(Work& work);
    void check_image_name(const Work& work, std::size_t index);
    void pack(Work& work);
    void claim_atlas(const Work& work, const std::string& atlas_name);
    void pack_fixed(Work& work);
    void pack_split(Work& work, const AtlasSetDefinition& set);
    void check_strategies(Work& work);
    void check_area(Work& work);
    void check_overlaps(Work& work, const AtlasSurface& surface);
    void check_atlas(Work& work, AtlasSurface& surface, const std::string& atlas_name);
    const PixelOutlook& outlook(const std::string& path);

    Findings& findings_;
    OutputClaims claims_;
    std::map<std::string, PixelOutlook> outlooks_;
};

} // namespace mosaicer
