#include "objects/stats/StatsLibrary.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <map>
#include <string>

#include "objects/stats/StatsBlockValues.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/xml/XMLDocument.h"
#include "tests/objects/stream_support.h"
#include "tests/script/RuntimeSupport.h"
#include "tests/support/TemporaryDirectory.h"

namespace kst {
namespace {

using Kind = StatsBlock::Value::Kind;

struct StatsTest : testing::Test {
    StatsBlockManager manager;

    void read(std::string_view definitions) {
        XMLDocument document;
        document.parse_string("<stats>" + std::string(definitions) + "</stats>");
        manager.read_definitions(document, "test.xml");
    }

    /// Runs the body of `main` with `stats`, the library.
    std::string run(const std::string& body) {
        script::RuntimeHost host;
        StatsLibrary library(manager);
        host.add("stats", library.value());
        return script::result_of("import stats; main() { object b; b := stats.make(\"b\"); " + body + "}", &host);
    }
};

TEST_F(StatsTest, DefaultsAreReadByKind) {
    struct Case {
        const char* type;
        const char* default_text; ///< null for none
        Kind kind;
        const char* text; ///< of the value
    };
    const Case cases[] = {
        {"number", "1.5", Kind::number, "1.5"},
        {"NUMBER", " -2e1 rest", Kind::number, "-20"},
        {"number", "none", Kind::number, "0"},
        {"number", nullptr, Kind::number, "0"},
        {"String", "Grom", Kind::string, "Grom"},
        {"string", nullptr, Kind::string, ""},
        {"boolean", "TRUE", Kind::boolean, "true"},
        {"boolean", "1", Kind::boolean, "false"},
        {"object", "x", Kind::object, ""},
        {"list", "x", Kind::list, "<ScriptList>"},
        {"vector", nullptr, Kind::vector, "<ScriptVector>"},
        {"mAp", nullptr, Kind::map, "<ScriptMap>"},
    };
    std::string definition = "<block name='all'>";
    for (const Case& c : cases)
        definition += "<var name='v' type='" + std::string(c.type) +
                      (c.default_text == nullptr ? "'/>" : "' default='" + std::string(c.default_text) + "'/>");
    read(definition + "</block>");
    const StatsBlock& block = manager.prototype("all");
    ASSERT_EQ(block.values().size(), std::size(cases));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(block.values()[i]->kind(), cases[i].kind) << i;
        EXPECT_EQ(block.values()[i]->get_string(), cases[i].text) << i;
    }
    EXPECT_TRUE(manager.faults().empty());
}

TEST_F(StatsTest, WhatIsWrongIsLeftOut) {
    read("<block><var name='x' type='number'/></block>"
         "<bloc name='typo'/>"
         "<block name='a'><var name='x' type='number'/><var type='list'/><var name='y'/><other/>"
         "  <var name='z' type='string'/></block>"
         "<block name='b'><var name='x' type='number'/><var name='y' type='float'/></block>"
         "<block name='c'><block name='inner'/></block>"
         "<block name='a'><var name='second' type='number'/></block>");
    EXPECT_EQ(manager.prototypes().size(), 2u);
    ASSERT_NE(manager.find("a"), nullptr);
    EXPECT_EQ(manager.find("a")->block.values().size(), 2u);
    EXPECT_EQ(manager.prototype("a").find_value("z"), 1);
    EXPECT_EQ(manager.find("b"), nullptr);
    EXPECT_TRUE(manager.prototype("b").values().empty());
    ASSERT_NE(manager.find("c"), nullptr);
    EXPECT_TRUE(manager.find("c")->block.values().empty());
    const std::string where = "test.xml (1): ";
    EXPECT_EQ(manager.faults(), (std::vector<std::string>{
                                    where + "a block without a name",
                                    where + "a variable of block a without name or type",
                                    where + "a variable of block a without name or type",
                                    where + "block b has a variable of unknown type float",
                                    where + "block a is defined already, in test.xml",
                                }));
}

TEST_F(StatsTest, FindsTheFirstOfAName) {
    // With up to five variables by a walk, with more by the table.
    for (const std::size_t extra : {std::size_t{0}, std::size_t{9}}) {
        std::string definition = "<block name='n" + std::to_string(extra) +
                                 "'>"
                                 "<var name='x' type='number'/><var name='twin' type='number'/>"
                                 "<var name='twin' type='string'/><var name='assign' type='number'/>";
        for (std::size_t i = 0; i < extra; ++i)
            definition += "<var name='extra" + std::to_string(i) + "' type='number'/>";
        read(definition + "</block>");
        const StatsBlock& block = manager.prototype("n" + std::to_string(extra));
        EXPECT_EQ(block.find_value("x"), 0);
        EXPECT_EQ(block.find_value("twin"), 1);
        EXPECT_EQ(block.find_value("assign"), 3);
        EXPECT_EQ(block.find_value("compare"), -1); // a member, no variable
        EXPECT_EQ(block.find_value("never heard of"), -1);
    }
}

TEST_F(StatsTest, ScriptsReadAndWriteVariables) {
    read("<block name='b'><var name='n' type='number' default='2'/><var name='s' type='string' default='x'/>"
         "<var name='flag' type='boolean'/><var name='o' type='object'/><var name='l' type='list'/>"
         "<var name='v' type='vector'/><var name='m' type='map'/></block>");
    struct Case {
        const char* body;
        const char* result;
    };
    const std::size_t live = script::NativeObjects::instance().live();
    for (const Case& c : {
             Case{"return b;", "<Statsblock:b>"},
             Case{"return b.n + 1;", "3"},
             Case{"b.n := \"7\"; return b.n * 2;", "14"},
             Case{"b.s := 1; b.s := b.s + \"!\"; return b.s;", "1!"},
             Case{"b.flag := 3; return b.flag;", "true"},
             Case{"b.o := b.make_new(); return b.o.n;", "2"},
             Case{"return b.find_value(\"m\");", "6"},
             Case{"return b.get_value(1);", "x"},
             Case{"return (b.get_value(7) = void) and (b.get_value(-1) = void);", "true"},
             Case{"b.set_value(0, 9); b.set_value(99, 1); b.set_value(-1, 1); return b.n;", "9"},
             Case{"return b.write_protected();", "false"},
             // A container is the variable's own; what is assigned is copied.
             Case{"b.l.push_back(5); b.l := b.l; b.l.push_back(6); return b.l.size();", "2"},
             Case{"object c; c := b.make_new(); c.l.push_back(1); return b.l.size() + c.l.size() * 10;", "10"},
             Case{"object old; old := b.l; b.l := old.copy(); return old;", ""}, // what was held before is dead
             Case{"b.m.insert(\"m\", b.m); b.m := b.m.get(\"m\"); return b.m.size();", "1"},
             Case{"b.v := b.l;", "Value is not of type <ScriptVector> it is of type <ScriptList>"},
             Case{"b.l := 1;", "Value is not of type <ScriptList> it is of type <number>"},
             Case{"b.m := void;", "Value is not of type <ScriptMap> it is of type <void>"},
             Case{"b.assign(b.m);", "Value is not of type <StatsBlock> it is of type <ScriptMap>"},
             Case{"return stats.make(\"none\");", "There is no stats block none"},
             // Copies, as wholes.
             Case{"object c; c := b.make_new(); c.n := 5; c.v.push_back(1); b.assign(c); c.n := 6;"
                  "return \"\" + b.n + b.v.size() + b.compare(c);",
                  "51false"},
             Case{"object c; c := b.make_new(); c.l.push_back(1); b.l.push_back(1); c.m.insert(1, 2);"
                  "b.m.insert(1, 2); return b.compare(c);",
                  "true"},
             Case{"object c; c := b.make_new(); c.m.insert(1, 2); b.m.insert(1, 3); return b.compare(c);", "false"},
             Case{"object m; m := b.get_values_as_map(); m.insert(\"n\", 8); m.insert(\"none\", 1);"
                  "b.set_values_from_map(m); return \"\" + b.n + m.size() + m.get(\"s\");",
                  "88x"},
             Case{"b.m.insert(\"m\", b.m); b.m.insert(\"n\", 4); b.set_values_from_map(b.m); return b.n;", "4"},
             Case{"object l; l := b.make_new().l; return l.size();",
                  "cant find member: size in type <destroyed c++class>"},
             Case{"object c; object l; c := b.make_new(); l := c.l.copy(); c := void; return l.size();", "0"},
             Case{"return b.missing;", "cant find member: missing in type <Statsblock:b>"},
         }) {
        EXPECT_EQ(run(c.body), c.result) << c.body;
        EXPECT_EQ(script::NativeObjects::instance().live(), live) << c.body;
    }
}

TEST_F(StatsTest, WriteProtectionStopsScripts) {
    read("<block name='b'><var name='n' type='number' default='2'/></block>");
    StatsBlock block = manager.prototype("b");
    block.set_write_protected(true);
    const script::ScriptValue five = script::number_value(5);
    script::ScriptMap pairs;
    pairs.insert(script::string_value("n"), five);
    for (const float expected : {2.0f, 5.0f}) {
        block.set_value(0, five);
        EXPECT_EQ(block.values()[0]->get_number(), expected);
        block.values()[0]->set_number(2);
        block.set_values_from_map(pairs);
        EXPECT_EQ(block.values()[0]->get_number(), expected);
        block.values()[0]->set_number(2);
        block.value().member(intern("n")).set(five);
        EXPECT_EQ(block.values()[0]->get_number(), expected);
        block.values()[0]->set_number(2);
        block.set_write_protected(false);
    }
    block.set_write_protected(true);
    StatsBlock copy = block;
    EXPECT_TRUE(copy.write_protected());
    EXPECT_EQ(copy.add_value(make_stats_value(Kind::list, intern("late"))), -1);
    EXPECT_EQ(copy.values().size(), 1u);
    copy.values()[0]->set_number(7); // the engine's own way
    EXPECT_EQ(copy.get_value(0).to_number(), 7);
    EXPECT_EQ(block.values()[0]->get_number(), 2);
}

TEST_F(StatsTest, AssignStopsAtTheFirstDifference) {
    read("<block name='a'><var name='x' type='number' default='1'/><var name='y' type='number' default='2'/></block>"
         "<block name='b'><var name='x' type='number' default='8'/><var name='z' type='number' default='9'/></block>"
         "<block name='c'><var name='x' type='number' default='5'/></block>"
         "<block name='d'><var name='x' type='string' default='1'/><var name='y' type='number' default='2'/></block>");
    StatsBlock a = manager.prototype("a");
    a.assign(manager.prototype("c")); // another number of values
    EXPECT_EQ(a.get_value(0).to_number(), 1);
    EXPECT_FALSE(a.compare(manager.prototype("d"))); // the same texts of another kind
    a.assign(manager.prototype("b"));
    EXPECT_EQ(a.get_value(0).to_number(), 8);
    EXPECT_EQ(a.get_value(1).to_number(), 2);
    EXPECT_FALSE(a.compare(manager.prototype("b")));
    EXPECT_FALSE(a.compare(manager.prototype("c")));
}

TEST_F(StatsTest, ChainsOfAnyLengthGoAtAFixedDepth) {
    read("<block name='b'><var name='o' type='object'/></block>");
    const std::size_t live = script::NativeObjects::instance().live();
    {
        script::ScriptValue chain;
        for (int i = 0; i < 200000; ++i) {
            const script::ScriptValue next = manager.prototype("b").make_new();
            next.member(intern("o")).set(chain);
            chain = next;
        }
    }
    EXPECT_EQ(script::NativeObjects::instance().live(), live);
}

TEST_F(StatsTest, NamesAreAllThatAStreamHolds) {
    using test_support::StreamBytes;
    read("<block name='b'><var name='x' type='number' default='1'/></block>");
    const test_support::Creators creators;
    ObjectDatabase database;
    database.objects.push_back(std::make_unique<StatsBlock>(manager.prototype("b")));
    const std::string bytes = StreamBytes().u32(1).object(0x185328D0, 1, StreamBytes().text("b")).bytes;
    EXPECT_EQ(test_support::saved(database), bytes);
    ObjectDatabase again;
    test_support::load(again, bytes);
    const auto& block = dynamic_cast<StatsBlock&>(*again.objects.at(0));
    EXPECT_EQ(block.type_name(), "<Statsblock:b>");
    EXPECT_TRUE(block.values().empty());
    for (const std::uint32_t base : {0x185328D0u, 0x2EB43C77u, 0x63BE3013u})
        EXPECT_TRUE(block.is_a(base));
}

TEST_F(StatsTest, OtherTypesGoByWayOfAScriptValue) {
    const auto value = [](Kind kind) { return make_stats_value(kind, intern("v")); };
    const auto number = value(Kind::number), text = value(Kind::string), flag = value(Kind::boolean);
    number->set_string("7.5");
    EXPECT_EQ(*static_cast<const float*>(number->raw_data()), 7.5f);
    EXPECT_EQ(number->get_string(), "7.5");
    number->set_bool(true);
    EXPECT_EQ(number->get_number(), 1);
    text->set_number(2.5f);
    EXPECT_EQ(*static_cast<const std::string*>(text->raw_data()), "2.5");
    text->set_bool(false);
    EXPECT_FALSE(text->get_bool()); // the word, no empty text
    flag->set_number(0.00004f);
    EXPECT_FALSE(*static_cast<const bool*>(flag->raw_data()));
    flag->set_string("no");
    EXPECT_EQ(flag->get_number(), 1);
    const auto list = value(Kind::list), object = value(Kind::object);
    EXPECT_EQ(list->raw_data(), nullptr);
    EXPECT_THROW(list->set_number(1), script::DSError);
    object->set_number(3);
    EXPECT_EQ(object->get_string(), "3");
}

TEST(StatsScanTest, FilesBeforeDirectoriesAndTheFirstStands) {
    const test_support::TemporaryDirectory directory;
    const std::string root = directory.path();
    const auto block = [](const std::string& name, const std::string& text) {
        return "<stats><block name='" + name + "'><var name='v' type='string' default='" + text + "'/></block></stats>";
    };
    directory.write("sb_b.xml", block("one", "b"));
    directory.write("SB_A.XML", block("one", "a"));
    directory.write("other.xml", block("unseen", "other"));
    directory.write("deep/down.d/sb_c.xml", block("two", "deep"));
    directory.write("deep/sb_one.xml", block("one", "deep"));
    directory.write("deep/sb_broken.xml", "<stats><block name='lost'>");
    directory.write("deep/sb_empty.xml", "");
    std::filesystem::create_directory_symlink(directory.path(), directory.path() / "deep" / "again");

    VirtualFileSystem files;
    DiskFileSystem disk;
    files.mount("/", &disk, /*owned=*/false);
    {
        const StatsBlockManager manager(root);
        EXPECT_EQ(StatsBlockManager::instance(), &manager);
        std::map<std::string, std::string> found;
        for (const auto* prototype : manager.prototypes())
            found[idstring_text(prototype->block.name())] = prototype->block.get_value(0).to_string();
        EXPECT_EQ(found, (std::map<std::string, std::string>{{"one", "a"}, {"two", "deep"}}));
        EXPECT_EQ(manager.faults().size(), 4u); // two doubles, a broken file and an empty one
    }
    EXPECT_EQ(StatsBlockManager::instance(), nullptr);
}

} // namespace
} // namespace kst
