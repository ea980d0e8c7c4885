#include "source/utility/CachedFileDataStore.h"

#include "source/utility/ResourceDataStore.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/throws_disk_error.h"

#include <array>
#include <filesystem>
#include <gmock/gmock.h>
#include <random>

namespace kst {
namespace {

using test_support::TemporaryDirectory;
using test_support::throws_disk_error;

std::string noise(std::size_t size) {
    std::string bytes(size, '\0');
    std::mt19937 random(static_cast<unsigned>(size));
    for (char& byte : bytes)
        byte = static_cast<char>(random() & 0xFFu);
    return bytes;
}

std::string read(DataStore& store, std::int64_t offset, std::size_t count) {
    std::string bytes(count, '?');
    bytes.resize(store.read(offset, bytes.data(), count));
    return bytes;
}

struct Shape {
    std::size_t file_size;
    int cache_kib, block_kib;
};

TEST(CachedFileDataStore, gives_the_bytes_of_the_file_wherever_it_is_read) {
    const TemporaryDirectory disk;
    for (const Shape& shape : {Shape{0, 192, 64},
                               {1, 192, 64},
                               {65'536, 192, 64},
                               {1'000'001, 192, 64},
                               {40'000, 12, 4},
                               {40'000, 5, 1},
                               {40'960, 1, 1},
                               {40'000, 8, 4}}) {
        const std::string bytes = noise(shape.file_size);
        CachedFileDataStore store(disk.write("file", bytes), shape.cache_kib, shape.block_kib);
        ASSERT_TRUE(store.is_valid());
        EXPECT_EQ(store.size(), static_cast<std::int64_t>(bytes.size()));
        std::mt19937 random(7);
        std::size_t offset = 0;
        for (int i = 0; i < 300; ++i) {
            // Forwards in pieces most of the time, with jumps; reads of up to the whole file.
            offset = i % 7 == 0 ? random() % (bytes.size() + 10) : offset + random() % 3000;
            const std::size_t count = i % 11 == 0 ? random() % (bytes.size() + 10) : random() % 5000;
            const std::string expected = offset < bytes.size() ? bytes.substr(offset, count) : "";
            ASSERT_EQ(read(store, static_cast<std::int64_t>(offset), count), expected) << offset << ' ' << count;
        }
        EXPECT_EQ(store.write(0, "x", 1), 0u);
        EXPECT_EQ(read(store, -1, 4), "");
    }
}

TEST(CachedFileDataStore, keeps_one_block_behind_the_last_used) {
    const TemporaryDirectory disk;
    constexpr int block = 4096;
    CachedFileDataStore store(disk.write("file", noise(10 * block + 1)), 12, 4);
    EXPECT_EQ(store.block_count(), 3);
    read(store, 0, 1);
    EXPECT_EQ(store.first_block(), 0);
    read(store, block, 1);
    EXPECT_EQ(store.first_block(), 0) << "block 0 stays behind block 1";
    read(store, 2 * block, 1);
    EXPECT_EQ(store.first_block(), 1) << "block 0 was dropped";
    read(store, 7 * block, 1);
    EXPECT_EQ(store.first_block(), 7) << "a jump empties the cache";
    read(store, 5 * block - 1, 2);
    EXPECT_EQ(store.first_block(), 4);
    EXPECT_GE(store.cached_blocks(), 2);
    read(store, 0, 10 * block);
    EXPECT_EQ(store.first_block(), 8) << "block 8 stays behind block 9";

    CachedFileDataStore small(disk.write("small", "abc"), 192, 64);
    EXPECT_EQ(small.block_count(), 1);
    EXPECT_EQ(read(small, 1, 100), "bc");
    EXPECT_EQ(small.cached_blocks(), 1);
}

TEST(CachedFileDataStore, tells_what_the_host_refuses) {
    const TemporaryDirectory disk;
    EXPECT_FALSE(CachedFileDataStore(disk / "none", 192, 64).is_valid());
    const std::string directory = disk.path().string();
    EXPECT_THAT([&] { CachedFileDataStore(directory, 192, 64); }, throws_disk_error("Cannot open cache " + directory));

    const std::string path = disk.write("shrinks", noise(300'000));
    CachedFileDataStore store(path, 192, 64);
    read(store, 0, 1);
    std::filesystem::resize_file(path, 100'000);
    EXPECT_THAT([&] { read(store, 250'000, 10); }, throws_disk_error("Cannot complete pending io request"));
}

TEST(ResourceDataStore, works_in_place_on_what_is_found) {
    std::array<std::byte, 4> block{std::byte{'a'}, std::byte{'b'}, std::byte{'c'}, std::byte{'d'}};
    std::array<std::byte, 1> other{};
    const int some_module = 0;
    const platform::EmbeddedResource first(nullptr, 7, block);
    {
        const platform::EmbeddedResource second(nullptr, 7, other);
        const platform::EmbeddedResource elsewhere(&some_module, 7, other);
        ResourceDataStore store(nullptr, 7);
        EXPECT_EQ(store.size(), 4);
        EXPECT_EQ(read(store, 2, 10), "cd");
        EXPECT_EQ(store.write(3, "XYZ", 3), 1u);
        EXPECT_EQ(block[3], std::byte{'X'});
        EXPECT_EQ(read(store, 4, 1), "");
        EXPECT_EQ(ResourceDataStore(&some_module, 7).size(), 1);
    }
    ResourceDataStore missing(&some_module, 7);
    EXPECT_FALSE(missing.is_found());
    EXPECT_EQ(read(missing, 0, 1), "");
    EXPECT_EQ(missing.write(0, "x", 1), 0u);
}

} // namespace
} // namespace kst
