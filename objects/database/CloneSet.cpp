#include "objects/database/CloneSet.h"

namespace kst {

void CloneSet::add(Clonable* object) {
    if (object == nullptr || numbers_.find(object) != PointerNumbers::none)
        return;
    noted_.push_back(object);
    if (walking_)
        return;
    try {
        walk();
    } catch (...) {
        walking_ = false;
        noted_.clear();
        waiting_.clear();
        throw;
    }
}

void CloneSet::walk() {
    walking_ = true;
    enter_noted();
    while (!waiting_.empty()) {
        Clonable* const object = waiting_.back();
        waiting_.pop_back();
        if (!numbers_.add(object).second)
            continue; // noted twice before its turn came
        objects_.push_back(object);
        object->collect_references(*this);
        enter_noted();
    }
    walking_ = false;
}

void CloneSet::enter_noted() {
    waiting_.insert(waiting_.end(), noted_.rbegin(), noted_.rend());
    noted_.clear();
}

} // namespace kst
