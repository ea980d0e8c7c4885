// Runs the program as a shell would: arguments in; exit code, standard output and standard error out.

#include "tests/kst/KstProgram.h"
#include "tests/support/tga_bytes.h"

namespace mosaicer {
namespace {

using test_support::KstProgram;
using test_support::Result;
using test_support::tga_bytes;
using testing::HasSubstr;

class Kst : public KstProgram {};

TEST_F(Kst, tells_help_and_version_and_refuses_wrong_command_lines) {
    for (const char* arguments : {"--help", "--version"})
        EXPECT_EQ(run({arguments}).exit_code, 0);
    EXPECT_THAT(run({"xml", "dump", "--help"}).out, HasSubstr("--lines"));
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{},
                                                  {"nothing"},
                                                  {"xml"},
                                                  {"eval"},
                                                  {"eval", "1", "2"},
                                                  {"image", "info", "a", "--nope"},
                                                  {"bundle", "create", "a", "b", "--version", "3"}}) {
        const Result result = run(wrong);
        EXPECT_EQ(result.exit_code, 2) << testing::PrintToString(wrong);
        EXPECT_THAT(result.err, testing::StartsWith("kst: "));
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
    }
}

TEST_F(Kst, evaluates_expressions) {
    expect({"eval", "length(vector(3, 4, 0))"}, 0, "5.000000 5.000000 5.000000\n", "");
    expect({"eval", "vector(1, 2, 3) * 2"}, 0, "2.000000 4.000000 6.000000\n", "");
    expect({"eval", "--", "-2 + 1"}, 0, "-1.000000 -1.000000 -1.000000\n", "");
    expect({"eval", "2 * nosuch"}, 1, "", "kst: Unknown identifier nosuch\n");
}

TEST_F(Kst, dumps_trees_with_macros_and_escapes) {
    folder.write("A b.xml", "<root a=\"x&lt;\" b='&amp;\"'>\n <xdefine name=\"two(p,q)\" value=\"$p$q\"/>\n"
                            " <sub>@two(1,2)\tend</sub>\n</root>");
    const std::string tree = "root a=\"x&lt;\" b=\"&amp;amp;&quot;\"\n"
                             "  #macro @two($p,$q)\n"
                             "  sub\n"
                             "    #text \"12&#9;end\"\n";
    expect({"xml", "dump", "A b.xml"}, 0, tree, "");
    const Result lines = run({"xml", "--lines", "dump", "A b.xml"});
    EXPECT_EQ(lines.exit_code, 2) << "an option belongs to its own subcommand";
    EXPECT_EQ(run({"xml", "dump", "--lines", "A b.xml"}).out, run({"xml", "dump", "A b.xml", "--lines"}).out);
    EXPECT_THAT(run({"xml", "dump", "A b.xml", "--lines"}).out, testing::StartsWith("1 root a="));
}

TEST_F(Kst, tells_what_is_wrong_with_an_xml_file) {
    folder.write("entity.xml", "<a>&nosuch;</a>");
    folder.write("bad.xml", "<a>\n</b>");
    folder.write("none.xml", "");
    expect({"xml", "dump", "entity.xml"}, 1, "a\n  #text \"&amp;nosuch;\"\n", "kst: unknown entity in entity.xml\n");
    expect({"xml", "dump", "bad.xml"}, 1, "", "kst: bad.xml (2): Identifiers must match\n");
    expect({"xml", "dump", "none.xml"}, 1, "", "kst: cannot load none.xml\n");
    expect({"xml", "dump", "nowhere.xml"}, 1, "", "kst: cannot load nowhere.xml\n");
    // A directory is there, but the host opens it for nobody.
    expect({"xml", "dump", "."}, 1, "", "kst: cannot load .\n");
    expect({"xml", "compile", "."}, 1, "", "kst: cannot load .\n");
}

TEST_F(Kst, compiles_a_file_that_then_loads_in_its_place) {
    folder.write("s.xml", "<a b=\"1\"><c/></a>");
    expect({"xml", "compile", "s.xml"}, 0, "", "");
    EXPECT_EQ(folder.read("s.xml.bin").substr(0, 4), std::string("XML\1", 4));
    expect({"xml", "dump", "--lines", "s.xml"}, 0, "0 a b=\"1\"\n0   c\n", "");
    expect({"xml", "compile", "s.xml", "-o", "nowhere/x.bin"}, 1, "", "kst: cannot write nowhere/x.bin\n");
}

TEST_F(Kst, tells_and_converts_images) {
    folder.write("p.tga", tga_bytes(4, 2, 0x80112233u));
    expect({"image", "info", "p.tga"}, 0, "format=11 width=4 height=2 levels=1 faces=1\n", "");
    expect({"image", "convert", "p.tga", "q.tga"}, 0, "", "");
    expect({"image", "info", "q.tga"}, 0, "format=11 width=4 height=2 levels=1 faces=1\n", "");
    EXPECT_EQ(folder.read("q.tga").substr(18, 4), "\x33\x22\x11\x80");
    expect({"image", "convert", "p.tga", "q.png", "--level", "1"}, 1, "", "kst: no level 1 in p.tga: it has 1\n");
    expect({"image", "convert", "p.tga", "q.gif"}, 1, "",
           "kst: cannot tell the format of q.gif: its name must end in .png, .tga or .bmp\n");
    expect({"image", "info", "none.dds"}, 1, "", "kst: Image parser cannot open none.dds.\n");
    // 4 by 1 luminance, and a head that tells 99 levels: only the first has pixels.
    const std::string tail(3, '\0');
    folder.write("flat.mip", "MIP2\1" + tail + '\0' + tail + '\4' + tail + '\1' + tail + 'c' + tail + "abcd");
    expect({"image", "convert", "flat.mip", "q.tga"}, 0, "", "");
    EXPECT_EQ(folder.read("q.tga").substr(18, 8), "aaa\xFF"
                                                  "bbb\xFF");
    for (const char* level : {"1", "40"})
        expect({"image", "convert", "flat.mip", "q.tga", "--level", level}, 1, "",
               std::string("kst: level ") + level + " of flat.mip has no pixels\n");
    folder.write("huge.tga", tga_bytes(65535, 0) + std::string(100, 'x'));
    EXPECT_EQ(run({"image", "convert", "huge.tga", "q.png"}).exit_code, 1);
}

TEST_F(Kst, dumps_object_streams) {
    // A constant of 1, then an object of a type that there is not.
    const std::string constant("\x7E\x69\x60\x20\7\0\0\0\6\0\0\0a\0\0\0\x80\x3F", 18);
    folder.write("one.objects", std::string("\1\0\0\0", 4) + constant);
    folder.write("two.objects", std::string("\2\0\0\0", 4) + constant + std::string("\1\2\3\4\0\0\0\0\0\0\0\0", 12));
    const std::string line = "ConstFloatController 0x2060697E ref=7 size=6 name=\"a\" value=1\n";
    expect({"objects", "dump", "one.objects"}, 0, line, "");
    expect({"objects", "dump", "two.objects"}, 1, line,
           "kst: ObjectDatabase::load_content() unknown object type 0x04030201 in two.objects\n");
    expect({"objects", "dump", "none.objects"}, 1, "", "kst: cannot open none.objects\n");
}

TEST_F(Kst, packs_lists_and_unpacks_bundles) {
    folder.write("tree/B.txt", "bee");
    folder.write("tree/Dir/a.bin", std::string("\0\1\2", 3));
    for (const char* version : {"1", "2"}) {
        expect({"bundle", "create", "t.bundle", "tree", "--version", version}, 0, "", "");
        const Result list = run({"bundle", "list", "t.bundle"});
        EXPECT_THAT(list.out, testing::MatchesRegex("f b.txt [0-9]+ 3\nd dir\nf dir/a.bin [0-9]+ 3\n"));
        const std::string target = std::string("out") + version;
        expect({"bundle", "extract", "t.bundle", target}, 0, "", "");
        EXPECT_EQ(folder.read(target + "/b.txt"), "bee");
        EXPECT_EQ(folder.read(target + "/dir/a.bin"), std::string("\0\1\2", 3));
    }
}

TEST_F(Kst, refuses_entries_of_a_bundle_that_would_leave_the_directory) {
    const std::string header("BNDL\2\0\0\0\0\0\0\0\0\0\0\0", 16);
    const auto file = [](const std::string& name) {
        return std::string("\2\0\0\0\0\0\0\0\0\0\0\0\0\1", 14) + name + std::string(1, '\0');
    };
    for (const char* name : {"../up", "..", "a/b", "/abs"}) {
        folder.write("bad.bundle", header + file("good") + file(name) + "\3");
        const Result result = run({"bundle", "extract", "bad.bundle", "x"});
        EXPECT_EQ(result.exit_code, 1) << name;
        EXPECT_THAT(result.err, HasSubstr(name));
        EXPECT_THAT(folder.files(), testing::UnorderedElementsAre("bad.bundle", "x/good"));
    }
    expect({"bundle", "list", "nowhere.bundle"}, 1, "", "kst: cannot open nowhere.bundle\n");
    folder.write("no.bundle", "hello");
    expect({"bundle", "list", "no.bundle"}, 1, "", "kst: no.bundle is no bundle\n");
}

TEST_F(Kst, compiles_and_lists_scripts) {
    folder.write("p.kvs", "main() {\n    return 1;\n}\n");
    folder.write("bad.kvs", "main() {\n    return\n}\n");
    const Result list = run({"script", "list", "p"});
    EXPECT_EQ(list.exit_code, 0) << list.err;
    EXPECT_THAT(list.out, testing::AllOf(HasSubstr("\tpush\t1\n"), HasSubstr("\treturn")));
    expect({"script", "compile", "p.kvs"}, 0, "", "");
    EXPECT_EQ(folder.read("p.kvx").substr(0, 4), std::string("KVX\0", 4));
    expect({"script", "compile", "p", "-o", "q.kvx", "--debug"}, 0, "", "");
    EXPECT_THAT(folder.read("q.kvx"), HasSubstr("p.kvs"));
    const Result bad = run({"script", "compile", "bad"});
    EXPECT_EQ(bad.exit_code, 1);
    EXPECT_THAT(bad.err, testing::StartsWith("kst: bad.kvs(3):"));
    EXPECT_FALSE(std::filesystem::exists(folder / "bad.kvx"));
    expect({"script", "list", "nowhere"}, 1, "", "kst: cannot open nowhere.kvs\n");
}

TEST_F(Kst, runs_scripts) {
    folder.write("d/p.kvs", "import print, tools.double;\n"
                            "main(a, b) { print(\"got\", a, b); return double(21); }\n"
                            "silent() { }\n"
                            "fail() { inner(); }\n"
                            "inner() { return void.x; }\n");
    folder.write("d/tools.kvs", "double(x) { return x * 2; }\n");
    folder.write("e/tools.kvs", "double(x) { return \"other \" + x; }\n");
    folder.write("d/bad.kvs", "main() {\n return\n}\n");
    expect({"script", "run", "d/p.kvs"}, 0, "got  \n42\n", "");
    expect({"script", "run", "d/p", "--", "-x", "--root"}, 0, "got -x --root\n42\n", "");
    expect({"script", "run", "a b", "--call", "silent"}, 1, "", "kst: Script: a b not found!\n");
    expect({"script", "run", "--call", "silent", "d/p.kvx", "unused"}, 0, "", "");
    expect({"script", "run", "d/p", "1", "--root", "e"}, 0, "got 1 \nother 21\n", "");
    expect({"script", "run", "d/p", "--call", "nothing"}, 1, "", "kst: function nothing not found\n");
    expect({"script", "run", "d/p", "--call", "fail"}, 1, "",
           "kst: cant find member: x in type <void>\n\td/p.kvs(5)\n\td/p.kvs(4)\n");
    expect({"script", "run", "d/bad"}, 1, "",
           "kst: d/bad.kvs(3):syntax error\nd/bad.kvs(3):Non valid statement (token:})\n");
    EXPECT_EQ(folder.files().size(), 4U); // mode 0 writes nothing
    EXPECT_EQ(run({"script", "run", "d/p", "--mode", "5"}).exit_code, 2);
    expect({"script", "run", "d/p", "--mode", "2"}, 0, "got  \n42\n", "");
    EXPECT_THAT(folder.read("d/p.kvx"), HasSubstr("p.kvs"));
    folder.write("d/p.kvx", folder.read("d/p.kvx").substr(0, 40));
    expect({"script", "run", "d/p"}, 1, "", "kst: d/p.kvx: damaged compiled script: the code is cut off\n");
}

TEST_F(Kst, lists_stats_blocks_and_gives_them_to_scripts) {
    folder.write("s/deep/sb_orc.xml", "<stats><block name='Orc'><var name='health' type='number' default='100'/>\n"
                                      "<var name='title' type='string' default='Grom \\ Hell'/>"
                                      "<var name='loot' type='LIST'/></block></stats>");
    folder.write("s/sb_bad.xml", "<stats>\n<block name='Elf'><var name='x' type='int'/></block></stats>");
    folder.write("p.kvs", "import print, stats, timers, math, containers;\n"
                          "main() { object o; o := stats.make(\"Orc\"); o.health := math.sqrt(o.health);\n"
                          " o.loot.push_back(containers.Vector(1, 2)); timers.tick();\n"
                          " print(o, o.health, o.loot.size(), timers.main().time() > 0); }\n");
    const std::string fault = "kst: s/sb_bad.xml (2): block Elf has a variable of unknown type int\n";
    expect({"stats", "list", "s"}, 0,
           "Orc (s/deep/sb_orc.xml)\n  health number 100\n  title string \"Grom \\\\ Hell\"\n  loot list\n", fault);
    expect({"script", "run", "p", "--stats", "s"}, 0, "<Statsblock:Orc> 10 1 true\n", fault);
    expect({"stats", "list", "s//"}, 0, run({"stats", "list", "s"}).out, fault);
    folder.write("odd/sb_odd.xml", "<stats><block name='a\x1b[31m b'><var name='' type='map'/></block></stats>");
    expect({"stats", "list", "odd"}, 0, "\"a\\x1B[31m b\" (odd/sb_odd.xml)\n  \"\" map\n", "");
    expect({"stats", "list", "none"}, 1, "", "kst: no directory none\n");
    EXPECT_EQ(run({"script", "run", "p"}).exit_code, 1); // nothing to import as stats
}

TEST_F(Kst, reports_atlases_and_what_is_wrong_with_them) {
    folder.write("out/a/tdb_atlas_set.xml", "<atlas_set name=\"a\"/>");
    folder.write("out/a/atlas.tga", tga_bytes(4, 4));
    const Result good = run({"atlas", "report", "out", "-o", "page.html", "--max-size", "64"});
    EXPECT_EQ(good.exit_code, 0) << good.err;
    EXPECT_EQ(good.out, "page.html: 1 atlas, 0 texture sets, 0.1 MB, pictures up to 64 texels a side\n");
    folder.write("out/b/tdb_texture_set.xml", "<texture_set><image name=\"x\"/><image name=\"y\"/></texture_set>");
    const Result faulty = run({"atlas", "report", "-o", "page.html", "out"});
    EXPECT_EQ(faulty.exit_code, 1);
    EXPECT_EQ(faulty.err, "kst: b/x: there is no image of that name (.dds, .tga, .png, .bmp)\n"
                          "kst: b/y: there is no image of that name (.dds, .tga, .png, .bmp)\n"
                          "kst: 2 faults in the outputs; the page shows the rest\n");
    EXPECT_THAT(folder.read("page.html"), HasSubstr("b/x: there is no image"));
    folder.write("empty/readme.txt", "");
    expect({"atlas", "report", "empty", "-o", "none.html"}, 1, "",
           "kst: there is no atlas and no texture set below empty\n");
    expect({"atlas", "report", "nowhere", "-o", "none.html"}, 1, "",
           "kst: cannot read nowhere: there is no such directory\n");
    expect({"atlas", "report", "out", "-o", "nowhere/page.html"}, 1, "", "kst: cannot write nowhere/page.html\n");
    EXPECT_EQ(run({"atlas", "report", "out"}).exit_code, 2);
    EXPECT_EQ(run({"atlas"}).exit_code, 2);
    EXPECT_EQ(folder.read("none.html"), "");
}

} // namespace
} // namespace mosaicer
