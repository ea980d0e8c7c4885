#pragma once

#include "driver/plan/PlanRoots.h"
#include "driver/plan/edge_groups.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mosaicer {

/// One set as a run of all sets would make it.
struct SurveyedSet {
    std::string name;
    bool is_split = false;            ///< a series of atlases, whose number only packing tells
    std::vector<std::string> inputs;  ///< texture and positions files, ascending, each once
    std::vector<std::string> outputs; ///< files that are written whatever the packing; none for a split set
    /// Tells apart any two states of a definition and of the names of its textures that give the set different files.
    std::uint64_t fingerprint = 0;
};

/// All that a run reads to find out what to make, and what it would make. No pixel is read.
struct DefinitionSurvey {
    std::vector<SurveyedSet> sets;        ///< in the order in which they are made
    std::vector<EdgeGroup> groups;        ///< which of them are made together
    std::vector<std::string> definitions; ///< the definition file and its includes, ascending
    std::vector<std::string> directories; ///< directories where a new file may change what is made, ascending
    std::vector<std::string> sources;     ///< every texture file below the roots that no set writes, ascending
};

/// Reads a definition as a run does and records its sets instead of making them.
///
/// A set of a run stands on its definition, but not on that alone: `used_by` and positions stay on textures from set
/// to set, and a set without roots of its own sees the textures of the last walk. Sets that lean on others in such a
/// way, or that write the same files, are grouped with them.
///
/// Throws std::runtime_error for a definition that cannot be loaded, for a set that writes a file that a set reads, and
/// what the reader throws. The process's virtual file system must exist with the disk at its root. RunFlags tell about
/// extra bitmaps.
DefinitionSurvey survey_definition(const PlanRoots& roots);

} // namespace mosaicer
