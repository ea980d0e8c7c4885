#pragma once

#include "objects/database/Clonable.h"
#include "objects/database/PointerNumbers.h"

#include <span>
#include <vector>

namespace kst {

/// All objects that can be reached from those that were added, in the order of discovery: an object, then depth first
/// what it refers to, in the order in which its `collect_references` names it.
class CloneSet {
public:
    /// Adds the object and all that it reaches. Ignores null and what the set already has. Called from within a
    /// `collect_references`, it only notes the object, which is entered as soon as that returns: chains of any length
    /// are walked without recursion, in the order that recursion would give.
    void add(Clonable* object);

    /// In the order of discovery. The set owns none of them.
    std::span<Clonable* const> objects() const { return objects_; }

private:
    void walk();
    void enter_noted();

    PointerNumbers numbers_;
    std::vector<Clonable*> objects_;
    std::vector<Clonable*> noted_;   ///< named by the object that is being asked
    std::vector<Clonable*> waiting_; ///< to be entered, the next one last
    bool walking_ = false;
};

} // namespace kst
