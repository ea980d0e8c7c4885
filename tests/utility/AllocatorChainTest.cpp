// The chain as an object, against a shadow model: what is live, where, how long, and with which bytes.

#include "source/utility/memory/AllocatorChain.h"
#include "tests/utility/MemoryTestPages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace kst {
namespace {

using test::TestPages;

constexpr ChainRanges small_ranges{.slots = 1 << 20, .heap_16 = 8 << 20, .heap_8 = 8 << 20, .heap_4 = 8 << 20};

std::string report_of(AllocatorChain& chain, bool detailed = false) {
    std::ostringstream text;
    chain.report(text, detailed);
    return text.str();
}

/// The line of the brief report, from its start to "objects": who serves a size.
std::string line_with_one_object(AllocatorChain& chain) {
    std::istringstream lines(report_of(chain));
    for (std::string line; std::getline(lines, line);)
        if (line.find(" 1 objects") != std::string::npos)
            return line.substr(0, line.find(':'));
    return "Malloc allocator";
}

struct RouteCase {
    std::size_t size;
    const char* allocator;
};
class ChainRoute : public testing::TestWithParam<RouteCase> {};

TEST_P(ChainRoute, goes_to_the_first_allocator_that_takes_the_size) {
    TestPages pages;
    AllocatorChain chain(pages, small_ranges);
    void* const block = chain.allocate(GetParam().size);
    EXPECT_EQ(line_with_one_object(chain), GetParam().allocator);
    const std::size_t words = (std::max<std::size_t>(GetParam().size, 1) + 3) / 4 * 4;
    const std::size_t alignment = std::min<std::size_t>(words & -words, 16);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u);
    chain.deallocate(block);
}

INSTANTIATE_TEST_SUITE_P(, ChainRoute,
                         testing::Values(RouteCase{0, "Slot allocator"}, RouteCase{4, "Slot allocator"},
                                         RouteCase{5, "Heap allocator (8)"}, RouteCase{12, "Heap allocator (4)"},
                                         RouteCase{13, "Heap allocator (16)"}, RouteCase{16, "Heap allocator (16)"},
                                         RouteCase{20, "Heap allocator (4)"}, RouteCase{24, "Heap allocator (8)"},
                                         RouteCase{508, "Heap allocator (4)"}, RouteCase{512, "Heap allocator (16)"},
                                         RouteCase{513, "Malloc allocator"}));

TEST(AllocatorChain, aligns_as_it_is_asked) {
    TestPages pages;
    AllocatorChain chain(pages, small_ranges);
    for (std::size_t alignment = 1; alignment <= 4096; alignment *= 2)
        for (const std::size_t size : {0u, 1u, 7u, 20u, 24u, 100u, 511u, 3000u}) {
            void* const block = chain.allocate_aligned(size, alignment);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u) << size;
            std::memset(block, 0xAA, size);
            chain.deallocate(block);
        }
    chain.deallocate(nullptr);
    EXPECT_TRUE(chain.check());
}

TEST(AllocatorChain, passes_requests_on_when_ranges_are_used_up) {
    TestPages pages;
    AllocatorChain chain(pages, {.slots = 4096, .heap_16 = 4096, .heap_8 = 4096, .heap_4 = 4096});
    std::vector<void*> blocks;
    for (const std::size_t size : {4u, 16u, 24u, 20u, 16u, 4u})
        for (int i = 0; i < 1500; ++i) {
            blocks.push_back(chain.allocate(size));
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(blocks.back()) & ((size & -size) - 1), 0u);
            std::memset(blocks.back(), 0x55, size);
        }
    EXPECT_TRUE(chain.check());
    for (void* const block : blocks)
        chain.deallocate(block);
    EXPECT_TRUE(chain.check());
    EXPECT_EQ(report_of(chain), "Slot allocator:      0 B in 0 objects, 4.10KB address space.\n"
                                "Heap allocator (16): 0 B in 0 objects, 4.10KB address space.\n"
                                "Heap allocator (8): 0 B in 0 objects, 4.10KB address space.\n"
                                "Heap allocator (4): 0 B in 0 objects, 4.10KB address space.\n"
                                "Malloc allocator:    0 B\n");
}

TEST(AllocatorChain, works_without_memory_behind_its_ranges) {
    TestPages none(0);
    AllocatorChain chain(none, small_ranges);
    std::vector<void*> blocks;
    for (std::size_t size = 0; size < 600; ++size)
        std::memset(blocks.emplace_back(chain.allocate(size)), 1, size);
    for (void* const block : blocks)
        chain.deallocate(block);
    EXPECT_TRUE(chain.check());
}

TEST(AllocatorChain, takes_no_page_while_kept_blocks_of_other_sizes_can_merge) {
    TestPages pages;
    AllocatorChain chain(pages, {.slots = 4096, .heap_16 = 4096, .heap_8 = 4096, .heap_4 = 4096});
    std::vector<void*> blocks((4096 - 64) / 16);
    for (void*& block : blocks)
        block = chain.allocate(16);
    for (void* const block : blocks)
        chain.deallocate(block);
    for (int i = 0; i < 7; ++i)
        chain.allocate(512);
    EXPECT_NE(report_of(chain).find("Heap allocator (16): 3.58KB in 7 objects"), std::string::npos);
}

TEST(AllocatorChain, refuses_a_second_delete_before_and_after_merging) {
    TestPages pages;
    AllocatorChain chain(pages, small_ranges);
    for (const std::size_t size : {4u, 16u, 20u, 24u}) {
        void* const block = chain.allocate(size);
        chain.allocate(size);
        chain.deallocate(block);
#ifdef NDEBUG
        chain.deallocate(block);
        chain.merge_kept();
        chain.deallocate(block);
        const void* const again = chain.allocate(size);
        EXPECT_NE(chain.allocate(size), again) << "never twice";
#else
        char address[32];
        std::snprintf(address, sizeof address, "Bad pointer %p", block);
        EXPECT_DEATH(chain.deallocate(block), address);
        chain.merge_kept();
        EXPECT_DEATH(chain.deallocate(block), address);
#endif
    }
    EXPECT_TRUE(chain.check());
}

#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t operations = 300'000;
#else
constexpr std::size_t operations = 10'000'000;
#endif

/// One live block of the model. Its bytes are filled with `mark`; the ends are looked at when it goes.
struct LiveBlock {
    unsigned char* start;
    std::size_t size;
    unsigned char mark;
};

class Shadow {
public:
    Shadow(AllocatorChain& chain, unsigned seed) : chain_(chain), random_(seed) {}

    /// Grows and shrinks in waves, so that pages fill, empty and merge.
    void run(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const bool growing = (i >> 14) % 2 == 0;
            const bool add = live_.empty() || random_() % 16 < (growing ? 11u : 5u);
            add ? allocate() : deallocate(random_() % live_.size());
        }
    }

    void expect_consistent() {
        EXPECT_TRUE(chain_.check());
        std::sort(live_.begin(), live_.end(), [](const auto& a, const auto& b) { return a.start < b.start; });
        for (std::size_t i = 1; i < live_.size(); ++i)
            ASSERT_LE(live_[i - 1].start + live_[i - 1].size, live_[i].start) << "blocks overlap";
    }

    void clear() {
        while (!live_.empty())
            deallocate(live_.size() - 1);
    }

    std::size_t count_of_slots() const {
        return static_cast<std::size_t>(
            std::count_if(live_.begin(), live_.end(), [](const auto& block) { return block.size <= 4; }));
    }

private:
    void allocate() {
        // A few sizes often, all sizes at times, as in programs.
        constexpr std::size_t usual[] = {1, 4, 8, 12, 16, 20, 24, 32, 48, 64, 96, 500};
        const std::size_t size = random_() % 4 != 0 ? usual[random_() % std::size(usual)] : random_() % 560;
        auto* const start = static_cast<unsigned char*>(chain_.allocate(size));
        const auto mark = static_cast<unsigned char>(random_());
        std::memset(start, mark, size);
        live_.push_back({start, size, mark});
    }

    void deallocate(std::size_t index) {
        const LiveBlock block = live_[index];
        if (block.size != 0) {
            ASSERT_EQ(block.start[0], block.mark);
            ASSERT_EQ(block.start[block.size - 1], block.mark);
            ASSERT_EQ(block.start[block.size / 2], block.mark);
        }
        live_[index] = live_.back();
        live_.pop_back();
        chain_.deallocate(block.start);
    }

    AllocatorChain& chain_;
    std::mt19937 random_;
    std::vector<LiveBlock> live_;
};

TEST(AllocatorChain, agrees_with_a_shadow_model) {
    TestPages pages;
    AllocatorChain chain(pages, small_ranges);
    Shadow shadow(chain, 1);
    for (int round = 0; round < 100; ++round) {
        shadow.run(operations / 100);
        shadow.expect_consistent();
        const std::string slots = " in " + std::to_string(shadow.count_of_slots()) + " objects";
        ASSERT_NE(report_of(chain).substr(0, 60).find(slots), std::string::npos);
    }
    shadow.clear();
    EXPECT_TRUE(chain.check());
    EXPECT_NE(report_of(chain).find("Heap allocator (4): 0 B in 0 objects"), std::string::npos);
}

TEST(AllocatorChain, heaps_alone_agree_with_a_shadow_model) {
    for (const std::size_t granularity : {4u, 8u, 16u}) {
        TestPages pages;
        SmallHeapAllocator heap(pages, 512, granularity, 4 << 20);
        std::mt19937 random(2);
        std::map<std::byte*, std::size_t> live;
        std::size_t used = 0;
        for (std::size_t i = 0; i < operations / 50; ++i) {
            if (live.empty() || random() % 16 < ((i >> 12) % 2 == 0 ? 10u : 6u)) {
                const std::size_t size = (random() % (512 / granularity) + 1) * granularity;
                auto* const block = static_cast<std::byte*>(heap.allocate(size));
                if (!block)
                    continue;
                const auto next = live.lower_bound(block);
                ASSERT_TRUE(next == live.end() || block + heap.live_size(block) <= next->first);
                ASSERT_TRUE(next == live.begin() || std::prev(next)->first + std::prev(next)->second <= block);
                live.emplace(block, heap.live_size(block));
                used += heap.live_size(block);
            } else {
                const auto at = std::next(
                    live.begin(), static_cast<std::ptrdiff_t>(random() % std::min<std::size_t>(live.size(), 64)));
                used -= at->second;
                heap.deallocate(at->first);
                live.erase(at);
            }
            if (i % 4096 == 0) {
                ASSERT_TRUE(heap.check());
            }
        }
        EXPECT_EQ(heap.used(), used);
        for (const auto& [block, size] : live)
            heap.deallocate(block);
        EXPECT_TRUE(heap.check());
        EXPECT_EQ(heap.used(), 0u);
    }
}

TEST(AllocatorChain, serves_several_threads) {
    TestPages pages;
    AllocatorChain chain(pages, small_ranges);
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 3; ++seed)
        threads.emplace_back([&chain, seed] {
            Shadow shadow(chain, seed);
            shadow.run(operations / 50);
            shadow.clear();
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_TRUE(chain.check());
    EXPECT_NE(report_of(chain).find("Slot allocator:      0 B in 0 objects"), std::string::npos);
}

} // namespace
} // namespace kst
