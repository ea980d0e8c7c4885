#pragma once

#include "source/utility/platform/File.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct aiocb;

namespace kst::platform {

/// Transfers past the system's file cache need buffers, offsets and sizes at multiples of this.
inline constexpr std::size_t direct_alignment = 4096;

struct FreeAligned {
    void operator()(std::byte* bytes) const noexcept;
};
using AlignedBuffer = std::unique_ptr<std::byte[], FreeAligned>;

/// A block that direct transfers can go to; null for a size of 0. Throws std::bad_alloc.
AlignedBuffer allocate_aligned(std::size_t size);

/// A file that is read behind the caller's back: one transfer at a time is begun, polled and completed. The bytes go
/// straight to the caller's buffer, past the system's file cache where the disk allows it and everything is aligned,
/// and through it otherwise.
class AsyncFile {
public:
    AsyncFile();
    AsyncFile(const AsyncFile&) = delete;
    AsyncFile& operator=(const AsyncFile&) = delete;
    /// Waits for a transfer that is in flight: its buffer must live until then.
    ~AsyncFile();

    OpenResult open(const std::string& path, Caching caching);
    bool is_open() const;
    std::int64_t size() const;

    /// Starts reading `count` bytes at `offset` and does not wait. The buffer is the transfer's until it is completed.
    /// False: it could not be started.
    bool begin(std::int64_t offset, std::byte* buffer, std::size_t count);
    /// The transfer that was begun no longer runs; `complete` will not wait.
    bool is_done() const;
    /// Waits for the transfer and gives the bytes read, fewer only at the end of the file. False: it failed.
    bool complete(std::size_t& done);

private:
    File file_;
    std::unique_ptr<::aiocb> request_; ///< does not move while the system works on it
    bool in_flight_ = false;
};

} // namespace kst::platform
