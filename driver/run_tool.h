#pragma once

#include <iosfwd>
#include <span>
#include <string>

namespace mosaicer {

/// One whole run of the tool: reads `arguments` (without the program's name), makes all sets, prints the summaries on
/// `console`, and under -q waits for a word on `input`.
///
/// Returns the exit code: 0 for a run without errors, for help and for too few arguments; 1 when an exception ended the
/// run; 2 when something else was thrown; 3 when the run finished with texts on Report.errors. Throws nothing. Resets
/// RunFlags at its start and leaves the channels of Report discarding.
int run_tool(std::span<const std::string> arguments, std::ostream& console, std::istream& input);

} // namespace mosaicer
