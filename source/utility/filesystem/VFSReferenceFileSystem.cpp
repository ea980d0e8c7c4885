#include "source/utility/filesystem/VFSReferenceFileSystem.h"

#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/normalize_path.h"

namespace kst {

VFSReferenceFileSystem::VFSReferenceFileSystem(VirtualFileSystem& target, const std::string& virtual_path)
    : target_(&target),
      prefix_(normalize_path(virtual_path, /*trailing_separator=*/true, /*keep_leading_separator=*/false)) {}

template <typename Result, typename Call>
Result VFSReferenceFileSystem::forward(Result otherwise, Call call) {
    struct Looking {
        explicit Looking(bool& flag) : flag_(flag) { flag_ = true; }
        Looking(const Looking&) = delete;
        Looking& operator=(const Looking&) = delete;
        ~Looking() { flag_ = false; }
        bool& flag_;
    };
    if (looking_)
        return otherwise;
    const Looking guard(looking_);
    return call();
}

bool VFSReferenceFileSystem::exists(const std::string& path) {
    return forward(false, [&] { return target_->exists(prefix_ + path); });
}

bool VFSReferenceFileSystem::is_dir(const std::string& path) {
    return forward(false, [&] { return target_->is_dir(prefix_ + path); });
}

std::string VFSReferenceFileSystem::locate(const std::string& path, std::int64_t& offset, std::int32_t& size) {
    return forward(path, [&] { return target_->locate(prefix_ + path, offset, size); });
}

std::string VFSReferenceFileSystem::system_path(const std::string& path) {
    return forward(path, [&] { return target_->system_path(prefix_ + path); });
}

std::string VFSReferenceFileSystem::full_path(const std::string& path) {
    return forward(path, [&] { return target_->full_path(prefix_ + path); });
}

Archive VFSReferenceFileSystem::open(const std::string& path, const std::string& mode) {
    return forward(Archive(), [&] { return target_->open(prefix_ + path, mode); });
}

bool VFSReferenceFileSystem::make_dir(const std::string& path) {
    return forward(false, [&] { return target_->make_dir(prefix_ + path); });
}

bool VFSReferenceFileSystem::delete_file(const std::string& path) {
    return forward(false, [&] { return target_->delete_file(prefix_ + path); });
}

void VFSReferenceFileSystem::list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
                                  bool want_directories) {
    forward(0, [&] {
        target_->list(names, prefix_ + path, patterns, want_directories);
        return 0;
    });
}

std::uint64_t VFSReferenceFileSystem::last_modified(const std::string& path) {
    return forward(std::uint64_t{0}, [&] { return target_->last_modified(prefix_ + path); });
}

} // namespace kst
