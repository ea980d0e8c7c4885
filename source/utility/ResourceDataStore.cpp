#include "source/utility/ResourceDataStore.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace kst {

ResourceDataStore::ResourceDataStore(platform::Module module, std::uint16_t number) {
    const auto bytes = platform::find_resource(module, number);
    data_ = bytes.data();
    size_ = static_cast<std::int32_t>(std::min<std::size_t>(bytes.size(), std::numeric_limits<std::int32_t>::max()));
}

std::size_t ResourceDataStore::room(std::int64_t offset, std::size_t count) const {
    return offset < 0 || offset >= size_ ? 0 : std::min(count, static_cast<std::size_t>(size_ - offset));
}

std::size_t ResourceDataStore::read(std::int64_t offset, void* data, std::size_t count) {
    const std::size_t bytes = room(offset, count);
    if (bytes > 0)
        std::memcpy(data, data_ + offset, bytes);
    return bytes;
}

std::size_t ResourceDataStore::write(std::int64_t offset, const void* data, std::size_t count) {
    const std::size_t bytes = room(offset, count);
    if (bytes > 0)
        std::memcpy(data_ + offset, data, bytes);
    return bytes;
}

} // namespace kst
