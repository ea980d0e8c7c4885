#include "objects/database/archive_values.h"

#include "source/utility/Errors.h"

#include <stdexcept>

namespace kst {

void read_bytes(Archive& archive, void* data, std::size_t count) {
    if (archive.read(data, count) != count)
        throw std::range_error("Archive::checked_read() Attempt to read past end of archive '" + archive.name() + "'");
}

void write_bytes(Archive& archive, const void* data, std::size_t count) {
    if (archive.write(data, count) != count)
        throw_disk_error("Cannot write to file " + archive.name());
}

std::uint64_t bytes_left(const Archive& archive) {
    return static_cast<std::uint64_t>(std::max<std::int64_t>(archive.size() - archive.position(), 0));
}

void write_string(Archive& archive, std::string_view text) {
    if (text.find('\0') != std::string_view::npos)
        throw ErrorWithCStack("A text with a zero byte cannot be stored: " + std::string(text.data()));
    write_bytes(archive, text.data(), text.size());
    write_value(archive, '\0');
}

} // namespace kst
