// A program on the allocator chain: every form of new and delete, from before main on. Under sanitizers the chain is
// left out, and the same promises are the C++ library's.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <memory_resource>
#include <new>
#include <string>
#include <thread>
#include <vector>

#ifdef MOSAICER_ALLOCATORS_IN_USE
#include "source/utility/Errors.h"
#include "source/utility/memory/GlobalNew.h"

#include <sstream>
#endif

namespace {

bool aligned(const void* pointer, std::size_t alignment) {
    return reinterpret_cast<std::uintptr_t>(pointer) % alignment == 0;
}

/// Filled before main by one static, emptied after the test's statics by another that was made earlier.
std::vector<std::string>& early_strings() {
    static auto& strings = *new std::vector<std::string>;
    return strings;
}
struct LateFree {
    LateFree() { early_strings().assign(1000, std::string(40, 'x')); }
    ~LateFree() {
        const bool kept = std::all_of(early_strings().begin(), early_strings().end(),
                                      [](const std::string& text) { return text == std::string(40, 'x'); });
        delete &early_strings();
        if (!kept)
            std::_Exit(1);
    }
} const late_free;

TEST(GlobalNew, keeps_memory_from_before_main) {
    EXPECT_EQ(early_strings().size(), 1000u);
}

TEST(GlobalNew, aligns_objects_of_their_size_and_arrays_of_any_smaller_size) {
    for (std::size_t size = 1; size <= 1100; ++size) {
        void* const object = operator new(size);
        void* const array = operator new[](size);
        EXPECT_TRUE(aligned(object, std::min<std::size_t>(size & -size, 16))) << size;
        EXPECT_TRUE(aligned(array, size >= 16 ? 16 : size >= 8 ? 8 : size >= 4 ? 4 : 1)) << size;
        std::memset(object, 1, size);
        std::memset(array, 2, size);
#ifdef __cpp_sized_deallocation
        operator delete(object, size);
#else
        operator delete(object);
#endif
        operator delete[](array);
    }
}

struct alignas(64) CacheLine {
    char bytes[64];
};

TEST(GlobalNew, honours_alignments_beyond_the_default) {
    std::vector<std::unique_ptr<CacheLine>> lines(50);
    for (auto& line : lines) {
        line = std::make_unique<CacheLine>();
        EXPECT_TRUE(aligned(line.get(), 64));
    }
    const std::unique_ptr<CacheLine[]> array(new (std::nothrow) CacheLine[3]);
    EXPECT_TRUE(aligned(array.get(), 64));
    std::pmr::monotonic_buffer_resource buffer(40);
    EXPECT_TRUE(aligned(buffer.allocate(24, 16), 16));
}

// Volatile, so that the compiler doesn't judge the size.
volatile std::size_t too_much = std::size_t{1} << 47;

TEST(GlobalNew, gives_null_through_the_nothrow_forms) {
#ifdef MOSAICER_ALLOCATORS_IN_USE // a sanitizer stops at such a size
    EXPECT_EQ(operator new(too_much, std::nothrow), nullptr);
    EXPECT_EQ(operator new[](too_much, std::nothrow), nullptr);
    EXPECT_EQ(operator new (too_much, std::align_val_t{64}, std::nothrow), nullptr);
    EXPECT_EQ(operator new[](too_much, std::align_val_t{64}, std::nothrow), nullptr);
#endif
}

TEST(GlobalNew, serves_threads_that_free_what_others_allocated) {
    constexpr std::size_t count = 50'000;
    std::vector<std::vector<std::unique_ptr<std::string>>> made(2);
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < made.size(); ++i)
            threads.emplace_back([&strings = made[i], i] {
                strings.clear(); // from the other thread of the round before
                for (std::size_t k = 0; k < count; ++k)
                    strings.push_back(std::make_unique<std::string>(k % 90, static_cast<char>('a' + i)));
            });
        for (auto& thread : threads)
            thread.join();
        made[0].swap(made[1]);
    }
    for (std::size_t k = 0; k < count; ++k)
        ASSERT_EQ(*made[0][k], std::string(k % 90, 'b'));
}

#ifdef MOSAICER_ALLOCATORS_IN_USE
TEST(GlobalNew, throws_the_engines_error_with_the_size) {
    try {
        operator delete(operator new(too_much));
        FAIL();
    } catch (const kst::ErrorWithCStack& error) {
        EXPECT_STREQ(error.what(), "Out of memory allocating 140737488355328 bytes");
    }
}

TEST(GlobalNew, counts_every_allocation_in_the_chain) {
    const auto slots = [] {
        std::ostringstream text;
        kst::global_chain().report(text, /*detailed=*/true);
        const std::string line = text.str().substr(std::strlen("Slot allocator\n--------------\n\n"));
        return std::stoul(line);
    };
    const std::size_t before = slots();
    std::vector<std::unique_ptr<int>> objects(777);
    for (auto& object : objects)
        object = std::make_unique<int>(7);
    EXPECT_EQ(slots(), before + 777);
    objects.clear();
    EXPECT_EQ(slots(), before);
}
#endif

} // namespace
