#pragma once

#include <ostream>

namespace mosaicer {

/// The five channels that the tool speaks on. The channel is the severity: lines carry no prefix, level or time.
///
/// A whole line is text, a newline and a flush; a line in pieces is flushed with its last piece. The pointers are never
/// null: until the driver sets them (and in tests that don't care) they stand on a stream that discards all text.
/// The streams are owned by whoever set them and must outlive their use.
struct ReportChannels {
    std::ostream* verbose;    ///< progress; the console under -v
    std::ostream* debug;      ///< inner steps; the console under -d
    std::ostream* warnings;   ///< collected, printed at the end of the run
    std::ostream* errors;     ///< collected, printed at the end of the run; any text here means exit code 3
    std::ostream* statistics; ///< collected, printed at the end of the run on `verbose`
};

/// A stream without a buffer: text sent to it is dropped.
std::ostream& discarding_stream();

extern ReportChannels Report; ///< process-wide; the tool has one thread

/// How a boolean is shown in text: never as a number.
constexpr const char* true_or_false(bool value) {
    return value ? "true" : "false";
}

} // namespace mosaicer
