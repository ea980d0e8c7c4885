#include "source/utility/Errors.h"
#include "source/utility/memory/FormatBytes.h"
#include "source/utility/memory/MallocAllocator.h"
#include "source/utility/memory/SlotAllocator.h"
#include "source/utility/memory/SmallHeapAllocator.h"
#include "tests/utility/MemoryTestPages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace kst {
namespace {

using test::TestPages;

std::string report_of(const Allocator& allocator, bool detailed) {
    std::ostringstream text;
    allocator.report(text, detailed);
    return text.str();
}

std::size_t offset_in_page(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer) % 4096;
}

/// A bad pointer stops a debug build with its address, and leaves a release build as it was.
template <class Allocator>
void expect_refused(Allocator& allocator, void* pointer) {
    char address[32];
    std::snprintf(address, sizeof address, "%p", pointer);
#ifdef NDEBUG
    const std::string before = report_of(allocator, true);
    allocator.deallocate(pointer);
    EXPECT_EQ(report_of(allocator, true), before) << address;
#else
    EXPECT_DEATH(allocator.deallocate(pointer), std::string("Bad pointer ") + address);
#endif
}

struct ByteCase {
    std::int64_t value;
    const char* text;
};
class FormattedBytes : public testing::TestWithParam<ByteCase> {};

TEST_P(FormattedBytes, takes_the_largest_unit_that_fits) {
    EXPECT_EQ(format_bytes(GetParam().value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(, FormattedBytes,
                         testing::Values(ByteCase{0, "0 B"}, ByteCase{999, "999 B"}, ByteCase{1000, "1.00KB"},
                                         ByteCase{9'990, "9.99KB"}, ByteCase{10'000, "10.0KB"},
                                         ByteCase{99'900, "99.9KB"}, ByteCase{100'000, "100KB"},
                                         ByteCase{999'999, "1000KB"}, ByteCase{67'108'864, "67.1MB"},
                                         ByteCase{268'435'456, "268MB"}, ByteCase{4'294'967'296, "4.29GB"},
                                         ByteCase{-5, "-5 B"}));

TEST(FormatBytes, stays_below_the_largest_unit_and_above_the_least_value) {
    EXPECT_EQ(format_bytes(5'000'000, 1, 1'000), "5000KB");
    EXPECT_EQ(format_bytes(5'000, 10), "5000 B");
}

TEST(SlotAllocator, serves_four_bytes_without_a_gap_behind_a_page_header_of_16) {
    TestPages pages;
    SlotAllocator slots(pages, 4, 1 << 20);
    auto* const first = static_cast<std::byte*>(slots.allocate(1));
    EXPECT_EQ(offset_in_page(first), 16u);
    for (std::size_t i = 1; i < 1020; ++i)
        ASSERT_EQ(slots.allocate(i % 4 + 1), first + 4 * i);
    EXPECT_EQ(offset_in_page(slots.allocate(4)), 16u) << "the 1,021st block needs a page of its own";
    std::uint32_t size = 0;
    std::memcpy(&size, first - 16, 4);
    EXPECT_EQ(size, 4u);
}

TEST(SlotAllocator, reuses_an_emptied_page_for_another_size) {
    TestPages pages;
    SlotAllocator slots(pages, 16, 1 << 20);
    std::vector<void*> blocks(2000);
    for (void*& block : blocks)
        block = slots.allocate(4);
    void* const page = static_cast<std::byte*>(blocks[0]) - 16;
    for (std::size_t i = 0; i < 1020; ++i)
        slots.deallocate(blocks[i * 7 % 1020]); // in no order
    EXPECT_EQ(slots.free_pages(), 1u);
    EXPECT_EQ(slots.live(4), 980u);
    EXPECT_EQ(slots.allocate(12), static_cast<std::byte*>(page) + 16);
    EXPECT_EQ(slots.free_pages(), 0u);
    const void* const next = slots.allocate(4);
    EXPECT_EQ(next, static_cast<std::byte*>(blocks[1999]) + 4) << "no block of the emptied page is left in its class";
}

TEST(SlotAllocator, refuses_pointers_that_are_no_live_blocks) {
    TestPages pages;
    SlotAllocator slots(pages, 4, 1 << 20);
    auto* const block = static_cast<std::byte*>(slots.allocate(4));
    auto* const other = static_cast<std::byte*>(slots.allocate(4));
    slots.deallocate(block);
    for (std::byte* const bad : {block, other + 2, other + 4, block - 16, other + (1 << 16)})
        expect_refused(slots, bad);
}

TEST(SlotAllocator, gives_null_at_the_end_of_its_range) {
    TestPages pages;
    SlotAllocator slots(pages, 4, 2 * 4096);
    for (int i = 0; i < 2 * 1020; ++i)
        ASSERT_TRUE(slots.owns(slots.allocate(4)));
    EXPECT_EQ(slots.allocate(4), nullptr);
    EXPECT_EQ(slots.live(4), 2040u);
}

TEST(SlotAllocator, reports_in_both_forms) {
    TestPages pages;
    SlotAllocator slots(pages, 8, 67'108'864);
    slots.allocate(4);
    slots.deallocate(slots.allocate(3));
    EXPECT_EQ(report_of(slots, false), "Slot allocator:      4 B in 1 objects, 67.1MB address space.\n");
    EXPECT_EQ(report_of(slots, true), "Slot allocator\n--------------\n\n"
                                      "1 objects of size 4 (max count 2)\n"
                                      "0 objects of size 8 (max count 0)\n\n"
                                      "Objects:          1\n"
                                      "Free pages:       0\n"
                                      "Used memory:      4 B\n"
                                      "Allocated memory: 4.10KB\n"
                                      "Overhead:         4.09KB\n"
                                      "Address space:    67.1MB\n");
}

struct LayoutCase {
    std::size_t granularity, unit, bitmap_bytes, size;
    std::uint64_t bits; ///< of the units from the first block on, after two blocks of `size` and a free of the first
};
class HeapLayout : public testing::TestWithParam<LayoutCase> {};

TEST_P(HeapLayout, marks_starts_and_blocks_in_use_at_the_head_of_the_page) {
    const LayoutCase& expected = GetParam();
    TestPages pages;
    SmallHeapAllocator heap(pages, 512, expected.granularity, 1 << 20);
    EXPECT_EQ(heap.unit(), expected.unit);
    auto* const first = static_cast<std::byte*>(heap.allocate(expected.size));
    EXPECT_EQ(offset_in_page(first), expected.bitmap_bytes);
    EXPECT_EQ(heap.allocate(expected.size), first + expected.size);
    heap.deallocate(first);
    std::uint64_t bits = 0;
    const std::size_t first_unit = expected.bitmap_bytes / expected.unit;
    std::memcpy(&bits, first - expected.bitmap_bytes + first_unit / 8, sizeof bits);
    EXPECT_EQ(bits, expected.bits);
}

// Worked out by hand: block of n units free at 0, in use at n, rest of the page free at 2n.
INSTANTIATE_TEST_SUITE_P(, HeapLayout,
                         testing::Values(LayoutCase{16, 8, 64, 32, 0b1'0011'0001}, LayoutCase{8, 4, 128, 8, 0b1'11'01},
                                         LayoutCase{4, 4, 128, 12, 0b1'011'001}));

TEST(SmallHeap, merges_neighbours_so_that_the_whole_page_can_be_carved_again) {
    TestPages pages;
    SmallHeapAllocator heap(pages, 512, 16, 4096); // a single page
    std::vector<void*> blocks;
    while (void* const block = heap.allocate(16))
        blocks.push_back(block);
    EXPECT_EQ(blocks.size(), (4096u - 64) / 16);
    for (const std::size_t start : {1u, 0u}) // the second round merges on both sides
        for (std::size_t i = start; i < blocks.size(); i += 2)
            heap.deallocate(blocks[i]);
    EXPECT_TRUE(heap.check());
    for (int i = 0; i < 7; ++i)
        ASSERT_NE(heap.allocate(512), nullptr);
    EXPECT_NE(heap.allocate(448), nullptr) << "4,032 = 7 * 512 + 448";
    EXPECT_EQ(heap.allocate(16), nullptr);
}

TEST(SmallHeap, does_not_merge_across_blocks_in_use) {
    TestPages pages;
    SmallHeapAllocator heap(pages, 512, 8, 1 << 20);
    std::vector<std::byte*> blocks(100);
    for (auto& block : blocks)
        block = static_cast<std::byte*>(heap.allocate(8));
    for (std::size_t i = 0; i < blocks.size(); i += 2)
        heap.deallocate(blocks[i]);
    EXPECT_EQ(heap.allocate(16), blocks[99] + 8);
    EXPECT_EQ(heap.allocate(8), blocks[98]) << "the block freed last comes first";
    EXPECT_TRUE(heap.check());
}

TEST(SmallHeap, splits_the_next_larger_class_and_absorbs_a_rest_too_small_for_a_block) {
    TestPages pages;
    SmallHeapAllocator heap(pages, 512, 4, 1 << 20);
    void* const first = heap.allocate(32);
    heap.allocate(12);
    heap.deallocate(first);
    EXPECT_NE(heap.allocate(28), first) << "a rest of 4 bytes refuses the split";
    EXPECT_EQ(heap.allocate(20), first);
    EXPECT_EQ(heap.allocate(12), static_cast<std::byte*>(first) + 20) << "the rest of the split";

    SmallHeapAllocator page(pages, 512, 4, 4096);
    for (int i = 0; i < 6; ++i)
        page.allocate(500);
    page.allocate(452);
    EXPECT_EQ(page.live_size(page.allocate(512)), 516u) << "3,968 - 6 * 500 - 452 = 516";
    EXPECT_EQ(page.used(), 3968u);
    EXPECT_TRUE(page.check());
}

TEST(SmallHeap, refuses_pointers_that_are_no_blocks_in_use) {
    for (const std::size_t granularity : {4u, 8u, 16u}) {
        TestPages pages;
        SmallHeapAllocator heap(pages, 512, granularity, 1 << 20);
        auto* const freed = static_cast<std::byte*>(heap.allocate(48));
        auto* const block = static_cast<std::byte*>(heap.allocate(48));
        std::byte* const pair = static_cast<std::byte*>(heap.allocate(granularity == 4 ? 8 : granularity));
        heap.allocate(48);
        heap.deallocate(freed);
        const std::size_t unit = heap.unit();
        for (std::byte* const bad : {freed, block + 2, block + unit, block + 2 * unit, pair + unit,
                                     freed - heap.bitmap_bytes(), freed + 8 * 4096})
            expect_refused(heap, bad);
        EXPECT_TRUE(heap.check());
    }
}

TEST(SmallHeap, reports_in_both_forms) {
    TestPages pages;
    SmallHeapAllocator heap(pages, 512, 16, 268'435'456);
    void* const freed = heap.allocate(32);
    heap.allocate(16);
    heap.allocate(512);
    heap.deallocate(freed);
    EXPECT_EQ(report_of(heap, false), "Heap allocator (16): 528 B in 2 objects, 268MB address space.\n");
    EXPECT_EQ(report_of(heap, true), "Heap allocator (16)\n------------------\n\n"
                                     "1 objects of size 16, 0 free slots.\n"
                                     "0 objects of size 32, 1 free slots.\n\n"
                                     "Objects:          2\n"
                                     "Used memory:      528 B\n"
                                     "Max used memory:  560 B\n"
                                     "Unused allocated: 32 B\n"
                                     "Allocated memory: 4.10KB\n"
                                     "Overhead:         3.54KB\n"
                                     "Address space:    268MB\n");
}

TEST(MallocAllocator, aligns_counts_and_reports) {
    MallocAllocator heap;
    void* const block = heap.allocate(1000);
    void* const aligned = heap.allocate_aligned(100, 4096);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
    EXPECT_EQ(offset_in_page(aligned), 0u);
    EXPECT_EQ(heap.used(), 1000 + 36 + 100 + 36);
    heap.deallocate(aligned);
    EXPECT_EQ(report_of(heap, false), "Malloc allocator:    1.04KB\n");
    EXPECT_EQ(report_of(heap, true), "Malloc allocator\n---------------\n"
                                     "Used memory:      1.04KB\nMax used memory:  1.17KB\n\n");
    alignas(16) std::byte foreign[64] = {};
    expect_refused(heap, foreign + 32);
    heap.deallocate(block);
    EXPECT_EQ(heap.used(), 0);
}

TEST(MallocAllocator, tells_the_size_of_a_failed_request) {
    MallocAllocator heap;
    for (const std::size_t size : {std::size_t{1} << 47, std::numeric_limits<std::size_t>::max()}) {
        try {
            heap.allocate(size);
            FAIL();
        } catch (const ErrorWithCStack& error) {
            EXPECT_EQ(error.what(), "Out of memory allocating " + std::to_string(size) + " bytes");
        }
    }
    EXPECT_EQ(heap.max_used(), 0);
}

} // namespace
} // namespace kst
