#include "script/runtime/ScriptFile.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "script/value/DSError.h"
#include "script/value/text_operations.h"

namespace kst::script {

void ScriptFile::bind(StaticMemberSet<ScriptFile>& members) {
    members.method<&ScriptFile::name>("name");
    members.method<&ScriptFile::is_open>("is_open");
    members.method<&ScriptFile::size>("size");
    members.method<&ScriptFile::position>("position");
    members.method<&ScriptFile::set_position>("set_position");
    members.method<&ScriptFile::at_end>("at_end");
    members.method<&ScriptFile::read_line>("read_line");
    members.method<&ScriptFile::read_line>("next");
    members.method<&ScriptFile::read>("read");
    members.method<&ScriptFile::read_all>("read_all");
    members.method<&ScriptFile::write>("write");
    members.method<&ScriptFile::write_line>("write_line");
    members.method<&ScriptFile::close>("close");
    members.method<&ScriptFile::iterator>("iterator");
}

namespace {

/// NaN counts as 0.
std::int64_t clamped(float value, std::int64_t highest) {
    if (!(value > 0))
        return 0;
    return static_cast<double>(value) >= static_cast<double>(highest) ? highest : static_cast<std::int64_t>(value);
}

} // namespace

void ScriptFile::set_position(float position) {
    if (is_open())
        archive_.set_position(clamped(position, archive_.size()));
}

ScriptValue ScriptFile::read_line() {
    if (at_end())
        return {};
    std::string line;
    archive_.read_line(line);
    return string_value(std::move(line));
}

std::string ScriptFile::read(float count) {
    const std::int64_t bytes = clamped(count, std::max<std::int64_t>(archive_.size() - archive_.position(), 0));
    check_string_size(static_cast<std::size_t>(bytes)); // ahead of taking the memory
    std::string text(static_cast<std::size_t>(bytes), '\0');
    text.resize(archive_.read(text.data(), text.size()));
    return text;
}

std::string ScriptFile::read_all() {
    return read(std::numeric_limits<float>::infinity());
}

void ScriptFile::write(const std::string& text) {
    if (!is_open())
        throw DSError("Cannot write to " + name_ + ": the file is not open");
    if (archive_.write(text.data(), text.size()) != text.size())
        throw DSError("Cannot write to " + name_);
}

} // namespace kst::script
