#include "objects/database/PersistentObject.h"

#include "objects/database/archive_values.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kst {

namespace {

/// As Archive::read_string on a window, but a text of ordinary length takes no memory of its own.
idstring read_name(Archive& archive) {
    std::array<char, 64> front{};
    const std::int64_t start = archive.position();
    if (!archive.unbounded()) {
        const auto wanted = std::min<std::uint64_t>(front.size(), bytes_left(archive));
        const std::size_t got = archive.read(front.data(), static_cast<std::size_t>(wanted));
        const std::size_t length = std::string_view(front.data(), got).find('\0');
        archive.set_position(length != std::string_view::npos ? start + static_cast<std::int64_t>(length) + 1 : start);
        if (length != std::string_view::npos)
            return intern({front.data(), length});
    }
    std::string text;
    archive.read_string(text);
    return intern(text);
}

} // namespace

void PersistentObject::load(Archive& archive, ReferenceMap& /*references*/) {
    name_ = read_name(archive);
}

void PersistentObject::save(Archive& archive, ReferenceMap& /*references*/) const {
    write_string(archive, idstring_text(name_));
}

} // namespace kst
