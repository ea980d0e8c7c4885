#pragma once

#include "driver/plan/survey_definition.h"

#include <span>
#include <string>
#include <vector>

namespace mosaicer {

/// What a plan says beside the sets: how its commands are called.
struct PlanOptions {
    std::string plan_path;             ///< the Ninja file; its path and ".state" is the folder for stamps and logs
    std::string mosaicer;              ///< program that makes the sets
    std::string kst;                   ///< program that makes plans
    std::vector<std::string> switches; ///< handed to mosaicer with every run
};

/// The text of the Ninja file. The same survey and options give the same text.
///
/// A set is one edge, or sets that one pattern would select share one:
///
///     build STATE/ui%2Fhud.log | out/ui/hud/atlas.dds out/ui/hud/tdb_atlas_set.xml: set tex/a.png | mosaicer || sets.xml
///       patterns = -pui/hud
///       id = 6E1F...
///
/// - The log is what the run said. It goes when a run begins and comes back when it ends well, so an edge whose run
///   failed is never taken for done, whatever files it left.
/// - The definition is an order-only input: each edge carries the fingerprint of its sets in its command instead, so
///   that an edit of the definition makes those sets anew that it touches.
/// - How many atlases a split set becomes is known when it has been packed. A second edge does that, from the headers of
///   the textures, and writes the names of all files to a dyndep file, which Ninja loads before it looks at the first.
/// - The plan itself is made anew when the definition, a texture or a directory below the roots has changed, and is
///   left alone if it comes out the same.
std::string ninja_plan(const DefinitionSurvey& survey, const PlanRoots& roots, const PlanOptions& options);

/// The dyndep file that adds `outputs` to the edge that makes `stamp`.
std::string ninja_dyndep(const std::string& stamp, std::span<const std::string> outputs);

} // namespace mosaicer
