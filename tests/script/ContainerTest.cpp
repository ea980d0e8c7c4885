// The containers of scripts, seen from programs and from native code.

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <limits>
#include <random>

#include "script/runtime/ScriptBitField.h"
#include "script/runtime/ScriptList.h"
#include "script/runtime/ScriptMap.h"
#include "script/runtime/ScriptVector.h"
#include "script/value/WrappingClass.h"
#include "tests/script/NumberValues.h"
#include "tests/script/RuntimeSupport.h"

namespace kst::script {
namespace {

/// A native function that scripts' containers may call: collects what it is given, and says which is below 3.
class Collector : public Bound<Collector> {
public:
    static constexpr std::string_view script_name = "Collector";
    static void bind(StaticMemberSet<Collector>&) {}
    ScriptValue call(Arguments arguments) override {
        for (const ScriptValue& argument : arguments)
            seen.push_back(argument.to_number());
        return boolean_value(arguments[0].to_number() < 3);
    }
    std::deque<float> seen;
};

std::deque<float> walked(const ScriptValue& container) {
    Collector collector;
    call_member(container, "for_each", collector.value());
    return collector.seen;
}

using Model = std::deque<float>;

/// A member with its arguments, `i` for an index, `x` for a number and `f` for the function above, and what it does to a
/// model: gives the number of the result, 0 for void, and nothing for an error.
struct Operation {
    const char* member;
    std::string_view arguments;
    std::optional<float> (*model)(Model& m, std::size_t i, float x);
};

std::optional<float> taken(Model& m, std::size_t i) {
    if (i >= m.size())
        return 0.0f;
    const float value = m[i];
    m.erase(m.begin() + static_cast<std::ptrdiff_t>(i));
    return value;
}
float number_of(bool value) {
    return value ? 1.0f : 0.0f;
}

using Result = std::optional<float>;
const Operation common_operations[] = {
    {"push_back", "x", [](Model& m, std::size_t, float x) -> Result { return m.push_back(x), 0.0f; }},
    {"size", "", [](Model& m, std::size_t, float) -> Result { return static_cast<float>(m.size()); }},
    {"empty", "", [](Model& m, std::size_t, float) -> Result { return number_of(m.empty()); }},
    {"contains", "x", [](Model& m, std::size_t, float x) -> Result { return number_of(std::ranges::count(m, x) > 0); }},
    {"delete_if", "f",
     [](Model& m, std::size_t, float) -> Result { return std::erase_if(m, [](float x) { return x < 3; }), 0.0f; }},
};
const Operation vector_operations[] = {
    {"get", "i", [](Model& m, std::size_t i, float) -> Result { return i < m.size() ? m[i] : 0.0f; }},
    {"set", "ix", [](Model& m, std::size_t i, float x) { return i < m.size() ? (m[i] = x, Result(0.0f)) : Result(); }},
    {"delete_at", "i",
     [](Model& m, std::size_t i, float) { return i < m.size() ? (taken(m, i), Result(0.0f)) : Result(); }},
    {"delete", "x", [](Model& m, std::size_t, float x) -> Result { return std::erase(m, x), 0.0f; }},
    {"resize", "i", [](Model& m, std::size_t i, float) -> Result { return m.resize(i), 0.0f; }},
    {"set_range", "ix",
     [](Model& m, std::size_t i, float x) -> Result {
         m.clear();
         for (auto value = static_cast<float>(i); value < x + 0.5f; ++value)
             m.push_back(value);
         return 0.0f;
     }},
};
const Operation list_operations[] = {
    {"push_front", "x", [](Model& m, std::size_t, float x) -> Result { return m.push_front(x), 0.0f; }},
    {"insert", "ix",
     [](Model& m, std::size_t i, float x) {
         if (i > m.size())
             return Result();
         m.insert(m.begin() + static_cast<std::ptrdiff_t>(i), x);
         return Result(0.0f);
     }},
    {"pop_front", "", [](Model& m, std::size_t, float) -> Result { return taken(m, 0); }},
    {"pop_back", "", [](Model& m, std::size_t, float) -> Result { return m.empty() ? 0.0f : taken(m, m.size() - 1); }},
    {"front", "", [](Model& m, std::size_t, float) -> Result { return m.empty() ? 0.0f : m.front(); }},
    {"back", "", [](Model& m, std::size_t, float) -> Result { return m.empty() ? 0.0f : m.back(); }},
};

void expect_to_follow_the_model(const ScriptValue& container, std::span<const Operation> own) {
    std::mt19937 random(5);
    Model model;
    Collector below_3;
    for (int step = 0; step < 5000; ++step) {
        // Half of them push, so that the containers fill up.
        const std::size_t choice = random() % (2 * (std::size(common_operations) + own.size()));
        const Operation& operation = choice < own.size() ? own[choice]
                                     : choice - own.size() < std::size(common_operations)
                                         ? common_operations[choice - own.size()]
                                         : common_operations[0];
        const std::size_t i = random() % 12;
        const auto x = static_cast<float>(1 + random() % 6);
        std::vector<ScriptValue> arguments;
        for (const char kind : operation.arguments)
            arguments.push_back(kind == 'f' ? below_3.value() : number(kind == 'i' ? static_cast<float>(i) : x));
        Result got;
        const std::string error =
            error_of([&] { got = container.member(intern(operation.member)).call(arguments).to_number(); });
        ASSERT_EQ(got, operation.model(model, i, x)) << operation.member << " " << error;
        ASSERT_EQ(walked(call_member(container, "copy")), model) << operation.member;
    }
}

TEST(ContainerModel, vector_and_list_do_as_the_model) {
    expect_to_follow_the_model(make_script_owned<ScriptVector>(), vector_operations);
    expect_to_follow_the_model(make_script_owned<ScriptList>(), list_operations);
}

TEST(ContainerModel, map_does_as_the_standard_one_also_under_its_iterators) {
    std::mt19937 random(6);
    for (int round = 0; round < 100; ++round) {
        const ScriptValue map = make_script_owned<ScriptMap>(), walk = call_member(map, "iterator");
        std::map<float, float> model;
        float passed = -1;
        for (int step = 0; step < 100; ++step) {
            const auto key = static_cast<float>(random() % 20);
            const auto x = static_cast<float>(step);
            if (random() % 3 == 0) {
                call_member(map, "delete", number(key));
                model.erase(key);
            } else {
                call_member(map, "insert", number(key), number(x));
                model[key] = x;
            }
            EXPECT_EQ(call_member(map, "has", number(key)).to_boolean(), model.contains(key));
            ASSERT_EQ(call_member(map, "size").to_number(), static_cast<float>(model.size()));
            if (random() % 10 != 0)
                continue;
            const auto expected = model.upper_bound(passed);
            const ScriptValue item = call_member(walk, "next");
            ASSERT_EQ(item.is_void(), expected == model.end());
            if (item.is_void())
                continue;
            passed = item.member(intern("key")).to_number();
            EXPECT_EQ(passed, expected->first);
            EXPECT_EQ(item.member(intern("value")).to_number(), expected->second);
        }
    }
}

TEST(Container, keys_of_all_classes_have_one_order) {
    RuntimeHost host;
    const float inf = std::numeric_limits<float>::infinity();
    std::vector<ScriptValue> keys{{},
                                  number(std::nanf("")),
                                  number(-inf),
                                  number(inf),
                                  number(0),
                                  string_value("a"),
                                  string_value("b"),
                                  boolean_value(false),
                                  boolean_value(true),
                                  make_script_owned<ScriptVector>(),
                                  make_script_owned<ScriptMap>(),
                                  ClassTag::instance().wrap(number(1))};
    std::mt19937 random(8);
    for (int round = 0; round < 50; ++round) {
        std::shuffle(keys.begin(), keys.end(), random);
        ScriptMap map;
        for (std::size_t i = 0; i < keys.size(); ++i)
            map.insert(keys[i], number(static_cast<float>(i)));
        ASSERT_EQ(map.size(), keys.size());
        for (std::size_t i = 0; i < keys.size(); ++i)
            EXPECT_EQ(map.find(keys[i]).to_number(), static_cast<float>(i));
        for (const ScriptValue& key : keys)
            map.remove(key);
        EXPECT_TRUE(map.empty());
    }
}

TEST(Container, native_code_owns_copies_and_assigns_them) {
    const std::size_t before = live_records();
    {
        ScriptVector vector({{number(1), string_value("two")}});
        vector.push_back(vector.at(1));
        ScriptVector copy = vector;
        copy.set(0, number(5));
        EXPECT_EQ(vector.at(0).to_number(), 1);
        vector = copy;
        vector = *&vector;
        EXPECT_EQ(vector.at(0).to_number(), 5);
        EXPECT_EQ(vector.items().size(), 3u);
        ScriptList list({{number(1)}}), list_copy = list;
        list_copy.push_front(list.at(0));
        list = list_copy;
        EXPECT_EQ(list.size(), 2u);
        ScriptMap map({{string_value("k"), number(1)}}), map_copy = map;
        map_copy.insert(string_value("l"), map.find(string_value("k")));
        map = map_copy;
        map = *&map;
        std::string pairs;
        for (const auto& [key, value] : map.pairs())
            pairs += key.to_string() + value.to_string();
        EXPECT_EQ(pairs, "k1l1");
        // Its owner destroys a container that a walk stands in.
        auto owned = std::make_unique<ScriptMap>(map);
        const ScriptValue walk = owned->iterator();
        call_member(walk, "next");
        owned.reset();
        EXPECT_EQ(error_of([&] { call_member(walk, "next"); }), "Object already destroyed");
    }
    EXPECT_EQ(live_records(), before);
}

/// Destroys the container that calls it.
class Destroyer : public Bound<Destroyer> {
public:
    static constexpr std::string_view script_name = "Destroyer";
    static void bind(StaticMemberSet<Destroyer>&) {}
    ScriptValue call(Arguments) override {
        vector.reset();
        list.reset();
        map.reset();
        return boolean_value(true);
    }
    std::unique_ptr<ScriptVector> vector;
    std::unique_ptr<ScriptList> list;
    std::unique_ptr<ScriptMap> map;
};

TEST(Container, a_callback_may_destroy_it) {
    const std::vector<ScriptValue> two{number(1), number(2)};
    for (const char* const method : {"for_each", "delete_if"}) {
        Destroyer destroyer;
        const ScriptValue callback = destroyer.value();
        const std::string wanted = method == std::string("for_each") ? "no error" : "Object already destroyed";
        destroyer.vector = std::make_unique<ScriptVector>(two);
        EXPECT_EQ(error_of([&] { call_member(destroyer.vector->value(), method, callback); }), wanted);
        destroyer.list = std::make_unique<ScriptList>(two);
        EXPECT_EQ(error_of([&] { call_member(destroyer.list->value(), method, callback); }), wanted);
        destroyer.map = std::make_unique<ScriptMap>(two);
        EXPECT_EQ(error_of([&] { call_member(destroyer.map->value(), method, callback); }), wanted);
    }
}

TEST(Container, a_failing_callback_leaves_everything_in_place) {
    RuntimeHost host;
    const ScriptValue vector = make_script_owned<ScriptVector>();
    for (const float x : {1.0f, 2.0f, 3.0f})
        call_member(vector, "push_back", number(x));
    host.add("vector", vector);
    const std::string program = "import vector; bad(x) { if (x = 3) { x.missing(); } return true; } "
                                "main() { vector.delete_if(bad); }";
    const std::size_t before = live_records();
    EXPECT_EQ(result_of(program, &host), "cant find member: missing in type <number>");
    EXPECT_EQ(walked(vector), (std::deque<float>{1, 2, 3}));
    EXPECT_EQ(live_records(), before);
}

TEST(Container, a_native_call_into_itself_is_bounded) {
    const ScriptValue vector = make_script_owned<ScriptVector>();
    // Without a script in between: each element is called with itself, and walks the vector again.
    const ScriptValue walk = vector.member(intern("for_each"));
    call_member(vector, "push_back", walk);
    EXPECT_EQ(error_of([&] { call_member(vector, "for_each", walk); }), "Script error: calls are nested too deeply");
    call_member(vector, "clear");
}

TEST(Container, long_chains_go_at_a_fixed_depth_and_circles_when_they_are_cut) {
    const std::size_t before = live_records();
    for (int kind = 0; kind < 4; ++kind) {
        ScriptValue chain;
        for (int i = 0; i < 100000; ++i) {
            ScriptValue outer;
            const int here = kind == 3 ? i % 3 : kind;
            if (here == 0) {
                outer = make_script_owned<ScriptVector>();
                call_member(outer, "push_back", chain);
            } else if (here == 1) {
                outer = make_script_owned<ScriptList>();
                call_member(outer, "push_back", ClassTag::instance().wrap(chain));
            } else {
                outer = make_script_owned<ScriptMap>();
                call_member(outer, "insert", number(0), chain);
            }
            chain = std::move(outer);
        }
        chain = {};
        ASSERT_EQ(live_records(), before);
    }
    ScriptValue circle = make_script_owned<ScriptVector>();
    call_member(circle, "push_back", circle);
    call_member(circle, "push_back", call_member(circle, "iterator"));
    call_member(circle, "clear");
    circle = {};
    EXPECT_EQ(live_records(), before);
}

} // namespace
} // namespace kst::script
