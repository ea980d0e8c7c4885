#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kst::script {

/// Records that are addressed by a 32-bit index and counted. Counts stand in an array of their own; in a free entry the
/// count is negative and chains to the next free one:
///
///   counts   2  -1  1  -3      entry 3 is free and leads to entry 1, which is free and ends the chain
///
/// A record stays at its address as long as it lives. A freed record is not destroyed: whoever frees it empties it,
/// and may leave capacity behind for the next user.
template <typename Record>
class IndexPool {
public:
    /// A free record with a count of 1, as its last user left it.
    std::uint32_t take() {
        ++live_;
        if (free_ != no_entry) {
            const std::uint32_t index = free_;
            free_ = link_of(counts_[index]);
            counts_[index] = 1;
            return index;
        }
        const auto index = static_cast<std::uint32_t>(counts_.size());
        if (index % chunk_size == 0)
            chunks_.push_back(std::make_unique<Chunk>());
        counts_.push_back(1);
        return index;
    }

    void add_ref(std::uint32_t index) {
        assert(is_live(index));
        ++counts_[index];
    }

    /// One reference less; gives how many are left. At 0 the record is still taken, and the caller empties it and
    /// calls `give_back`.
    std::int32_t drop_ref(std::uint32_t index) {
        assert(is_live(index));
        return --counts_[index];
    }

    void give_back(std::uint32_t index) {
        --live_;
        counts_[index] = free_ == no_entry ? -1 : -static_cast<std::int32_t>(free_) - 2;
        free_ = index;
    }

    Record& operator[](std::uint32_t index) {
        assert(index < counts_.size());
        return (*chunks_[index / chunk_size])[index % chunk_size];
    }

    std::int32_t count(std::uint32_t index) const { return counts_[index]; }
    bool is_live(std::uint32_t index) const { return index < counts_.size() && counts_[index] > 0; }
    /// How many entries are taken.
    std::size_t live() const { return live_; }
    /// One above the highest index ever taken.
    std::uint32_t extent() const { return static_cast<std::uint32_t>(counts_.size()); }

private:
    static constexpr std::uint32_t chunk_size = 256;
    static constexpr std::uint32_t no_entry = 0xffffffff;
    using Chunk = std::array<Record, chunk_size>;

    static std::uint32_t link_of(std::int32_t count) {
        return count == -1 ? no_entry : static_cast<std::uint32_t>(-(count + 2));
    }

    std::vector<std::int32_t> counts_;
    std::vector<std::unique_ptr<Chunk>> chunks_;
    std::uint32_t free_ = no_entry;
    std::size_t live_ = 0;
};

} // namespace kst::script
