#include "objects/database/CloneManager.h"

#include "source/utility/Errors.h"

#include <utility>

namespace kst {

Clonable* CloneMapping::lookup(Clonable* object) const {
    if (object == nullptr)
        return nullptr;
    const std::uint32_t number = numbers_.find(object);
    if (number == PointerNumbers::none)
        throw ErrorWithCStack("[Kestra:CloneMapping] Reference patching failed.");
    return records_[number].copy;
}

void CloneMapping::add(Clonable* source) {
    std::unique_ptr<Clonable> copy = source->clone();
    if (copy && !copy->is_a(source->type_id()))
        throw ErrorWithCStack(
            "[Kestra:CloneManager]Trying to clone a object which does not have cloning mechanism implemented");
    Clonable* const target = copy ? copy.get() : source;
    numbers_.add(source);
    records_.push_back({.source = source, .copy = target, .owner = std::move(copy)});
}

CloneMapping::Record& CloneMapping::record_of(Clonable* source) {
    return records_[numbers_.find(source)];
}

std::uint32_t CloneManager::clone(std::span<Clonable* const> objects) {
    CloneSet set;
    for (Clonable* const object : objects)
        set.add(object);
    CloneMapping mapping;
    mapping.records_.reserve(set.objects().size());
    for (Clonable* const object : set.objects())
        mapping.add(object);

    while (groups_.contains(next_group_))
        ++next_group_;
    const std::uint32_t id = next_group_++;
    Group group;
    group.reserve(mapping.records_.size());
    const auto finish = [&](CloneMapping::Record& record) {
        if (std::exchange(record.patched, true))
            return;
        if (!record.is_shared())
            record.copy->patch_references(mapping);
        group.push_back({.object = record.copy, .owner = std::move(record.owner)});
    };
    for (Clonable* const object : objects)
        if (object != nullptr)
            finish(mapping.record_of(object));
    for (CloneMapping::Record& record : mapping.records_)
        finish(record);

    for (const CloneMapping::Record& record : mapping.records_)
        if (!record.is_shared())
            record.copy->clone_finished();
    groups_.emplace(id, std::move(group));
    return id;
}

void CloneManager::release(std::uint32_t group) {
    // Out of the map first: a destructor may ask the manager for something else.
    auto node = groups_.extract(group);
    if (!node)
        return;
    for (Member& member : node.mapped())
        member.owner.reset();
}

void CloneManager::clear() {
    while (!groups_.empty())
        release(groups_.begin()->first);
}

std::span<const CloneManager::Member> CloneManager::group(std::uint32_t group) const {
    const auto found = groups_.find(group);
    return found != groups_.end() ? std::span<const Member>(found->second) : std::span<const Member>();
}

} // namespace kst
