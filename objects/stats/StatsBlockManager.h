#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "objects/stats/StatsBlock.h"
#include "source/utility/platform/PathInfo.h"

namespace kst {

class VirtualFileSystem;
class XMLNode;

/// The prototypes of all stats blocks that a directory tree defines, in files "sb_*.xml":
///
///     <stats>
///       <block name="Orc">
///         <var name="health" type="number" default="100"/>
///         <var name="tags" type="list"/>
///       </block>
///     </stats>
///
/// Files are read in the order of their names, a directory's before those of its subdirectories; the first definition
/// of a name stands. A directory that is met again under a link is read once. What is wrong with a file or a block is no
/// failure: it is left out, and told by `faults`.
class StatsBlockManager {
public:
    /// An empty one, for `read_definitions`. Makes itself the process's manager.
    StatsBlockManager();
    /// Scans the directory of the process's file name space. Throws DiskError where the host refuses to list.
    explicit StatsBlockManager(const std::string& directory);
    StatsBlockManager(const StatsBlockManager&) = delete;
    StatsBlockManager& operator=(const StatsBlockManager&) = delete;
    ~StatsBlockManager();

    /// The one that was made last, unless it is gone; else null.
    static StatsBlockManager* instance();

    /// The definitions among the children of a file's root. `file` is for the faults.
    void read_definitions(const XMLNode& root, const std::string& file);

    struct Prototype {
        StatsBlock block;
        std::string file; ///< that defines it
    };
    /// Null for an unknown name.
    const Prototype* find(std::string_view name) const;
    /// The block of that name; for an unknown name the empty block, which has no variables.
    const StatsBlock& prototype(std::string_view name) const;
    /// In ascending order of their names.
    std::vector<const Prototype*> prototypes() const;

    /// What was left out, a line each: the file and what is wrong.
    const std::vector<std::string>& faults() const { return faults_; }

private:
    void scan(VirtualFileSystem& files, const std::string& directory, int depth);
    void read_file(const std::string& path);
    void read_block(const XMLNode& node, const std::string& file);

    std::map<idstring, Prototype> prototypes_;
    StatsBlock empty_block_;
    std::vector<std::string> faults_;
    std::vector<platform::FileIdentity> scanned_; ///< sorted
};

} // namespace kst
