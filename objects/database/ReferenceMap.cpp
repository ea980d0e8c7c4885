#include "objects/database/ReferenceMap.h"

#include "source/utility/Errors.h"

#include <utility>

namespace kst {

std::uint32_t ReferenceMap::reference_of(const PersistentObject* object, bool allow_new) {
    if (object == nullptr)
        return 0;
    const std::uint32_t place = allow_new ? written_.add(object).first : written_.find(object);
    if (place == PointerNumbers::none)
        throw UnkownReferenceError("Unkown reference target!");
    return place + 1;
}

ReferenceMap::Entry& ReferenceMap::entry_of(std::uint32_t number) {
    return number < dense_.size() ? dense_[number] : sparse_[number];
}

void ReferenceMap::register_ref(std::uint32_t number, PersistentObject* object) {
    Entry& entry = entry_of(number);
    if (entry.object == object)
        return;
    if (entry.object != nullptr)
        throw ErrorWithCStack("ReferenceMap::register_ref() a reference is already registered with a different object");
    entry.object = object;
    for (const auto& patcher : std::exchange(entry.pending, {}))
        patcher->patch(object);
}

void ReferenceMap::request_ref(std::uint32_t number, std::unique_ptr<ReferencePatcher> patcher) {
    Entry& entry = entry_of(number);
    if (entry.object != nullptr)
        patcher->patch(entry.object);
    else
        entry.pending.push_back(std::move(patcher));
}

PersistentObject* ReferenceMap::find(std::uint32_t number) const {
    if (number < dense_.size())
        return dense_[number].object;
    const auto found = sparse_.find(number);
    return found != sparse_.end() ? found->second.object : nullptr;
}

std::size_t ReferenceMap::check_unresolved() {
    std::size_t unresolved = 0;
    const auto drop = [&](Entry& entry) { unresolved += std::exchange(entry.pending, {}).size(); };
    for (Entry& entry : dense_)
        drop(entry);
    for (auto& [number, entry] : sparse_)
        drop(entry);
    return unresolved;
}

} // namespace kst
