#include "objects/controllers/ConstControllers.h"
#include "source/utility/Errors.h"
#include "tests/objects/stream_support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

namespace kst {
namespace {

using test_support::Creators;
using test_support::load;
using test_support::Node;
using test_support::reading;
using test_support::saved;
using test_support::StreamBytes;
using test_support::writing;
using test_support::written;

constexpr std::uint32_t node = Node::class_type_id;

Node& add_node(ObjectDatabase& database, std::string_view name) {
    database.objects.push_back(std::make_unique<Node>(name));
    return static_cast<Node&>(*database.objects.back());
}

Node& node_at(const ObjectDatabase& database, std::size_t index) {
    return dynamic_cast<Node&>(*database.objects[index]);
}

StreamBytes node_data(std::string_view name, std::uint32_t value, std::initializer_list<std::uint32_t> references) {
    StreamBytes data;
    data.text(name).u32(value).u32(static_cast<std::uint32_t>(references.size()));
    for (const std::uint32_t reference : references)
        data.u32(reference);
    return data;
}

/// The text of what `action` throws, which must be of that class.
template <class Error>
std::string error_of(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing was thrown";
}

TEST(ObjectDatabaseTest, WritesTheStreamToTheByte) {
    ObjectDatabase database;
    Node& a = add_node(database, "a");
    Node& b = add_node(database, "");
    a.value = 7;
    a.references = {&b, nullptr, &a}; // forward, null, itself
    b.references = {&a};
    const std::string expected("\2\0\0\0"
                               "\xDE\x10\0\0\1\0\0\0\x16\0\0\0"
                               "a\0\7\0\0\0\3\0\0\0\2\0\0\0\0\0\0\0\1\0\0\0"
                               "\xDE\x10\0\0\2\0\0\0\x0D\0\0\0"
                               "\0\0\0\0\0\1\0\0\0\1\0\0\0",
                               4 + 12 + 22 + 12 + 13);
    EXPECT_EQ(saved(database), expected);
    EXPECT_EQ(saved(ObjectDatabase()), std::string(4, '\0'));
}

TEST(ObjectDatabaseTest, RandomGraphsComeBack) {
    const Creators creators;
    std::mt19937 random(1);
    for (int round = 0; round < 50; ++round) {
        ObjectDatabase database;
        const std::size_t count = random() % 60 + 1;
        for (std::size_t i = 0; i < count; ++i)
            add_node(database, "n" + std::to_string(random() % 20)).value = static_cast<std::uint32_t>(random());
        for (const auto& object : database.objects)
            for (std::size_t i = random() % 5; i > 0; --i) {
                const std::size_t target = random() % (count + 1);
                static_cast<Node&>(*object).references.push_back(target < count ? &node_at(database, target) : nullptr);
            }
        const std::string bytes = saved(database);
        ObjectDatabase again;
        load(again, bytes);
        ASSERT_EQ(again.objects.size(), count);
        const auto index_in = [](const ObjectDatabase& in, const Node* target) {
            return std::find_if(in.objects.begin(), in.objects.end(),
                                [&](const auto& o) { return o.get() == target; }) -
                   in.objects.begin();
        };
        for (std::size_t i = 0; i < count; ++i) {
            const Node &before = node_at(database, i), &after = node_at(again, i);
            EXPECT_EQ(after.name(), before.name());
            EXPECT_EQ(after.value, before.value);
            EXPECT_EQ(after.post_loads, 1);
            ASSERT_EQ(after.references.size(), before.references.size());
            for (std::size_t r = 0; r < before.references.size(); ++r)
                EXPECT_EQ(index_in(again, after.references[r]), index_in(database, before.references[r]));
        }
        EXPECT_EQ(saved(again), bytes);
    }
    EXPECT_EQ(Node::live, 0);
}

TEST(ObjectDatabaseTest, ReadsNumbersThatAreAddresses) {
    const Creators creators;
    ObjectDatabase database;
    load(database, StreamBytes()
                       .u32(2)
                       .object(node, 0xFFFFFFF0, node_data("a", 0, {0x0012FF40, 0xFFFFFFF0}))
                       .object(node, 0x0012FF40, node_data("b", 0, {0xFFFFFFF0, 0}))
                       .bytes);
    Node &a = node_at(database, 0), &b = node_at(database, 1);
    EXPECT_THAT(a.references, testing::ElementsAre(&b, &a));
    EXPECT_THAT(b.references, testing::ElementsAre(&a, nullptr));
}

TEST(ObjectDatabaseTest, ObjectsMayReadLessThanTheirSizeAndReferToOtherClasses) {
    const Creators creators;
    StreamBytes roomy = node_data("a", 0, {2, 2});
    roomy.bytes += "not read";
    ObjectDatabase database;
    // A float is no Node, so the reference to it is null.
    load(database, StreamBytes()
                       .u32(2)
                       .object(node, 1, roomy)
                       .object(ConstFloatController::class_type_id, 2, StreamBytes().text("f").f32({1.5f}))
                       .bytes);
    EXPECT_THAT(node_at(database, 0).references, testing::ElementsAre(nullptr, nullptr));
    float value = 0;
    EXPECT_TRUE(dynamic_cast<ConstFloatController&>(*database.objects[1]).get(0, value));
    EXPECT_EQ(value, 1.5f);
}

struct BadStream {
    std::string bytes;
    std::string error;
    std::size_t loaded; ///< objects that stay
};

TEST(ObjectDatabaseTest, BadStreamsFailAndKeepWhatWasLoaded) {
    const Creators creators;
    const std::string good = StreamBytes().object(node, 1, node_data("a", 5, {})).bytes;
    const std::string past_end = "Archive::checked_read() Attempt to read past end of archive 'test.objects'";
    const auto counted = [](std::uint32_t count, const std::string& objects) {
        return StreamBytes().u32(count).bytes + objects;
    };
    const std::vector<BadStream> streams{
        {"abc", past_end, 0},
        {counted(2, good), past_end, 1},
        {counted(0xFFFFFFFF, good), past_end, 1},
        {counted(2, good + StreamBytes().u32(node).u32(2).u32(0xFFFFFFFF).bytes),
         "Attempt to grow archive test.objects beyond limits", 1},
        {counted(2, good + StreamBytes().object(node, 2, StreamBytes().text("b").u32(1)).bytes), past_end, 1},
        {counted(2, good + StreamBytes().object(0xBAD, 2, {}).bytes),
         "ObjectDatabase::load_content() unknown object type", 1},
        {counted(2, good + good),
         "ReferenceMap::register_ref() a reference is already registered with a different object", 1},
        {counted(2, good + StreamBytes().object(node, 2, node_data("b", 0, {1, 3, 3})).bytes),
         "ReferenceMap::check_unresolved() The reference map contains unresolved references", 2},
        // A track of four thousand million keys.
        {counted(
             2,
             good +
                 StreamBytes().object(0x76BF5B66, 2, StreamBytes().text("").u32(0).f32({0, 0}).u32(0xFFFFFFFF)).bytes),
         past_end, 1},
    };
    for (const BadStream& stream : streams) {
        ObjectDatabase database;
        EXPECT_EQ(error_of<std::runtime_error>([&] { load(database, stream.bytes); }), stream.error);
        ASSERT_EQ(database.objects.size(), stream.loaded) << stream.error;
        if (stream.loaded > 0) {
            EXPECT_EQ(node_at(database, 0).value, 5u);
            EXPECT_EQ(node_at(database, 0).post_loads, 0);
        }
    }
    EXPECT_EQ(Node::live, 0);
}

TEST(ObjectDatabaseTest, AStoreThatEndsEarlyIsNoBetterUnbounded) {
    const Creators creators;
    for (const std::uint32_t count : {1u, 0xFFFFFFFFu}) {
        const std::string bytes = StreamBytes()
                                      .u32(count)
                                      .object(node, 1, node_data("a", 5, {}))
                                      .u32(0x76BF5B66)
                                      .u32(2)
                                      .u32(0xFFFFFFFF)
                                      .text("")
                                      .u32(0)
                                      .f32({0, 0})
                                      .u32(0xFFFFFFFF)
                                      .bytes;
        Archive archive("u", std::make_unique<ConstMemoryDataStore>(bytes.data(), bytes.size()), 0, 0,
                        /*unbounded=*/true);
        ObjectDatabase database;
        EXPECT_EQ(error_of<std::range_error>([&] { database.load_content(archive); }),
                  count == 1 ? "nothing was thrown"
                             : "Archive::checked_read() Attempt to read past end of archive 'u'");
        EXPECT_EQ(database.objects.size(), 1u);
    }
}

TEST(ObjectDatabaseTest, SavingNamesTheObjectThatRefersOutside) {
    const Node outside;
    ObjectDatabase database;
    add_node(database, "lonely").references = {const_cast<Node*>(&outside)};
    EXPECT_EQ(error_of<UnkownReferenceError>([&] { saved(database); }),
              "Object lonely tried to create a reference to an unkown object!");
    database.objects[0]->set_name(intern(std::string_view("a\0b", 3)));
    EXPECT_EQ(error_of<ErrorWithCStack>([&] { saved(database); }), "A text with a zero byte cannot be stored: a");
    database.objects.push_back(nullptr);
    EXPECT_EQ(error_of<ErrorWithCStack>([&] { saved(database); }),
              "ObjectDatabase::save_content() a null object cannot be stored");
}

/// Leaves gaps in its data, one of them at the end.
class Gappy : public PersistentObject {
public:
    void save(Archive& archive, ReferenceMap&) const override {
        archive.set_position(3);
        archive.write("x", 1);
        archive.set_position(700'000);
    }
};

TEST(ObjectDatabaseTest, SkippedBytesAreZeroInEveryPiece) {
    ObjectDatabase database;
    for (int i = 0; i < 4; ++i)
        database.objects.push_back(std::make_unique<Gappy>());
    Archive archive = writing();
    archive.write("head", 4);
    database.save_content(archive);
    EXPECT_EQ(archive.position(), 4 + 4 + 4 * (12 + 700'000));
    StreamBytes expected;
    expected.u32(4);
    for (std::uint32_t i = 1; i <= 4; ++i) {
        StreamBytes data;
        data.bytes = std::string(700'000, '\0');
        data.bytes[3] = 'x';
        expected.object(PersistentObject::class_type_id, i, data);
    }
    EXPECT_EQ(written(archive), "head" + expected.bytes);
}

TEST(ReferenceMapTest, ServesWaitingPointersInOrder) {
    ReferenceMap map(1);
    Node a, b;
    std::vector<int> order;
    class Recording : public ReferencePatcher {
    public:
        Recording(std::vector<int>& record, int mark) : record_(record), mark_(mark) {}
        bool patch(PersistentObject*) override {
            record_.push_back(mark_);
            return true;
        }

    private:
        std::vector<int>& record_;
        int mark_;
    };
    for (const std::uint32_t number : {1u, 5000u}) {
        order.clear();
        map.request_ref(number, std::make_unique<Recording>(order, 1));
        map.request_ref(number, std::make_unique<Recording>(order, 2));
        EXPECT_TRUE(order.empty());
        map.register_ref(number, &a);
        map.register_ref(number, &a);
        map.request_ref(number, std::make_unique<Recording>(order, 3));
        EXPECT_THAT(order, testing::ElementsAre(1, 2, 3));
        EXPECT_THROW(map.register_ref(number, &b), ErrorWithCStack);
    }
    Node* target = &a;
    load_reference(map, 0, &target);
    EXPECT_EQ(target, nullptr);
    const Node* const_target = nullptr;
    load_reference(map, 5000, &const_target);
    EXPECT_EQ(const_target, &a);
    for (const std::uint32_t number : {0u, 2u, 77u, 77u})
        map.request_ref(number, std::make_unique<Recording>(order, 4));
    EXPECT_EQ(map.check_unresolved(), 4u);
    EXPECT_EQ(map.check_unresolved(), 0u);
}

TEST(ReferenceMapTest, NumbersRunFromOne) {
    ReferenceMap map;
    const Node a, b;
    EXPECT_EQ(map.reference_of(nullptr, true), 0u);
    EXPECT_EQ(error_of<UnkownReferenceError>([&] { map.reference_of(&b, false); }), "Unkown reference target!");
    EXPECT_EQ(map.reference_of(&b, true), 1u);
    EXPECT_EQ(map.reference_of(&a, true), 2u);
    EXPECT_EQ(map.reference_of(&b, true), 1u);
    EXPECT_EQ(map.reference_of(&b, false), 1u);
}

TEST(ObjectCreatorTableTest, ThereIsOneAndTheFirstCreatorStays) {
    ObjectDatabase database;
    EXPECT_THROW(load(database, std::string(4, '\0')), AssertionException);
    {
        const Creators creators;
        EXPECT_THROW(ObjectCreatorTable(), AssertionException);
        ObjectCreatorTable& table = *ObjectCreatorTable::instance();
        table.register_creator(node, persistent_class<ConstFloatController>().create);
        EXPECT_EQ(table.find(node)()->type_id(), node);
        EXPECT_EQ(table.find(1), nullptr);
    }
    EXPECT_EQ(ObjectCreatorTable::instance(), nullptr);
}

} // namespace
} // namespace kst
