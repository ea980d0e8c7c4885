#include "source/utility/CachedFileDataStore.h"

#include "source/utility/Errors.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <limits>

namespace kst {

namespace {

constexpr std::int32_t bytes_per_kib = 1024;

platform::Caching caching_for(std::int32_t block_size) {
    const bool aligned = static_cast<std::size_t>(block_size) % platform::direct_alignment == 0;
    return aligned ? platform::Caching::direct : platform::Caching::system;
}

} // namespace

CachedFileDataStore::CachedFileDataStore(const std::string& path, std::int32_t cache_kib, std::int32_t block_kib)
    : block_size_(block_kib * bytes_per_kib), block_count_(cache_kib / block_kib) {
    const platform::OpenResult result = file_.open(path, caching_for(block_size_));
    if (result == platform::OpenResult::missing)
        return;
    size_ = file_.is_open() ? file_.size() : -1;
    const std::int64_t file_blocks = size_ / block_size_ + (size_ % block_size_ != 0 ? 1 : 0);
    if (result != platform::OpenResult::ok || size_ < 0 || file_blocks > std::numeric_limits<std::int32_t>::max())
        throw_disk_error("Cannot open cache " + path);
    block_count_ = static_cast<std::int32_t>(std::min<std::int64_t>(block_count_, file_blocks));
    buffer_ =
        platform::allocate_aligned(static_cast<std::size_t>(block_size_) * static_cast<std::size_t>(block_count_));
}

CachedFileDataStore::~CachedFileDataStore() = default;

bool CachedFileDataStore::is_cached(std::int32_t block) const {
    return block >= first_block_ && block - first_block_ < cached_blocks_;
}

std::int32_t CachedFileDataStore::slot_of(std::int32_t block) const {
    return (block - first_block_ + ring_start_) % block_count_;
}

std::byte* CachedFileDataStore::slot_bytes(std::int32_t slot) const {
    return buffer_.get() + std::int64_t{slot} * block_size_;
}

std::size_t CachedFileDataStore::read(std::int64_t offset, void* data, std::size_t count) {
    if (offset < 0 || offset >= size_ || count == 0)
        return 0;
    if (io_pending_ && file_.is_done())
        complete_transfer();
    const std::int64_t end = offset + std::min(size_ - offset, static_cast<std::int64_t>(std::min<std::size_t>(
                                                                   count, std::numeric_limits<std::int64_t>::max())));
    const auto first = static_cast<std::int32_t>(offset / block_size_);
    const auto last = static_cast<std::int32_t>((end - 1) / block_size_);
    auto* out = static_cast<std::byte*>(data);
    for (std::int32_t block = first; block <= last; ++block) {
        if (!is_cached(block))
            load(block, last - block + 1);
        const std::int64_t block_start = std::int64_t{block} * block_size_;
        const std::int64_t from = std::max(offset, block_start);
        const std::int64_t to = std::min(end, block_start + block_size_);
        std::memcpy(out, slot_bytes(slot_of(block)) + (from - block_start), static_cast<std::size_t>(to - from));
        out += to - from;
    }
    // One block stays behind the last one used: clients step back a little more often than far.
    drop_oldest(last - first_block_ - 1);
    read_ahead(last - first + 1);
    return static_cast<std::size_t>(end - offset);
}

std::size_t CachedFileDataStore::write(std::int64_t /*offset*/, const void* /*data*/, std::size_t /*count*/) {
    return 0;
}

void CachedFileDataStore::load(std::int32_t block, std::int32_t wanted) {
    if (io_pending_)
        complete_transfer();
    if (is_cached(block))
        return;
    if (is_cached(block - 1) && wanted < block_count_) {
        ring_start_ = slot_of(block - 1);
        first_block_ = block - 1;
        cached_blocks_ = 1;
    } else {
        ring_start_ = 0;
        first_block_ = block;
        cached_blocks_ = 0;
    }
    const std::int32_t slot = slot_of(block);
    const std::int32_t room = ring_start_ <= slot ? block_count_ - slot : ring_start_ - slot;
    start_transfer(block, slot, std::min(wanted, room));
    if (io_pending_)
        complete_transfer();
}

void CachedFileDataStore::drop_oldest(std::int32_t blocks) {
    if (blocks <= 0)
        return;
    assert(blocks < cached_blocks_);
    first_block_ += blocks;
    ring_start_ = (ring_start_ + blocks) % block_count_;
    cached_blocks_ -= blocks;
}

void CachedFileDataStore::read_ahead(std::int32_t wanted) {
    if (io_pending_) {
        if (!file_.is_done())
            return;
        complete_transfer();
    }
    const std::int32_t free_slots = block_count_ - cached_blocks_;
    const std::int32_t block = first_block_ + cached_blocks_;
    if (free_slots <= 0 || std::int64_t{block} * block_size_ >= size_)
        return;
    const std::int32_t slot = (ring_start_ + cached_blocks_) % block_count_;
    start_transfer(block, slot, std::min({wanted, free_slots, block_count_ - slot}));
}

void CachedFileDataStore::start_transfer(std::int32_t block, std::int32_t slot, std::int32_t count) {
    io_block_ = block;
    io_slot_ = slot;
    io_count_ = count;
    const std::int64_t offset = std::int64_t{block} * block_size_;
    const std::size_t bytes = static_cast<std::size_t>(block_size_) * static_cast<std::size_t>(count);
    if (!file_.begin(offset, slot_bytes(slot), bytes))
        throw_disk_error("Cannot start io request");
    io_pending_ = true;
    if (file_.is_done())
        complete_transfer();
}

void CachedFileDataStore::complete_transfer() {
    io_pending_ = false;
    const std::int64_t start = std::int64_t{io_block_} * block_size_;
    const std::int64_t expected = std::min(size_ - start, std::int64_t{io_count_} * block_size_);
    std::size_t done = 0;
    if (!file_.complete(done) || static_cast<std::int64_t>(done) < expected)
        throw_disk_error("Cannot complete pending io request");
    cached_blocks_ += io_count_;
}

} // namespace kst
