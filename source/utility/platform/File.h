#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace kst::platform {

enum class Access { read, write, read_write };

enum class Disposition {
    open_existing, ///< the file must be there
    create_always, ///< made, or emptied if it is there
    open_always,   ///< made if it is not there
};

/// How opening went. `missing` means that the file or a directory above it is not there; anything else that the host
/// refuses is `failed`: no permission, a directory, a pipe.
enum class OpenResult { ok, missing, failed };

/// `direct`: transfers go past the system's file cache where the disk can do that. Buffers, offsets and sizes must then
/// be aligned (see AsyncRead.h).
enum class Caching { system, direct };

/// An open file, read and written at positions that the caller gives: the handle keeps none. Closed by its destructor.
class File {
public:
    File() = default;
    File(File&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
    File& operator=(File&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~File();

    /// Takes either slash as a separator. The host's file permissions are the user's defaults.
    OpenResult open(const std::string& path, Disposition disposition, Access access, Caching caching = Caching::system);
    bool is_open() const { return handle_ >= 0; }

    /// Bytes in the file, -1 if the host cannot tell.
    std::int64_t size() const;

    /// Reads until `count` bytes are there or the file ends, and gives the bytes read in `done`. False: the host
    /// failed.
    bool read_at(std::int64_t offset, void* data, std::size_t count, std::size_t& done) const;
    /// Writes all bytes, growing the file. False: the host failed; `done` bytes were written.
    bool write_at(std::int64_t offset, const void* data, std::size_t count, std::size_t& done) const;

    /// The host's number of the open file, for the other files of this folder.
    int handle() const { return handle_; }

private:
    int handle_ = -1;
};

} // namespace kst::platform
