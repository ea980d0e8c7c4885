#pragma once

#include "source/utility/DataStore.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kst {

/// A named window on a store of bytes, with its own position. A cheap value: copies share the store, and the last copy
/// to go destroys it. An archive that failed to open has a null store; it reads and writes nothing.
///
/// A bounded archive never leaves its window: what would pass its end throws std::range_error and changes nothing. An
/// unbounded one, as on a file opened for writing, grows as it is written, and reads give what the store has.
///
/// Counting the holders of a store is safe between threads; one archive is for one thread at a time.
class Archive {
public:
    /// The failed archive: no name, no store, all zero, unbounded.
    Archive();
    /// Takes over the store. `base` is where the window begins in the store, `size` its length in bytes.
    Archive(std::string name, std::unique_ptr<DataStore> store, std::int64_t base, std::int64_t size, bool unbounded);
    /// A window on a part of the parent's window, under the parent's name. Throws std::range_error if the parent is
    /// bounded and the new window could leave it: unbounded, or ending past it.
    Archive(const Archive& parent, std::int64_t offset, std::int64_t size, bool unbounded);
    Archive(const Archive& other);
    Archive(Archive&& other) noexcept;
    Archive& operator=(const Archive& other);
    Archive& operator=(Archive&& other) noexcept;
    ~Archive();

    /// Reads at the position and advances it by what was read, which is returned. Throws std::range_error past the end
    /// of a bounded archive, with the position unchanged. An unbounded one may give less and leaves the rest as it was.
    std::size_t read(void* data, std::size_t count);
    /// Writes at the position and advances it; raises the size where it passes it. Throws like read.
    std::size_t write(const void* data, std::size_t count);

    /// Origin 0: from the start, 1: from the position, 2: backwards from the end. A target past the end of an unbounded
    /// archive raises its size; past a bounded one's end, and before the start of any, it throws std::range_error.
    void set_position(std::int64_t offset, int origin = 0);
    std::int64_t position() const { return position_; }
    std::int64_t size() const { return size_; }
    bool unbounded() const { return unbounded_; }

    /// The text up to a zero byte, which is skipped, or up to the end of the data. Never throws for the end.
    void read_string(std::string& out);
    /// The text up to a line feed or zero byte, which is skipped, or up to the end of the data. A carriage return
    /// before the line feed is dropped.
    void read_line(std::string& out);

    /// Shown in every message; for a file, the path as given to `open`.
    const std::string& name() const { return name_; }
    void set_name(std::string name) { name_ = std::move(name); }

    /// Null for an archive that failed to open. Not owned by the caller.
    DataStore* store() const { return store_; }
    explicit operator bool() const { return store_ != nullptr; }

private:
    void check_room(std::size_t count, const char* refusal) const;
    char read_until(std::string& out, std::string_view terminators);
    void swap(Archive& other) noexcept;

    std::string name_;
    DataStore* store_ = nullptr;
    std::int32_t store_ref_ = -1;
    std::int64_t base_ = 0;
    std::int64_t size_ = 0;
    std::int64_t position_ = 0;
    bool unbounded_ = true;
};

} // namespace kst
