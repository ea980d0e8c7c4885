#pragma once

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "script/binding/MemberFactory.h"

namespace kst::script {

/// A table from member names to factories. Most are a StaticMemberSet<T>, one per class and filled once; a class whose
/// objects have members that only data knows builds tables of its own at run time, with the class's table as `base`.
class MemberSet {
public:
    /// Names that this table does not have are looked up in `base`, which must outlive it.
    explicit MemberSet(const MemberSet* base = nullptr) : base_(base) {}

    /// The name's factory becomes this one, unless the table itself has the name already: then false, and the new
    /// factory is dropped. A name of the base may be taken.
    bool add(idstring id, MemberFactoryPointer factory);
    bool add(std::string_view name, MemberFactoryPointer factory) { return add(intern(name), std::move(factory)); }
    /// Null for an unknown name.
    MemberFactory* find(idstring id) const;

private:
    using Entry = std::pair<idstring, MemberFactoryPointer>;

    const MemberSet* base_;
    std::vector<Entry> entries_; ///< Sorted by name.
};

} // namespace kst::script
