#include "source/utility/StoreReferences.h"

#include "source/utility/platform/CriticalSection.h"

#include <cassert>
#include <cstddef>
#include <vector>

namespace kst::store_references {

namespace {

constinit platform::CriticalSection lock;
constexpr std::int32_t end_of_list = -1;
/// First entry of the free list. The list runs through the free entries themselves, each holding the next one's number.
constinit std::int32_t first_free = end_of_list;

/// Never destroyed: an archive in a static object may outlive any static table.
std::vector<std::int32_t>& entries() {
    static auto& table = *new std::vector<std::int32_t>;
    return table;
}

std::int32_t& entry(std::int32_t slot) {
    assert(slot >= 0 && static_cast<std::size_t>(slot) < entries().size());
    return entries()[static_cast<std::size_t>(slot)];
}

} // namespace

std::int32_t take() {
    const std::lock_guard guard(lock);
    if (first_free == end_of_list) {
        entries().push_back(1);
        return static_cast<std::int32_t>(entries().size() - 1);
    }
    const std::int32_t slot = first_free;
    first_free = entry(slot);
    entry(slot) = 1;
    return slot;
}

void add(std::int32_t slot) {
    const std::lock_guard guard(lock);
    ++entry(slot);
}

bool release(std::int32_t slot) {
    const std::lock_guard guard(lock);
    assert(entry(slot) > 0);
    if (--entry(slot) > 0)
        return false;
    entry(slot) = first_free;
    first_free = slot;
    return true;
}

} // namespace kst::store_references
