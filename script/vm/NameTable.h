#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "source/utility/xml/idstring.h"

namespace kst::script {

/// From names to numbers. Sorted at the first look-up after an addition; of two entries of one name the first counts.
class NameTable {
public:
    static constexpr std::uint32_t not_found = 0xffffffff;

    void add(idstring name, std::uint32_t number) {
        entries_.emplace_back(name, number);
        sorted_ = false;
    }

    std::uint32_t find(idstring name) {
        if (!sorted_) {
            std::ranges::stable_sort(entries_, {}, &Entry::first);
            sorted_ = true;
        }
        const auto found = std::ranges::lower_bound(entries_, name, {}, &Entry::first);
        return found != entries_.end() && found->first == name ? found->second : not_found;
    }

private:
    using Entry = std::pair<idstring, std::uint32_t>;

    std::vector<Entry> entries_;
    bool sorted_ = true;
};

} // namespace kst::script
