#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "script/binding/MemberFactory.h"
#include "script/value/MemberCache.h"
#include "script/value/names.h"

namespace kst::script {

/// A table from member names to factories. Most are a StaticMemberSet<T>, one per class and filled once; a class whose
/// objects have members that only data knows builds tables of its own at run time, with the class's table as `base`.
class MemberSet {
public:
    /// Names that this table does not have are looked up in `base`, which must outlive it.
    explicit MemberSet(const MemberSet* base = nullptr) : base_(base) { ++changes; }
    MemberSet(const MemberSet&) = delete;
    MemberSet& operator=(const MemberSet&) = delete;

    /// The name's factory becomes this one, unless the table itself has the name already: then false, and the new
    /// factory is dropped. A name of the base may be taken.
    bool add(idstring id, MemberFactoryPointer factory);
    bool add(std::string_view name, MemberFactoryPointer factory) { return add(intern(name), std::move(factory)); }
    /// Null for an unknown name.
    MemberFactory* find(idstring id) const;
    /// The same, for a place that always looks for this name. Null for universal members.
    MemberFactory* find(idstring id, MemberCache& cache) const {
        if (cache.table != this || cache.version != changes)
            cache = {this, is_universal_member(id) ? nullptr : find(id), changes};
        return static_cast<MemberFactory*>(cache.found);
    }

private:
    /// Counts what may make a cache wrong: a new table, maybe where an old one was, and a new name in any.
    static inline std::uint64_t changes = 0;

    using Entry = std::pair<idstring, MemberFactoryPointer>;

    const MemberSet* base_;
    std::vector<Entry> entries_; ///< Sorted by name.
};

} // namespace kst::script
