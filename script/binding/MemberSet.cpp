#include "script/binding/MemberSet.h"

#include <algorithm>

namespace kst::script {

bool MemberSet::add(idstring id, MemberFactoryPointer factory) {
    const auto place = std::ranges::lower_bound(entries_, id, {}, &Entry::first);
    if (place != entries_.end() && place->first == id)
        return false;
    ++changes;
    entries_.emplace(place, id, std::move(factory));
    return true;
}

MemberFactory* MemberSet::find(idstring id) const {
    for (const MemberSet* set = this; set != nullptr; set = set->base_) {
        const auto place = std::ranges::lower_bound(set->entries_, id, {}, &Entry::first);
        if (place != set->entries_.end() && place->first == id)
            return place->second.get();
    }
    return nullptr;
}

} // namespace kst::script
