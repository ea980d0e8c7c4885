#pragma once

#include "source/utility/DataStore.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace kst {

/// A named window on a store of bytes, with its own position. A cheap value: copies share the store, and the last copy
/// to go destroys it. An archive that failed to open has a null store.
class Archive {
public:
    /// The failed archive.
    Archive();
    /// Takes over the store.
    Archive(std::string name, std::unique_ptr<DataStore> store, std::int64_t base, std::int64_t size, bool unbounded);
    /// A window on a part of the parent's window.
    Archive(const Archive& parent, std::int64_t offset, std::int64_t size, bool unbounded);
    Archive(const Archive& other);
    Archive& operator=(const Archive& other);
    ~Archive();

    /// Reads at the position and advances it by what was read, which is returned. Throws std::range_error past the end
    /// of a bounded archive, with the position unchanged.
    std::size_t read(void* data, std::size_t count);
    std::size_t write(const void* data, std::size_t count);

    /// Origin 0: from the start, 1: from the position, 2: backwards from the end.
    void set_position(std::int64_t offset, int origin = 0);
    std::int64_t position() const { return position_; }
    std::int64_t size() const { return size_; }
    bool unbounded() const { return unbounded_; }

    void read_string(std::string& out);
    void read_line(std::string& out);

    const std::string& name() const { return name_; }
    void set_name(std::string name) { name_ = std::move(name); }

    /// Null for an archive that failed to open. Not owned by the caller.
    DataStore* store() const { return store_; }
    explicit operator bool() const { return store_ != nullptr; }

private:
    std::string name_;
    DataStore* store_ = nullptr;
    std::int32_t store_ref_ = -1;
    std::int64_t base_ = 0;
    std::int64_t size_ = 0;
    std::int64_t position_ = 0;
    bool unbounded_ = true;
};

} // namespace kst
