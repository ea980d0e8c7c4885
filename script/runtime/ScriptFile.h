#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "script/binding/bind.h"
#include "source/utility/Archive.h"

namespace kst::script {

/// An open file as scripts see it. It is closed when it is told to, or when its last value goes. Bytes are strings;
/// positions and sizes count bytes.
///
/// `for (line in file)` walks the lines from the position on.
class ScriptFile : public Bound<ScriptFile> {
public:
    static constexpr std::string_view script_name = "ScriptFile";
    static void bind(StaticMemberSet<ScriptFile>& members);

    explicit ScriptFile(Archive archive, std::string name) : archive_(std::move(archive)), name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    bool is_open() const { return static_cast<bool>(archive_); }
    std::size_t size() const { return static_cast<std::size_t>(archive_.size()); }
    std::size_t position() const { return static_cast<std::size_t>(archive_.position()); }
    /// Kept within the file.
    void set_position(float position);
    bool at_end() const { return archive_.position() >= archive_.size(); }

    /// A line without its end; void at the end of the file.
    ScriptValue read_line();
    /// At most `count` bytes; fewer where the file ends.
    std::string read(float count);
    /// From the position to the end.
    std::string read_all();
    /// Write the text at the position. Throw DSError where the file is not open or cannot be written.
    void write(const std::string& text);
    void write_line(const std::string& text) { write(text + '\n'); }
    void close() { archive_ = Archive(); }
    /// A file is the iterator of its lines.
    ScriptFile& iterator() { return *this; }

private:
    Archive archive_;
    std::string name_;
};

/// What opening gives for a file that cannot be opened: empty, at its end, and an error to write to.
class NullScriptFile : public Bound<NullScriptFile, ScriptFile> {
public:
    static constexpr std::string_view script_name = "NullScriptFile";
    static void bind(StaticMemberSet<NullScriptFile>&) {}

    explicit NullScriptFile(std::string name) : Bound(Archive(), std::move(name)) {}
};

} // namespace kst::script
