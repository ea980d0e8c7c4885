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
#include "tests/script/RuntimeSupport.h"

namespace kst::script {
namespace {

ScriptValue number(float value) {
    return number_value(value);
}

const char* const helpers = R"(
import containers;
object text;
object target;
note(x) { text := text + x.string + " "; }
note_pair(k, v) { text := text + k.string + "=" + v.string + " "; }
all(container) { text := ""; container.for_each(note); return text; }
pairs(map) { text := ""; map.for_each(note_pair); return text; }
walked(container) { text := ""; for (x in container) { note(x); } return text; }
small(x) { return x < 3; }
fail_at_two(x) { if (x = 2) { x.missing(); } return true; }
grow(x) { target.push_back(x + 10); }
take_back(x) { target.pop_back(); return x = 1; }
shrink(x) { target.clear(); return true; }
grow_and_test(x) { target.push_back(x + 10); return x = 2; }
empty_value(k, v) { return v = ""; }
replace_value(k, v) { target.insert(k, v + 1); return true; }
walk_again(x) { target.for_each(walk_again); }
delete_again(x) { target.delete_if(delete_again); }
)";

struct ContainerCase {
    const char* body;
    const char* result;
};

class Containers : public testing::TestWithParam<ContainerCase> {};

TEST_P(Containers, give_what_was_worked_out_and_leave_nothing_behind) {
    const std::size_t before = live_records();
    {
        RuntimeHost host;
        EXPECT_EQ(result_of(helpers + std::string("main() { object c; ") + GetParam().body + " }", &host),
                  GetParam().result)
            << GetParam().body;
    }
    EXPECT_EQ(live_records(), before) << GetParam().body;
}

INSTANTIATE_TEST_SUITE_P(
    Vector, Containers,
    testing::Values(
        ContainerCase{"return containers.Vector(1, 2).type_string + containers.Vector().iterator().type_string;",
                      "<ScriptVector><ScriptVectorIterator>"},
        ContainerCase{"return all(containers.Range(4, \"x\", true));", "4 x true "},
        ContainerCase{
            "c := containers.Vector(1, 2); c.push_back(3); c.set(0, 9); return all(c) + c.size() + c.empty();",
            "9 2 3 3false"},
        ContainerCase{"c := containers.Vector(1, 2); return c.get(2) = void and c.get(-1) = void and c.get(1.9) = 2;",
                      "true"},
        ContainerCase{"containers.Vector(1, 2).set(2, 0);", "Index out of range: 2, size 2"},
        ContainerCase{"containers.Vector(1, 2).delete_at(-1);", "Index out of range: -1, size 2"},
        ContainerCase{"c := containers.Vector(1, 2, 3); c.delete_at(1); return all(c);", "1 3 "},
        ContainerCase{"c := containers.Vector(1, 2, 1, \"1\"); c.delete(1); return all(c);", "2 1 "},
        ContainerCase{"c := containers.Vector(5, 1, 7, 2); c.delete_if(small); return all(c);", "5 7 "},
        ContainerCase{"c := containers.Vector(1, \"a\"); return c.contains(\"a\") and not c.contains(2);", "true"},
        ContainerCase{"c := containers.Vector(1); c.resize(3); return c.size() + all(c); ", "4"},
        ContainerCase{"c := containers.Vector(1, 2); c.resize(1); return all(c);", "1 "},
        ContainerCase{"containers.Vector().resize(-1);", "Negative size: -1"},
        ContainerCase{"containers.Vector(1, 2).resize(1048579);", "Too many elements"},
        ContainerCase{"c := containers.Vector(9); c.set_range(0, 1, 0.25); return all(c);", "0 0.25 0.5 0.75 1 "},
        ContainerCase{"c := containers.Vector(9); c.set_range(2, 4); return all(c);", "2 3 4 "},
        ContainerCase{"c := containers.Vector(9); c.set_range(2, 1, 1); return c.size();", "0"},
        ContainerCase{"containers.Vector(9).set_range(0, 1, 0);", "set_range: the step does not lead to the end"},
        ContainerCase{"containers.Vector(9).set_range(0, 1, -1 / 8);", "set_range: the step does not lead to the end"},
        ContainerCase{"containers.Vector(9).set_range(1, 1048577);", "Too many elements"},
        ContainerCase{"containers.Vector(9).set_range(0, 1 / 0, 1);", "Too many elements"},
        ContainerCase{
            "c := containers.Vector(7, 8, 9); return all(c.indices()) + containers.Vector().indices().size();",
            "0 1 2 0"},
        ContainerCase{"c := containers.Vector(); c.order_important := true; return c.order_important;", "false"},
        ContainerCase{"c := containers.Vector(1); target := c.copy(); c.clear(); return all(c) + all(target);", "1 "},
        ContainerCase{"c := containers.Vector(1, 2, 3); return walked(c);", "1 2 3 "},
        ContainerCase{"c := containers.Vector(1, void, 3); return walked(c);", "1 "},
        // Changed while it is walked.
        ContainerCase{"target := containers.Vector(1, 2); target.for_each(grow); return all(target);", "1 2 11 12 "},
        ContainerCase{"target := containers.Vector(1, 2); target.delete_if(shrink); return all(target);", ""},
        ContainerCase{"target := containers.Vector(1, 2, 3); target.delete_if(grow_and_test); return all(target);",
                      "1 3 11 12 13 "},
        ContainerCase{"text := \"\"; c := containers.Vector(1, 2, 3); for (x in c) { note(x); if (x = 1) { "
                      "c.delete_at(0); c.push_back(4); } } return text;",
                      "1 3 4 "},
        ContainerCase{
            "text := \"\"; c := containers.Vector(1, 2, 3); for (x in c) { note(x); c.clear(); } return text;", "1 "},
        // What a walk holds on to.
        ContainerCase{"c := containers.Vector(4, 5).iterator(); c.next(); return c.next();", "5"},
        ContainerCase{"c := containers.Vector(4, 5).get; return c(1);", "5"},
        ContainerCase{"return containers.Vector(4, 5).iterator().next.type_string;", "<member():object>"},
        // Ends in an error, with the container whole.
        ContainerCase{"target := containers.Vector(1); target.for_each(walk_again);",
                      "Script error: calls are nested too deeply"},
        ContainerCase{"target := containers.Vector(1); target.delete_if(delete_again);",
                      "Script error: calls are nested too deeply"},
        ContainerCase{"containers.Vector(1).for_each(3);", "cant call this thing (type:<number>)"},
        ContainerCase{"containers.Vector().set(1);", "To few arguments to: <member(number,object)>"}));

INSTANTIATE_TEST_SUITE_P(
    ListMapAndBits, Containers,
    testing::Values(
        ContainerCase{"c := containers.List(1, 2); return c.type_string + c.iterator().type_string;",
                      "<ScriptList><ScriptListIterator>"},
        ContainerCase{"c := containers.List(1, 2); c.push_front(0); c.push_back(3); c.insert(2, 9); return all(c);",
                      "0 1 9 2 3 "},
        ContainerCase{"c := containers.List(1, 2, 3); return c.pop_front() + c.pop_back() * 10 + c.size() * 100;",
                      "131"},
        ContainerCase{
            "c := containers.List(); return c.pop_front() = void and c.pop_back() = void and c.front() = void "
            "and c.back() = void and c.empty();",
            "true"},
        ContainerCase{"c := containers.List(1, 2); return c.front() * 10 + c.back();", "12"},
        ContainerCase{"containers.List(1).insert(2, 0);", "Index out of range: 2, size 1"},
        ContainerCase{"c := containers.List(5, 1, 7); c.delete_if(small); return all(c) + c.contains(1);", "5 7 false"},
        ContainerCase{"c := containers.List(1, 2, 3); c.delete_if(fail_at_two);",
                      "cant find member: missing in type <number>"},
        ContainerCase{"target := containers.List(1, 2, 3); target.delete_if(take_back); return all(target);", ""},
        ContainerCase{"text := \"\"; c := containers.List(1, 2, 3); for (x in c) { note(x); c.push_front(0); } return "
                      "text + c.size();",
                      "1 2 3 6"},
        ContainerCase{"text := \"\"; c := containers.List(1, 2, 3, 4); for (x in c) { note(x); c.pop_front(); } return "
                      "text + c.size();",
                      "1 2 3 4 0"},
        ContainerCase{"c := containers.Map(\"b\", 2, \"a\", 1, \"b\", 3); return pairs(c) + c.size();", "a=1 b=3 2"},
        ContainerCase{"containers.Map(1);", "A map takes keys and values in turn"},
        ContainerCase{"c := containers.Map(1, 2); return c.get(2) = void and c.has(1) and not c.has(2);", "true"},
        ContainerCase{"c := containers.Map(); c.insert(2, \"x\"); c.insert(1, \"y\"); c.insert(2, \"z\"); return "
                      "pairs(c);",
                      "1=y 2=z "},
        ContainerCase{"c := containers.Map(1, \"\", 2, 3); c.delete_if(empty_value); return pairs(c);", "2=3 "},
        ContainerCase{"c := containers.Map(1, 2, 3, 4); c.delete(1); c.delete(7); return pairs(c) + c.empty();",
                      "3=4 false"},
        ContainerCase{
            "text := \"\"; for (k, v in containers.Map(3, \"c\", 1, \"a\")) { note_pair(k, v); } return text;",
            "1=a 3=c "},
        ContainerCase{"c := containers.Map(3, \"c\").iterator(); object i := c.next(); return c.type_string + "
                      "i.type_string + i.key + i.value + (c.next() = void);",
                      "<ScriptMapIterator><ScriptMapItem>3ctrue"},
        ContainerCase{"containers.Map(1, 2).iterator().next().key := 3;",
                      "cant set this to a value (type:<member():object>)"},
        ContainerCase{"text := \"\"; c := containers.Map(1, 1, 2, 2, 3, 3); for (k, v in c) { note(k); c.delete(k); if "
                      "(k = 2) { c.insert(4, 4); c.insert(0, 0); } } return text + pairs(c);",
                      "1 2 3 4 0=0 "},
        ContainerCase{"text := \"\"; c := containers.Map(1, 1, 2, 2); for (k, v in c) { note(k); c.clear(); } return "
                      "text + c.size();",
                      "1 0"},
        ContainerCase{"target := containers.Map(1, 1, 2, 2); target.delete_if(replace_value); return pairs(target);",
                      "1=2 2=3 "},
        ContainerCase{"c := containers.Map(1, 1); target := c.copy(); c.clear(); return pairs(c) + pairs(target);",
                      "1=1 "},
        ContainerCase{"c := containers.Map(0 / 0, \"nan\", 1, \"one\", 2, \"two\"); c.insert(0 / 0, \"again\"); return "
                      "pairs(c) + c.get(2);",
                      "1=one 2=two nan=again two"},
        ContainerCase{"c := containers.Bitfield(true, false, 1); return c.state(0).string + c.state(1) + c.state(34) + "
                      "c.size() + c.type_string;",
                      "truefalsetrue32<ScriptBitField>"},
        ContainerCase{"c := containers.Bitfield(); c.set_state(-1, true); target := c.copy(); c.set_state(63, false); "
                      "return target.state(31).string + c.state(31);",
                      "truefalse"},
        ContainerCase{"c := 0; for (bit in containers.Bitfield(1, 1, 0, 1)) { c := c * 2 + bit.number; } return c;",
                      "3.4896609e+09"}));

/// The elements of a container of numbers, as its own walk gives them.
std::vector<float> walked(const ScriptValue& container) {
    std::vector<float> numbers;
    const ScriptValue iterator = call_member(container, "iterator");
    for (ScriptValue v = call_member(iterator, "next"); !v.is_void(); v = call_member(iterator, "next"))
        numbers.push_back(v.to_number());
    return numbers;
}

TEST(ContainerModel, vector_and_list_do_as_the_standard_ones) {
    std::mt19937 random(5);
    for (int round = 0; round < 200; ++round) {
        const ScriptValue vector = make_script_owned<ScriptVector>(), list = make_script_owned<ScriptList>();
        std::vector<float> vector_model;
        std::deque<float> list_model;
        for (int step = 0; step < 60; ++step) {
            const auto x = static_cast<float>(random() % 6);
            const auto at = static_cast<float>(random() % 12);
            const auto place = static_cast<std::ptrdiff_t>(at);
            const bool exists = place < std::ssize(vector_model);
            switch (random() % 9) {
            case 0:
            case 1:
                call_member(vector, "push_back", number(x));
                vector_model.push_back(x);
                call_member(list, "push_back", number(x));
                list_model.push_back(x);
                break;
            case 2:
                call_member(list, "push_front", number(x));
                list_model.push_front(x);
                EXPECT_EQ(error_of([&] { call_member(vector, "set", number(at), number(x)); }) == "no error", exists);
                if (exists)
                    vector_model[static_cast<std::size_t>(place)] = x;
                break;
            case 3:
                EXPECT_EQ(error_of([&] { call_member(vector, "delete_at", number(at)); }) == "no error", exists);
                if (exists)
                    vector_model.erase(vector_model.begin() + place);
                break;
            case 4:
                call_member(vector, "delete", number(x));
                std::erase(vector_model, x);
                break;
            case 5:
                if (place > std::ssize(list_model))
                    break;
                call_member(list, "insert", number(at), number(x));
                list_model.insert(list_model.begin() + place, x);
                break;
            case 6:
                EXPECT_EQ(call_member(list, "pop_front").to_number(), list_model.empty() ? 0 : list_model.front());
                if (!list_model.empty())
                    list_model.pop_front();
                break;
            case 7:
                EXPECT_EQ(call_member(list, "pop_back").to_number(), list_model.empty() ? 0 : list_model.back());
                if (!list_model.empty())
                    list_model.pop_back();
                break;
            default:
                EXPECT_EQ(call_member(vector, "contains", number(x)).to_boolean(),
                          std::ranges::count(vector_model, x) > 0);
                EXPECT_EQ(call_member(vector, "get", number(at)).to_number(),
                          exists ? vector_model[static_cast<std::size_t>(place)] : 0);
            }
            ASSERT_EQ(walked(vector), vector_model);
            ASSERT_EQ(walked(list), std::vector<float>(list_model.begin(), list_model.end()));
            ASSERT_EQ(call_member(list, "size").to_number(), static_cast<float>(list_model.size()));
        }
    }
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
    EXPECT_EQ(walked(vector), (std::vector<float>{1, 2, 3}));
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
        for (int i = 0; i < 300000; ++i) {
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
