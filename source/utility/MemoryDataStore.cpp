#include "source/utility/MemoryDataStore.h"

#include "source/utility/Errors.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace kst {

namespace {

constexpr std::int64_t most_bytes = std::numeric_limits<std::int32_t>::max();

std::size_t copy_from(const std::byte* block, std::int64_t size, std::int64_t offset, void* data, std::size_t count) {
    if (offset < 0 || offset >= size)
        return 0;
    const std::size_t copied = std::min(count, static_cast<std::size_t>(size - offset));
    if (copied > 0)
        std::memcpy(data, block + offset, copied);
    return copied;
}

} // namespace

ConstMemoryDataStore::ConstMemoryDataStore(const void* data, std::size_t size)
    : data_(static_cast<const std::byte*>(data)), size_(static_cast<std::int32_t>(size)) {
    if (size > static_cast<std::size_t>(most_bytes))
        throw ErrorWithCStack("Const memory data store cannot hold 2 GiB or more");
}

std::size_t ConstMemoryDataStore::read(std::int64_t offset, void* data, std::size_t count) {
    return copy_from(data_, size_, offset, data, count);
}

std::size_t ConstMemoryDataStore::write(std::int64_t /*offset*/, const void* /*data*/, std::size_t /*count*/) {
    throw ErrorWithCStack("Cant write to const memmory data store");
}

std::size_t MemoryDataStore::read(std::int64_t offset, void* data, std::size_t count) {
    return copy_from(data_.get(), size_, offset, data, count);
}

std::size_t MemoryDataStore::write(std::int64_t offset, const void* data, std::size_t count) {
    if (count == 0)
        return 0;
    if (offset < 0 || offset > most_bytes || count > static_cast<std::size_t>(most_bytes - offset))
        throw ErrorWithCStack("Memory data store cannot grow to 2 GiB or more");
    const auto end = static_cast<std::int32_t>(offset + static_cast<std::int64_t>(count));
    grow(end);
    if (offset > size_)
        std::memset(data_.get() + size_, 0, static_cast<std::size_t>(offset - size_));
    std::memcpy(data_.get() + offset, data, count);
    size_ = std::max(size_, end);
    return count;
}

void MemoryDataStore::grow(std::int32_t needed) {
    if (needed <= capacity_)
        return;
    const double stepped = std::min(capacity_ * 1.2 + 10, static_cast<double>(most_bytes));
    const std::int32_t capacity = std::max(needed, static_cast<std::int32_t>(stepped));
    auto block = std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(capacity));
    if (size_ > 0)
        std::memcpy(block.get(), data_.get(), static_cast<std::size_t>(size_));
    data_ = std::move(block);
    capacity_ = capacity;
}

std::size_t NullDataStore::read(std::int64_t /*offset*/, void* /*data*/, std::size_t /*count*/) {
    throw ErrorWithCStack("Cant read from null data store");
}

std::size_t NullDataStore::write(std::int64_t offset, const void* /*data*/, std::size_t count) {
    // Held at the largest position, as an archive holds its own.
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const std::int64_t room = most - std::max<std::int64_t>(offset, 0);
    size_ =
        std::max(size_, count > static_cast<std::uint64_t>(room) ? most : offset + static_cast<std::int64_t>(count));
    return count;
}

} // namespace kst
