#include "source/utility/platform/File.h"

#include "source/utility/platform/HostPath.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kst::platform {

namespace {

/// One call moves at most this much; the host's own limit lies just under 2 GiB.
constexpr std::size_t most_bytes_per_call = std::size_t{1} << 30;

int access_flags(Access access) {
    switch (access) {
    case Access::read:
        return O_RDONLY;
    case Access::write:
        return O_WRONLY;
    case Access::read_write:
        break;
    }
    return O_RDWR;
}

int disposition_flags(Disposition disposition) {
    switch (disposition) {
    case Disposition::create_always:
        return O_CREAT | O_TRUNC;
    case Disposition::open_always:
        return O_CREAT;
    case Disposition::open_existing:
        break;
    }
    return 0;
}

/// Directories have no bytes, and a pipe has no positions and could keep the program waiting for ever.
bool can_be_positioned(int handle) {
    struct stat info = {};
    return ::fstat(handle, &info) == 0 && (S_ISREG(info.st_mode) || S_ISBLK(info.st_mode) || S_ISCHR(info.st_mode));
}

/// Repeats `call(position, bytes left)` until all is done, nothing more comes, or the host fails.
template <typename Call>
bool transfer(std::int64_t offset, std::size_t count, std::size_t& done, Call call) {
    done = 0;
    while (done < count) {
        const ssize_t moved = call(static_cast<off_t>(offset) + static_cast<off_t>(done), done,
                                   std::min(count - done, most_bytes_per_call));
        if (moved == 0)
            return true;
        if (moved > 0)
            done += static_cast<std::size_t>(moved);
        else if (errno != EINTR)
            return false;
    }
    return true;
}

} // namespace

File::~File() {
    if (is_open())
        ::close(handle_);
}

OpenResult File::open(const std::string& path, Disposition disposition, Access access, Caching caching) {
    *this = File();
    if (!is_host_path(path))
        return OpenResult::missing;
    // Non-blocking: the open of a pipe must not wait for its other end. It changes nothing for files.
    const int flags = access_flags(access) | disposition_flags(disposition) | O_CLOEXEC | O_NONBLOCK;
    const std::string host = host_path(path);
    int handle = ::open(host.c_str(), caching == Caching::direct ? flags | O_DIRECT : flags, 0666);
    if (handle < 0 && errno == EINVAL && caching == Caching::direct)
        handle = ::open(host.c_str(), flags, 0666);
    if (handle < 0)
        return errno == ENOENT || errno == ENOTDIR ? OpenResult::missing : OpenResult::failed;
    handle_ = handle;
    if (can_be_positioned(handle))
        return OpenResult::ok;
    *this = File();
    return OpenResult::failed;
}

std::int64_t File::size() const {
    struct stat info = {};
    return ::fstat(handle_, &info) == 0 ? std::int64_t{info.st_size} : -1;
}

bool File::read_at(std::int64_t offset, void* data, std::size_t count, std::size_t& done) const {
    return transfer(offset, count, done, [&](off_t position, std::size_t from, std::size_t bytes) {
        return ::pread(handle_, static_cast<char*>(data) + from, bytes, position);
    });
}

bool File::write_at(std::int64_t offset, const void* data, std::size_t count, std::size_t& done) const {
    const bool ok = transfer(offset, count, done, [&](off_t position, std::size_t from, std::size_t bytes) {
        return ::pwrite(handle_, static_cast<const char*>(data) + from, bytes, position);
    });
    return ok && done == count;
}

} // namespace kst::platform
