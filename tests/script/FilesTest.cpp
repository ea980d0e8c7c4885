// Files and XML nodes as programs see them.

#include <gtest/gtest.h>

#include "script/binding/NativeObjects.h"
#include "script/runtime/HostLibrary.h"
#include "script/runtime/ScriptFile.h"
#include "script/runtime/ScriptFileSystem.h"
#include "script/runtime/ScriptXMLNode.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tests/script/RunSource.h"
#include "tests/support/TemporaryDirectory.h"

namespace kst::script {
namespace {

struct BodyCase {
    const char* body;
    const char* result;
};

/// A directory is all of the name space; nothing that a program opened outlives it.
class Files : public testing::Test {
protected:
    Files() { files_.mount_directory("/", folder.path().string()); }
    void SetUp() override { live_before_ = NativeObjects::instance().live(); }
    void TearDown() override { EXPECT_EQ(NativeObjects::instance().live(), live_before_); }

    /// Runs the body of `main`; `files` is imported and `note(x)` adds to what `notes` holds.
    std::string run(const std::string& body) {
        HostLibrary host;
        host.add<ScriptFileSystem>("files", files_);
        return result_of("import files; object notes; note(x) { notes := notes + x + \" \"; }"
                         "main() { notes := \"\"; " +
                             body + "}",
                         &host);
    }
    void check(std::span<const BodyCase> cases) {
        for (const BodyCase& c : cases)
            EXPECT_EQ(run(c.body), c.result) << c.body;
    }

    test_support::TemporaryDirectory folder;

private:
    VirtualFileSystem files_;
    std::size_t live_before_ = 0;
};

TEST_F(Files, are_read_and_written) {
    folder.write("t.txt", "one\r\ntwo\n\nfour");
    const BodyCase cases[] = {
        {"for (line in files.open(\"t.txt\")) { note(\"[\" + line + \"]\"); } return notes;", "[one] [two] [] [four] "},
        {"object f := files.open(\"t.txt\"); f.read_line(); note(f.position()); note(f.read(2));"
         "note(f.at_end()); note(f.read_all().size); note(f.at_end()); note(f.read_line() = void); return notes;",
         "5 tw false 7 true true "},
        {"object f := files.open(\"T.TXT\"); f.set_position(-5); note(f.position()); f.set_position(1000000);"
         "note(f.position()); note(f.size()); note(f.name()); note(f); return notes;",
         "0 14 14 T.TXT <ScriptFile> "},
        {"object f := files.open(\"missing\"); note(f); note(f.is_open()); note(f.at_end()); note(f.read_line());"
         "note(f.read(10)); note(f.read_all().size); return notes;",
         "<NullScriptFile> false true   0 "},
        {"files.open(\"missing\").write(\"x\");", "Cannot write to missing: the file is not open"},
        {"return files.open(\"\");", "<NullScriptFile>"},
        {"object f := files.open(\"w.txt\", \"w\"); f.write(\"a\"); f.write_line(1.5); f.close(); note(f.is_open());"
         "f := files.open(\"w.txt\", \"a\"); f.write(\"end\"); f := void;"
         "note(files.open(\"w.txt\").read_all()); return notes;",
         "false a1.5\nend "},
        {"object f := files.open(\"w.txt\"); f.close(); f.write(1);", "Cannot write to w.txt: the file is not open"},
    };
    check(cases);
}

TEST_F(Files, the_file_system_offers_its_operations) {
    folder.write("d/a.txt", "a");
    folder.write("d/e/b.txt", "b");
    const BodyCase cases[] = {
        {"note(files.exists(\"d/A.txt\")); note(files.exists(\"nope\")); note(files.is_dir(\"d\")); return notes;",
         "true false true "},
        {"note(files.make_dir(\"n\")); note(files.make_dir(\"n\")); note(files.is_dir(\"n\")); return notes;",
         "true false true "},
        {"note(files.copy_file(\"d/a.txt\", \"n\")); return notes + files.open(\"n/a.txt\").read_all();", "true a"},
        {"note(files.can_write_to(\"d\")); note(files.can_write_to(\"x/y\")); return notes;", "true false "},
        {"note(files.delete_file(\"d\")); note(files.exists(\"d/e/b.txt\")); return notes;", "true false "},
        {"files.open(\"n/B.txt\", \"w\"); files.make_dir(\"n/sub\");"
         "for (name in files.list(\"n\")) { note(name); } note(files.list(\"n\", \"*\", true).get(0));"
         "note(files.list(\"n\", \"b*;*.txt\").size()); note(files.list(\"nowhere\").size()); return notes;",
         "a.txt b.txt sub 2 0 "},
        {"note(files.last_modified(\"nope\")); object t := files.last_modified(\"n/a.txt\"); note(t.type_string);"
         "note(t > files.last_modified(\"nope\")); return notes;",
         "0 <int64> true "},
        {"return files.full_path(\"n/A.txt\");", "n\\a.txt"},
        {"return files;", "<ScriptFileSystem>"},
    };
    check(cases);
    EXPECT_EQ(run("return files.system_path(\"n/a.txt\");"), folder / "n/a.txt");
}

TEST_F(Files, xml_nodes_answer_like_the_tree) {
    folder.write("t.xml", "<sets size='3'>\n<set name='a' x='1'/>text<other/><set name='b'>in</set></sets>");
    folder.write("bad.xml", "<sets>\n<set></sets>");
    folder.write("entity.xml", "<sets>&nope;</sets>");
    const BodyCase cases[] = {
        {"object r := files.parse_xml(\"t.xml\"); note(r); note(r.name()); note(r.num_children());"
         "note(r.parameter(\"size\")); note(r.has_parameter(\"size\")); note(r.has_parameter(\"x\"));"
         "note(r.parameter(\"x\")); note(r.parameter(\"x\", 7)); return notes;",
         "<XMLNode> sets 4 3 true false  7 "},
        {"object r := files.parse_xml(\"t.xml\"); for (c in r) { note(c.name() + c.line()); } return notes;",
         "set2 other2 set2 "},
        {"object r := files.parse_xml(\"t.xml\"); note(r.child(1).name()); note(r.child(1).text());"
         "note(r.child(-1) = void); note(r.child(4) = void); return notes;",
         "#text text true true "},
        {"object v := files.parse_xml(\"t.xml\").children(); note(v.size()); note(v.get(1).name());"
         "note(v.get(2).parameter(\"name\")); return notes;",
         "3 other b "},
        {"object m := files.parse_xml(\"t.xml\").child(0).parameter_map(); note(m.size()); note(m.get(\"x\"));"
         "for (name, text in m) { note(name + text); } return notes;",
         "2 1 namea x1 "},
        {"each(files.parse_xml(\"t.xml\")); return notes;} name_of(c) { note(c.parameter(\"name\")); }"
         "each(r) { r.for_each(\"set\", name_of);",
         "a b "},
        // The same node is the same object while a value of it lives; the root stays as long as a node.
        {"object c := files.parse_xml(\"t.xml\").child(3); note(c.child(0).text()); return notes;", "in "},
        {"object r := files.parse_xml(\"t.xml\"); object c := r.child(0); note(c = r.iterator().next());"
         "note(c = r.child(3)); c.extension := 5; note(r.child(0).extension.number); return notes;",
         "true false 5 "},
        {"object i := files.parse_xml(\"t.xml\").child(0).iterator(); note(i); note(i.next() = void);"
         "note(i.next() = void); return notes;",
         "<XMLNodeIterator> true true "},
        {"return files.parse_xml(\"missing.xml\") = void and files.parse_xml(\"entity.xml\") = void;", "true"},
        {"return files.parse_xml(\"t.xml\").nothing();", "cant find member: nothing in type <XMLNode>"},
    };
    check(cases);
    EXPECT_TRUE(run("files.parse_xml(\"bad.xml\");").starts_with("bad.xml (2): "));
}

TEST_F(Files, nodes_of_a_hosts_tree_die_with_its_root) {
    XMLDocument document;
    ASSERT_TRUE(document.parse_string("<a><b><c/></b></a>"));
    auto root = std::make_unique<ScriptXMLNode>(document);
    const ScriptValue child = root->child(0);
    ScriptValue iterator = child.member(intern("iterator")).call({});
    EXPECT_EQ(child.member(intern("name")).call({}).to_string(), "b");
    root.reset();
    EXPECT_THROW(child.member(intern("name")).call({}), DSError);
    EXPECT_THROW(iterator.member(intern("next")).call({}), DSError);
}

} // namespace
} // namespace kst::script
