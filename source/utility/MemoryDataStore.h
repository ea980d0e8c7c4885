#pragma once

#include "source/utility/DataStore.h"

#include <memory>
#include <span>

namespace kst {

/// Bytes of someone else, read-only. The block is not owned and must outlive the store.
class ConstMemoryDataStore : public DataStore {
public:
    /// Throws ErrorWithCStack for a block of 2 GiB or more.
    ConstMemoryDataStore(const void* data, std::size_t size);

    /// Cut at the end of the block; 0 at or past it.
    std::size_t read(std::int64_t offset, void* data, std::size_t count) override;
    /// Throws ErrorWithCStack.
    std::size_t write(std::int64_t offset, const void* data, std::size_t count) override;

private:
    const std::byte* data_;
    std::int32_t size_;
};

/// A block of its own that grows as it is written.
class MemoryDataStore : public DataStore {
public:
    /// Cut at the end of what was written; 0 at or past it.
    std::size_t read(std::int64_t offset, void* data, std::size_t count) override;
    /// Grows as needed; bytes that were skipped read as 0. Throws ErrorWithCStack, with the content unchanged, where
    /// the block would reach 2 GiB.
    std::size_t write(std::int64_t offset, const void* data, std::size_t count) override;

    /// What was written so far. Valid until the next write.
    std::span<const std::byte> bytes() const { return {data_.get(), static_cast<std::size_t>(size_)}; }
    std::int32_t capacity() const { return capacity_; }

private:
    void grow(std::int32_t needed);

    std::unique_ptr<std::byte[]> data_;
    std::int32_t size_ = 0;
    std::int32_t capacity_ = 0;
};

/// Swallows what is written and only counts how far it reached: a dry run tells the size of a file.
class NullDataStore : public DataStore {
public:
    /// Throws ErrorWithCStack.
    std::size_t read(std::int64_t offset, void* data, std::size_t count) override;
    std::size_t write(std::int64_t offset, const void* data, std::size_t count) override;

    std::int64_t size() const { return size_; }

private:
    std::int64_t size_ = 0;
};

} // namespace kst
