#include "source/utility/filesystem/VirtualFileSystem.h"

#include "source/utility/Errors.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VFSReferenceFileSystem.h"
#include "source/utility/filesystem/normalize_path.h"
#include "source/utility/platform/Directory.h"

#include <algorithm>
#include <ios>
#include <memory>
#include <set>

namespace kst {

namespace {

VirtualFileSystem* the_instance = nullptr;
std::int32_t next_mount_id = 1;

void require(bool condition, const char* expression, int line) {
    if (!condition)
        throw AssertionException(expression, "source/utility/filesystem/VirtualFileSystem", line);
}

VirtualFileSystem& process_file_system() {
    require(the_instance != nullptr, "VirtualFileSystem::instance()", __LINE__);
    return *the_instance;
}

std::string directory_of(const std::string& normalized) {
    const auto separator = normalized.rfind('\\');
    return separator == std::string::npos ? std::string() : normalized.substr(0, separator);
}

/// Which of the two a path with a leading separator means, see VirtualFileSystem. Writing must never fall back to a
/// file below the current directory that merely has the same name.
bool means_host_root(FileSystem& host, FileSystem& current_directory, const std::string& path, bool writing) {
    if (writing)
        return host.is_dir(directory_of(path));
    return host.exists(path) || !current_directory.exists(path);
}

} // namespace

VirtualFileSystem::VirtualFileSystem() {
    require(the_instance == nullptr, "!VirtualFileSystem::instance()", __LINE__);
    the_instance = this;
}

VirtualFileSystem::~VirtualFileSystem() {
    while (!mounts_.empty())
        unmount(mounts_.back().id);
    the_instance = nullptr;
}

VirtualFileSystem* VirtualFileSystem::instance() {
    return the_instance;
}

std::int32_t VirtualFileSystem::mount(const std::string& path, FileSystem* file_system, bool owned) {
    const std::int32_t id = next_mount_id++;
    mounts_.push_back({.path = normalize_path(path, /*trailing_separator=*/true, /*keep_leading_separator=*/false),
                       .file_system = file_system,
                       .owned = owned,
                       .id = id});
    return id;
}

std::int32_t VirtualFileSystem::mount_directory(const std::string& path, const std::string& host_directory) {
    return mount(path, std::make_unique<DiskFileSystem>(host_directory).release(), /*owned=*/true);
}

std::int32_t VirtualFileSystem::mount_reference(const std::string& path, const std::string& virtual_path) {
    return mount(path, std::make_unique<VFSReferenceFileSystem>(*this, virtual_path).release(), /*owned=*/true);
}

void VirtualFileSystem::unmount(std::int32_t id) {
    const auto found = std::find_if(mounts_.begin(), mounts_.end(), [id](const MountPoint& m) { return m.id == id; });
    if (found == mounts_.end())
        return;
    const std::unique_ptr<FileSystem> destroyed(found->owned ? found->file_system : nullptr);
    mounts_.erase(found);
}

std::vector<VirtualFileSystem::Candidate> VirtualFileSystem::resolve(const std::string& path, Purpose purpose) const {
    const std::string normalized = normalize_path(path, /*trailing_separator=*/false, /*keep_leading_separator=*/false);
    const bool absolute = has_leading_separator(path) && !normalized.empty();
    std::vector<Candidate> candidates;
    for (auto mount = mounts_.rbegin(); mount != mounts_.rend(); ++mount) {
        const bool is_mount_point = mount->path == normalized + "\\";
        if (!is_mount_point && !normalized.starts_with(mount->path))
            continue;
        Candidate candidate{mount->file_system, is_mount_point ? std::string() : normalized.substr(mount->path.size())};
        FileSystem* const host = absolute && mount->path.empty() ? candidate.file_system->from_host_root() : nullptr;
        if (host && means_host_root(*host, *candidate.file_system, candidate.path, purpose == Purpose::writing))
            candidate.file_system = host;
        candidates.push_back(std::move(candidate));
    }
    return candidates;
}

/// The first that has the path; a null file system if none has it or an earlier one masks it.
VirtualFileSystem::Candidate VirtualFileSystem::find(const std::string& path) const {
    for (Candidate& candidate : resolve(path, Purpose::reading)) {
        if (candidate.file_system->exists(candidate.path))
            return std::move(candidate);
        if (candidate.file_system->masks(candidate.path))
            break;
    }
    return {};
}

VirtualFileSystem::Candidate VirtualFileSystem::find_writable(const std::string& path) const {
    for (Candidate& candidate : resolve(path, Purpose::writing))
        if (!candidate.file_system->is_read_only())
            return std::move(candidate);
    return {};
}

bool VirtualFileSystem::exists(const std::string& path) {
    return find(path).file_system != nullptr;
}

bool VirtualFileSystem::is_dir(const std::string& path) {
    const Candidate found = find(path);
    return found.file_system && found.file_system->is_dir(found.path);
}

std::uint64_t VirtualFileSystem::last_modified(const std::string& path) {
    const Candidate found = find(path);
    return found.file_system ? found.file_system->last_modified(found.path) : 0;
}

std::string VirtualFileSystem::locate(const std::string& path, std::int64_t& offset, std::int32_t& size) {
    const Candidate found = find(path);
    return found.file_system ? found.file_system->locate(found.path, offset, size) : path;
}

std::string VirtualFileSystem::system_path(const std::string& path) {
    const Candidate found = find(path);
    return found.file_system ? found.file_system->system_path(found.path) : path;
}

std::string VirtualFileSystem::full_path(const std::string& path) {
    const Candidate found = find(path);
    return found.file_system ? found.file_system->full_path(found.path) : path;
}

Archive VirtualFileSystem::open(const std::string& path, const std::string& mode) {
    if (tracing_ && bundles_enabled_)
        trace_open(path, mode);
    const bool reading = mode.find('r') != std::string::npos && mode.find('+') == std::string::npos;
    const Candidate found = reading ? find(path) : find_writable(path);
    return found.file_system ? found.file_system->open(found.path, mode) : Archive();
}

bool VirtualFileSystem::make_dir(const std::string& path) {
    const Candidate found = find_writable(path);
    return found.file_system && found.file_system->make_dir(found.path);
}

bool VirtualFileSystem::delete_file(const std::string& path) {
    const Candidate found = find_writable(path);
    return found.file_system && found.file_system->delete_file(found.path);
}

void VirtualFileSystem::list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
                             bool want_directories) {
    std::vector<std::string> listed;
    for (const Candidate& candidate : resolve(path, Purpose::reading))
        candidate.file_system->list(listed, candidate.path, patterns, want_directories);
    std::set<std::string> seen;
    for (std::string& name : listed)
        if (seen.insert(normalize_path(name, /*trailing_separator=*/false, /*keep_leading_separator=*/false)).second)
            names.push_back(std::move(name));
}

void VirtualFileSystem::set_tracing(bool tracing) {
    tracing_ = tracing;
    reopen_trace();
}

void VirtualFileSystem::set_script(const std::string& path) {
    script_name_ = file_name_of(path);
    reopen_trace();
}

void VirtualFileSystem::reopen_trace() {
    trace_stream_.close();
    trace_stream_.clear();
    if (!tracing_)
        return;
    const std::string directory = system_path("/") + "bundles";
    platform::make_directory(directory);
    // A stream takes its buffer before it opens.
    trace_stream_.rdbuf()->pubsetbuf(trace_buffer_.data(), static_cast<std::streamsize>(trace_buffer_.size()));
    trace_stream_.open(directory + "/" + script_name_ + ".xml", std::ios::app | std::ios::binary);
}

void VirtualFileSystem::trace_open(const std::string& path, const std::string& mode) {
    trace_stream_ << "   <open path=\""
                  << normalize_path(path, /*trailing_separator=*/false, /*keep_leading_separator=*/false)
                  << "\" flags=\"" << mode << "\" />" << std::endl;
}

bool exists(const std::string& path) {
    return process_file_system().exists(path);
}

bool is_dir(const std::string& path) {
    return process_file_system().is_dir(path);
}

std::uint64_t last_modified(const std::string& path) {
    return process_file_system().last_modified(path);
}

Archive open(const std::string& path, const std::string& mode) {
    return process_file_system().open(path, mode);
}

std::string full_path(const std::string& path) {
    return process_file_system().full_path(path);
}

std::string system_path(const std::string& path) {
    return process_file_system().system_path(path);
}

} // namespace kst
