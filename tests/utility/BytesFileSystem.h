#pragma once

#include "source/utility/MemoryDataStore.h"
#include "source/utility/filesystem/FileSystem.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace test_support {

/// A file system with one file, whose bytes a test holds. Bounded archives end with an exception, unbounded ones with a
/// short read, as those of a MemoryFileSystem do.
class BytesFileSystem : public kst::FileSystem {
public:
    BytesFileSystem(const std::uint8_t* data, std::size_t size, bool unbounded)
        : data_(data), size_(size), unbounded_(unbounded) {}

    kst::Archive open(const std::string& path, const std::string&) override {
        if (path == "missing")
            return {};
        const auto size = unbounded_ ? 0 : static_cast<std::int64_t>(size_);
        return {path, std::make_unique<kst::ConstMemoryDataStore>(data_, size_), 0, size, unbounded_};
    }

    bool exists(const std::string&) override { return true; }
    std::string locate(const std::string& path, std::int64_t&, std::int32_t&) override { return path; }
    std::string system_path(const std::string& path) override { return path; }
    std::string full_path(const std::string& path) override { return path; }
    bool make_dir(const std::string&) override { return false; }
    bool delete_file(const std::string&) override { return false; }
    void list(std::vector<std::string>&, const std::string&, const std::string&, bool) override {}
    std::uint64_t last_modified(const std::string&) override { return 0; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    bool unbounded_;
};

} // namespace test_support
