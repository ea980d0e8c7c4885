#include "source/utility/FileDataStore.h"

#include "source/utility/Errors.h"

namespace kst {

FileDataStore::FileDataStore(const std::string& path, platform::Disposition disposition, platform::Access access,
                             ShareMode /*share_mode*/)
    : name_(path) {
    if (file_.open(path, disposition, access) == platform::OpenResult::failed)
        throw_disk_error("Cannot open " + path);
}

std::int64_t FileDataStore::size() const {
    const std::int64_t size = file_.size();
    return size < 0 ? 0 : size;
}

std::size_t FileDataStore::read(std::int64_t offset, void* data, std::size_t count) {
    std::size_t done = 0;
    if (!file_.read_at(offset, data, count, done))
        throw_disk_error("Cannot read from file " + name_);
    return done;
}

std::size_t FileDataStore::write(std::int64_t offset, const void* data, std::size_t count) {
    std::size_t done = 0;
    if (!file_.write_at(offset, data, count, done))
        throw_disk_error("Cannot write to file " + name_);
    return done;
}

} // namespace kst
