#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace mosaicer {

/// Notices when a split run goes round in circles.
///
/// A pass that places nothing hands the next one the same textures in the order of their removal. That order may still
/// change the outcome, as equal textures are told apart by their place in the list. But a pass depends on its list
/// alone: once a list comes back and nothing was placed in between, no later pass places anything.
class StandstillWatch {
public:
    /// Tells the list that a pass begins with. True: the run has come to a standstill.
    bool begins_again_with(const std::vector<SetTextureEntry>& list);

    /// Tells that a pass placed something.
    void progress() { lists_.clear(); }

private:
    std::vector<std::vector<SetTextureEntry>> lists_; ///< what passes began with since the last progress
};

/// The text that ends a run at a standstill: the set, and each of `textures` that can't be placed even alone, with the
/// reason. `textures` are rotated as they are packed; the surface is `width` by `height`.
std::string never_placed_text(const AtlasSetDefinition& definition, std::span<const SetTextureEntry> textures,
                              std::int32_t width, std::int32_t height);

} // namespace mosaicer
