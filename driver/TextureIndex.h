#pragma once

#include "driver/records/SourceTexture.h"
#include "source/utility/platform/PathInfo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace mosaicer {

struct DirectoryEntry;

/// What a walk over the roots passed over or chose between.
enum class IndexFault {
    unreadable,      ///< left out: its header cannot be read; `text` says why
    collision,       ///< of two files of one name in different directories, `path` is left out for `other`
    twin,            ///< of two files of one name in one directory, neither a ".dds", `path` is left out for `other`
    extension_case,  ///< left out: its extension is that of a texture but for its case
    directory_circle ///< a directory that leads back to one above it, not walked
};

struct IndexFinding {
    IndexFault fault;
    std::string path;
    std::string other; ///< the file that stands in the index in its place, or empty
    std::string text;
};

/// What a walk over the roots has looked at, for those who must know when another walk would find something else, and
/// for those who tell what it made of it.
struct IndexWalk {
    std::int32_t number = 0;              ///< counts the walks of one index; 0: none yet
    std::vector<std::string> roots;       ///< in the order walked
    std::vector<std::string> directories; ///< all that were listed
    std::vector<std::string> files;       ///< all with a texture's extension, also those that got no record
    std::vector<IndexFinding> findings;
};

/// All source textures below up to ten root directories, by lower-case base name. Built when a first set needs it.
///
/// The name is global over all roots and directories. Of files with the same name the last ".dds" of the walk wins over
/// everything, and without one the first file found stays. The walk reads headers only. It runs over the slots in their
/// order, through each directory depth first, names in ascending byte order, so that a tree gives the same index on
/// every file system.
class TextureIndex {
public:
    static constexpr std::size_t slot_count = 10;
    using Roots = std::array<std::string, slot_count>;
    using Records = std::map<std::string, std::unique_ptr<SourceTexture>>;

    /// Makes the record of a file from its key and path. Throws std::runtime_error where that can't be done.
    using MakeTexture = std::function<SourceTexture(std::string, std::string)>;

    /// `textures_root` becomes slot 0 and the base root. Touches no disk.
    explicit TextureIndex(std::string textures_root);
    TextureIndex(std::string textures_root, MakeTexture make_texture);

    /// The slot takes `path`. If that differs from its text, all records are dropped and the next ensure_built walks
    /// anew.
    void set_root(std::size_t slot, std::string path);

    /// The slots can be copied out and put back; putting them back neither drops records nor makes a walk necessary.
    const Roots& roots() const { return roots_; }
    void restore_roots(const Roots& roots) { roots_ = roots; }
    const std::string& base_root() const { return base_root_; }

    /// The texts of the slots in use, in slot order, each once.
    std::vector<std::string> unique_roots() const;

    /// Walks the roots if that has not been done. A file that can't be read is told on Report.warnings and left out.
    void ensure_built();

    /// Null if there is no such texture. `key` is in lower case. Records live until a root changes.
    SourceTexture* find(const std::string& key) const;

    /// In ascending order of key.
    const Records& records() const { return records_; }

    /// The walk that the records come from. Putting roots back does not change it.
    const IndexWalk& walk() const { return walk_; }

private:
    void file_texture(const DirectoryEntry& file);
    void walk_directory(const std::string& directory, std::vector<kst::platform::FileIdentity>& above);

    MakeTexture make_texture_;
    Roots roots_;
    Records records_;
    IndexWalk walk_;
    bool built_ = false;
    std::string base_root_;
};

} // namespace mosaicer
