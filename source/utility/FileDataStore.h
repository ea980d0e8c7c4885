#pragma once

#include "source/utility/DataStore.h"
#include "source/utility/platform/File.h"

#include <string>

namespace kst {

/// What the stores on a file of the host share.
class FileDataStoreBase : public DataStore {
public:
    /// The file is open.
    virtual bool is_valid() const = 0;
    /// Bytes in the file.
    virtual std::int64_t size() const = 0;
};

/// Who else may open the file meanwhile. Kept for hosts that enforce it; POSIX has no such locks.
enum class ShareMode { none, read };

/// A file of the host without a buffer of its own: each read and write is one positioned system call, so a client that
/// wants single bytes had better read in blocks.
class FileDataStore : public FileDataStoreBase {
public:
    /// `path` is a host path, case kept, with either slash. A file that is not there leaves the store invalid; what the
    /// host refuses for another reason throws DiskError "Cannot open PATH".
    FileDataStore(const std::string& path, platform::Disposition disposition, platform::Access access,
                  ShareMode share_mode);

    bool is_valid() const override { return file_.is_open(); }
    std::int64_t size() const override;
    /// Fewer bytes than asked for only at the end of the file. Throws DiskError "Cannot read from file PATH".
    std::size_t read(std::int64_t offset, void* data, std::size_t count) override;
    /// Writes all or throws DiskError "Cannot write to file PATH". Nothing to write is no error.
    std::size_t write(std::int64_t offset, const void* data, std::size_t count) override;

private:
    platform::File file_;
    std::string name_;
};

} // namespace kst
