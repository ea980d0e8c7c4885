#pragma once

#include "source/utility/FileDataStore.h"
#include "source/utility/platform/AsyncRead.h"

#include <cstdint>
#include <string>

namespace kst {

/// A read-only file for large sequential reads: whole blocks in a small ring, read ahead of the client while it works,
/// straight into the ring and past the system's file cache where the disk allows it.
///
/// The cached blocks of the file are neighbours, `first_block` and up; the ring wraps, the file does not:
///
///     file     ... 6 [ 7   8 ] 9 ...        first_block 7, cached_blocks 2
///     slots    | 8 | - | 7 |                ring_start 2: block 7 lies in slot 2, block 8 in slot 0
///
/// A read copies what it covers of each block, loading a block first where it is not there. Afterwards at most one
/// block older than the last one used stays, and as many blocks as the read touched are requested behind the cached
/// ones. That request is under way until a later read needs it or finds it finished; there is one at a time, and it
/// never wraps.
class CachedFileDataStore : public FileDataStoreBase {
public:
    /// `path` is a host path. A file that is not there leaves the store invalid; what the host refuses for another
    /// reason throws DiskError "Cannot open cache PATH". Sizes are in units of 1,024 bytes, both at least 1.
    CachedFileDataStore(const std::string& path, std::int32_t cache_kib, std::int32_t block_kib);
    /// Waits for a transfer that is under way.
    ~CachedFileDataStore() override;

    bool is_valid() const override { return file_.is_open(); }
    std::int64_t size() const override { return size_; }
    /// Fewer bytes than asked for only at the end of the file. Throws DiskError "Cannot start io request" or "Cannot
    /// complete pending io request"; the latter also where the file has become shorter meanwhile.
    std::size_t read(std::int64_t offset, void* data, std::size_t count) override;
    /// Writes nothing, always 0.
    std::size_t write(std::int64_t offset, const void* data, std::size_t count) override;

    /// Blocks that the ring has room for: no more than the file has.
    std::int32_t block_count() const { return block_count_; }
    /// What is in the ring now, a transfer under way not counted.
    std::int32_t first_block() const { return first_block_; }
    std::int32_t cached_blocks() const { return cached_blocks_; }

private:
    bool is_cached(std::int32_t block) const;
    std::int32_t slot_of(std::int32_t block) const;
    std::byte* slot_bytes(std::int32_t slot) const;
    void load(std::int32_t block, std::int32_t wanted);
    void drop_oldest(std::int32_t blocks);
    void read_ahead(std::int32_t wanted);
    void start_transfer(std::int32_t block, std::int32_t slot, std::int32_t count);
    void complete_transfer();

    std::int64_t size_ = 0;
    std::int32_t block_size_; ///< bytes
    std::int32_t block_count_;
    platform::AlignedBuffer buffer_;
    std::int32_t ring_start_ = 0;  ///< slot of the oldest cached block
    std::int32_t first_block_ = 0; ///< its index in the file
    std::int32_t cached_blocks_ = 0;
    bool io_pending_ = false;
    std::int32_t io_block_ = 0;
    std::int32_t io_slot_ = 0;
    std::int32_t io_count_ = 0;
    platform::AsyncFile file_; ///< last, so that it is closed before the buffer goes
};

} // namespace kst
