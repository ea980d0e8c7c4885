#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kst {

/// Objects by address, each with a running number in the order of their first appearance: 0, 1, 2 and so on.
///
/// A flat table of hashed addresses. They decide only where an object is looked up; whoever walks the objects goes by
/// their numbers, so that no result hangs on where the allocator put something.
class PointerNumbers {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    std::uint32_t size() const { return count_; }

    /// Makes room for so many objects in all.
    void reserve(std::size_t count) {
        if (slots_.size() < 2 * count)
            rehash(static_cast<int>(std::countl_zero(std::max<std::size_t>(2 * count - 1, 15))));
    }

    /// The object's number, and whether it is new. Not for null.
    std::pair<std::uint32_t, bool> add(const void* object) {
        reserve(std::size_t{count_} + 1);
        Slot& slot = slots_[place_of(object)];
        if (slot.object != nullptr)
            return {slot.number, false};
        slot = {object, count_};
        return {count_++, true};
    }

    /// `none` for an object that was not added.
    std::uint32_t find(const void* object) const {
        if (slots_.empty())
            return none;
        const Slot& slot = slots_[place_of(object)];
        return slot.object != nullptr ? slot.number : none;
    }

private:
    struct Slot {
        const void* object = nullptr;
        std::uint32_t number = 0;
    };

    /// The slot that holds the object, or the free one where it would go. At least half of all slots are free.
    std::size_t place_of(const void* object) const {
        // Multiplied by 2^64 over the golden ratio, whose upper bits depend on all bits of the address.
        const std::uint64_t hash = reinterpret_cast<std::uintptr_t>(object) * 0x9E3779B97F4A7C15u;
        std::size_t place = hash >> shift_;
        while (slots_[place].object != nullptr && slots_[place].object != object)
            place = (place + 1) & (slots_.size() - 1);
        return place;
    }

    /// To 2^(64 - shift) slots.
    void rehash(int shift) {
        const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(std::size_t{1} << (64 - shift)));
        shift_ = shift;
        for (const Slot& slot : old)
            if (slot.object != nullptr)
                slots_[place_of(slot.object)] = slot;
    }

    std::vector<Slot> slots_; ///< a power of two of them
    int shift_ = 64;          ///< 64 less the power
    std::uint32_t count_ = 0;
};

} // namespace kst
