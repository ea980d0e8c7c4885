#pragma once

#include <cstddef>
#include <cstdint>

namespace kst {

/// A random-access block of bytes. Positions live in the archives that share a store, none here.
class DataStore {
public:
    DataStore() = default;
    DataStore(const DataStore&) = delete;
    DataStore& operator=(const DataStore&) = delete;
    virtual ~DataStore() = default;

    /// Returns the bytes written.
    virtual std::size_t write(std::int64_t offset, const void* data, std::size_t count) = 0;
    /// Returns the bytes read.
    virtual std::size_t read(std::int64_t offset, void* data, std::size_t count) = 0;
};

} // namespace kst
