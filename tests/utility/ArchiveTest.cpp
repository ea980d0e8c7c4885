#include "source/utility/Archive.h"

#include "source/utility/Errors.h"
#include "source/utility/FileDataStore.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/StoreReferences.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/throws_disk_error.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <limits>
#include <stdexcept>
#include <string>

namespace kst {
namespace {

using test_support::TemporaryDirectory;
using test_support::throws_disk_error;
using testing::ThrowsMessage;

/// An archive on bytes that outlive it, bounded by them.
Archive on(std::string_view bytes) {
    return {"the name", std::make_unique<ConstMemoryDataStore>(bytes.data(), bytes.size()), 0,
            static_cast<std::int64_t>(bytes.size()), /*unbounded=*/false};
}

Archive growing() {
    return {"grown", std::make_unique<MemoryDataStore>(), 0, 0, /*unbounded=*/true};
}

std::string text_of(Archive archive, std::int64_t from = 0) {
    archive.set_position(from);
    std::string text(static_cast<std::size_t>(archive.size() - from), '?');
    text.resize(archive.read(text.data(), text.size()));
    return text;
}

struct CountedStore : NullDataStore {
    explicit CountedStore(int& alive) : alive_(alive) { ++alive_; }
    ~CountedStore() override { --alive_; }
    int& alive_;
};

TEST(Archive, a_failed_one_is_empty_and_harmless) {
    Archive failed;
    std::string text = "old";
    EXPECT_FALSE(failed);
    EXPECT_TRUE(failed.unbounded());
    EXPECT_EQ(failed.name(), "");
    EXPECT_EQ(failed.read(text.data(), 3), 0u);
    EXPECT_EQ(failed.write("abc", 3), 0u);
    failed.read_line(text);
    EXPECT_EQ(text, "");
    EXPECT_EQ(failed.size(), 0);
    EXPECT_EQ(Archive(failed, 0, 4, /*unbounded=*/false).store(), nullptr);
}

TEST(Archive, a_bounded_one_stops_at_its_end_and_stays_where_it_was) {
    Archive archive = on("0123456789");
    char bytes[4] = {};
    archive.set_position(8);
    EXPECT_THAT(
        [&] { archive.read(bytes, 3); },
        ThrowsMessage<std::range_error>("Archive::checked_read() Attempt to read past end of archive 'the name'"));
    EXPECT_THAT(
        [&] { archive.write(bytes, 3); },
        ThrowsMessage<std::range_error>("Archive::checked_write() Attempt to write past end of archive 'the name'"));
    EXPECT_THROW(archive.read(bytes, std::numeric_limits<std::size_t>::max()), std::range_error);
    EXPECT_EQ(archive.position(), 8);
    EXPECT_EQ(archive.read(bytes, 2), 2u);
    EXPECT_EQ(std::string(bytes), "89");
    EXPECT_EQ(archive.position(), 10);
}

struct Seek {
    std::int64_t offset;
    int origin;
    std::int64_t expected; ///< -1: refused
};

TEST(Archive, seeks_from_start_position_and_end) {
    constexpr std::int64_t far = std::numeric_limits<std::int64_t>::max();
    for (const Seek& seek : {Seek{7, 0, 7},
                             {11, 0, -1},
                             {-1, 0, -1},
                             {3, 1, 7},
                             {-4, 1, 0},
                             {-5, 1, -1},
                             {far, 1, -1},
                             {1, 2, 9},
                             {-1, 2, -1},
                             {-far - 1, 2, -1}}) {
        Archive archive = on("0123456789");
        archive.set_position(4);
        if (seek.expected < 0)
            EXPECT_THROW(archive.set_position(seek.offset, seek.origin), std::range_error) << seek.offset;
        else
            archive.set_position(seek.offset, seek.origin);
        EXPECT_EQ(archive.position(), seek.expected < 0 ? 4 : seek.expected) << seek.offset << ' ' << seek.origin;
    }
    Archive archive = on("0123456789");
    EXPECT_THAT(
        [&] { archive.set_position(11); },
        ThrowsMessage<std::range_error>("Archive::set_position() Attempt to seek past end of archive 'the name'"));
}

TEST(Archive, an_unbounded_one_grows_by_seeks_and_writes) {
    Archive archive = growing();
    archive.set_position(5);
    EXPECT_EQ(archive.size(), 5);
    archive.write("ab", 2);
    archive.set_position(4);
    archive.write("X", 1);
    EXPECT_EQ(archive.size(), 7);
    EXPECT_EQ(text_of(archive), std::string("\0\0\0\0Xab", 7)) << "skipped bytes are 0";
    char bytes[3] = {'1', '2', '3'};
    archive.set_position(6);
    EXPECT_EQ(archive.read(bytes, 3), 1u) << "a short read is no error";
    EXPECT_EQ(std::string(bytes, 3), "b23");
}

TEST(Archive, a_window_shifts_the_origin_and_keeps_the_name) {
    const Archive parent = on("0123456789");
    Archive window(parent, 2, 5, /*unbounded=*/false);
    EXPECT_EQ(window.name(), "the name");
    EXPECT_EQ(text_of(window), "23456");
    EXPECT_EQ(text_of(Archive(window, 1, 2, false)), "34");
    EXPECT_EQ(text_of(Archive(window, 5, 0, false)), "");

    struct Bad {
        std::int64_t offset, size;
        bool unbounded;
    };
    constexpr std::int64_t far = std::numeric_limits<std::int64_t>::max();
    for (const Bad& bad : {Bad{2, 9, false},
                           {11, 0, false},
                           {0, 1, true},
                           {-1, 1, false},
                           {0, -1, false},
                           {1, far, false},
                           {far, far, false}})
        EXPECT_THAT([&] { Archive(parent, bad.offset, bad.size, bad.unbounded); },
                    ThrowsMessage<std::range_error>("Attempt to grow archive the name beyond limits"));

    Archive output = growing();
    output.write("head", 4);
    Archive tail(output, 4, 0, /*unbounded=*/true);
    tail.write("tail", 4);
    EXPECT_EQ(tail.size(), 4);
    EXPECT_EQ(text_of(Archive(output, 0, 8, false)), "headtail");
}

TEST(Archive, the_last_holder_destroys_the_store) {
    int alive = 0;
    {
        Archive first("a", std::make_unique<CountedStore>(alive), 0, 0, true);
        {
            Archive copy = first;
            Archive window(copy, 0, 0, false);
            Archive moved = std::move(copy);
            const Archive& same = moved;
            moved = same;
            first = Archive("b", std::make_unique<CountedStore>(alive), 0, 0, true);
            EXPECT_EQ(alive, 2);
        }
        EXPECT_EQ(alive, 1);
        first = Archive();
        EXPECT_EQ(alive, 0);
    }
    EXPECT_EQ(alive, 0);
}

TEST(StoreReferences, freed_slots_are_taken_again) {
    const auto a = store_references::take();
    const auto b = store_references::take();
    store_references::add(a);
    EXPECT_FALSE(store_references::release(a));
    EXPECT_TRUE(store_references::release(a));
    EXPECT_TRUE(store_references::release(b));
    EXPECT_EQ(store_references::take(), b);
    EXPECT_EQ(store_references::take(), a);
    EXPECT_TRUE(store_references::release(a));
    EXPECT_TRUE(store_references::release(b));
}

struct Text {
    std::string data;
    std::int64_t from;
    std::string line, string;
    std::int64_t behind_line, behind_string;
};

TEST(Archive, reads_lines_and_strings) {
    using namespace std::string_literals;
    const std::string long_text(511, 'x');
    const std::string longer(1300, 'y');
    for (const Text& c : {Text{"ab\r\ncd", 0, "ab", "ab\r\ncd", 4, 6},
                          {"ab\ncd", 0, "ab", "ab\ncd", 3, 5},
                          {"ab\ncd", 3, "cd", "cd", 5, 5},
                          {"ab\0cd\n"s, 0, "ab", "ab", 3, 3},
                          {"ab\r\0cd"s, 0, "ab\r", "ab\r", 4, 4},
                          {"ab\r", 0, "ab\r", "ab\r", 3, 3},
                          {"a\rb\n", 0, "a\rb", "a\rb\n", 4, 4},
                          {"\r\n", 0, "", "\r\n", 2, 2},
                          {"", 0, "", "", 0, 0},
                          {"ab", 2, "", "", 2, 2},
                          {long_text + "\r\nz", 0, long_text, long_text + "\r\nz", 513, 514},
                          {long_text + "x", 0, long_text + "x", long_text + "x", 512, 512},
                          {longer + "\n\0z"s, 0, longer, longer + "\n", 1301, 1302}}) {
        std::string out = "old";
        Archive archive = on(c.data);
        archive.set_position(c.from);
        archive.read_line(out);
        EXPECT_EQ(out, c.line);
        EXPECT_EQ(archive.position(), c.behind_line) << c.data;
        archive.set_position(c.from);
        archive.read_string(out);
        EXPECT_EQ(out, c.string);
        EXPECT_EQ(archive.position(), c.behind_string) << c.data;
    }
    std::string out;
    const Archive parent = on("abcdef");
    Archive(parent, 1, 3, false).read_string(out);
    EXPECT_EQ(out, "bcd") << "a window's text ends with the window";
}

TEST(MemoryDataStores, refuse_what_they_cannot_do) {
    char byte = 0;
    ConstMemoryDataStore constant("abc", 3);
    EXPECT_THAT([&] { constant.write(0, &byte, 1); },
                ThrowsMessage<ErrorWithCStack>("Cant write to const memmory data store"));
    EXPECT_EQ(constant.read(3, &byte, 1), 0u);
    EXPECT_EQ(constant.read(-1, &byte, 1), 0u);
    NullDataStore null;
    EXPECT_THAT([&] { null.read(0, &byte, 1); }, ThrowsMessage<ErrorWithCStack>("Cant read from null data store"));
    EXPECT_EQ(null.write(10, &byte, 5), 5u);
    EXPECT_EQ(null.write(0, &byte, 3), 3u);
    EXPECT_EQ(null.size(), 15);
    constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(null.write(last - 1, &byte, 3), 3u);
    EXPECT_EQ(null.size(), last) << "not a sum that has wrapped";
}

TEST(MemoryDataStores, grow_by_a_fifth_and_ten) {
    MemoryDataStore store;
    std::vector<std::int32_t> capacities;
    for (int i = 0; i < 40; ++i) {
        store.write(i, "x", 1);
        if (capacities.empty() || capacities.back() != store.capacity())
            capacities.push_back(store.capacity());
    }
    EXPECT_THAT(capacities, testing::ElementsAre(10, 22, 36, 53));
    store.write(40, std::string(60, 'z').data(), 60);
    EXPECT_EQ(store.capacity(), 100) << "the needed size where that is larger";
    constexpr std::int64_t two_gib = std::int64_t{1} << 31;
    for (const std::int64_t offset : {two_gib - 1, two_gib, two_gib * 2, std::numeric_limits<std::int64_t>::max()})
        EXPECT_THROW(store.write(offset, "x", 1), ErrorWithCStack);
    EXPECT_EQ(store.bytes().size(), 100u);
    EXPECT_EQ(store.write(two_gib * 4, "x", 0), 0u);
}

TEST(FileDataStore, reads_and_writes_at_positions) {
    const TemporaryDirectory directory;
    const std::string path = directory / "Mixed Case \xC3\xA4.bin";
    {
        FileDataStore store(path, platform::Disposition::create_always, platform::Access::read_write, ShareMode::read);
        ASSERT_TRUE(store.is_valid());
        EXPECT_EQ(store.write(2, "abc", 3), 3u);
        EXPECT_EQ(store.write(0, nullptr, 0), 0u);
        EXPECT_EQ(store.size(), 5);
        char bytes[8] = {};
        EXPECT_EQ(store.read(1, bytes, 8), 4u);
        EXPECT_EQ(std::string(bytes + 1), "abc");
        EXPECT_EQ(store.read(5, bytes, 1), 0u);
    }
    EXPECT_EQ(directory.read("Mixed Case \xC3\xA4.bin"), std::string("\0\0abc", 5));
    std::string backslashes = path;
    std::replace(backslashes.begin(), backslashes.end(), '/', '\\');
    const FileDataStore again(backslashes, platform::Disposition::open_existing, platform::Access::read,
                              ShareMode::read);
    EXPECT_EQ(again.size(), 5);
}

TEST(FileDataStore, tells_a_missing_file_from_a_refused_one) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "x");
    using platform::Access;
    using platform::Disposition;
    for (const std::string& missing :
         {directory / "none", directory / "no/where", file + "/below", file + std::string("\0", 1)})
        EXPECT_FALSE(FileDataStore(missing, Disposition::open_existing, Access::read, ShareMode::read).is_valid());

    const std::string refused = directory.path().string();
    EXPECT_THAT([&] { FileDataStore(refused, Disposition::open_existing, Access::read, ShareMode::read); },
                throws_disk_error("Cannot open " + refused));
    char byte = 0;
    FileDataStore write_only(file, Disposition::open_existing, Access::write, ShareMode::read);
    EXPECT_THAT([&] { write_only.read(0, &byte, 1); }, throws_disk_error("Cannot read from file " + file));
    FileDataStore full("/dev/full", Disposition::open_existing, Access::write, ShareMode::read);
    EXPECT_THAT([&] { full.write(0, "x", 1); }, throws_disk_error("Cannot write to file /dev/full"));
}

} // namespace
} // namespace kst
