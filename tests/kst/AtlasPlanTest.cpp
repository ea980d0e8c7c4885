// Plans, and Ninja over them: both programs and ninja as a user would run them.

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <string>

namespace mosaicer {
namespace {

namespace fs = std::filesystem;
using test_support::TemporaryDirectory;
using test_support::tga_bytes;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Result {
    int exit_code = -1;
    std::string text; ///< standard output and standard error
};

class AtlasPlan : public testing::Test {
protected:
    Result shell(const std::string& command) const {
        const TemporaryDirectory output;
        const std::string line =
            "cd '" + folder.path().string() + "' && { " + command + "; } >'" + (output / "t") + "' 2>&1";
        const int status = std::system(line.c_str()); // NOLINT(concurrency-mt-unsafe)
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output.read("t")};
    }
    Result plan(const std::string& arguments) const {
        return shell(KST_PROGRAM " atlas plan --mosaicer " MOSAICER_PROGRAM " -o build.ninja " + arguments);
    }
    void plan_and_build(const std::string& arguments) const {
        const Result planned = plan(arguments);
        ASSERT_EQ(planned.exit_code, 0) << planned.text;
        const Result built = shell("ninja");
        ASSERT_EQ(built.exit_code, 0) << built.text;
    }

    /// What one ninja run did, in ascending order: "set ui", "pack ui", "plan build.ninja".
    std::vector<std::string> rebuilt() const {
        const Result built = shell("ninja");
        EXPECT_EQ(built.exit_code, 0) << built.text;
        std::vector<std::string> steps;
        std::istringstream lines(built.text); // "[3/8] set ui"
        for (std::string line; std::getline(lines, line);)
            if (const std::size_t end = line.find("] "); line.starts_with('[') && end != std::string::npos)
                steps.push_back(line.substr(end + 2));
        std::ranges::sort(steps);
        return steps;
    }

    /// As an editor would leave it, later than all files so far by what the disk's times can tell.
    void touch(const std::string& name) const {
        shell("sleep 0.02");
        const std::string bytes = folder.read(name);
        folder.write(name, bytes);
    }
    void rewrite(const std::string& name, const std::string& from, const std::string& to) const {
        std::string text = folder.read(name);
        ASSERT_NE(text.find(from), std::string::npos);
        folder.write(name, text.replace(text.find(from), from.size(), to));
        touch(name);
    }

    /// Each file by its bytes, which stand for themselves in no report of a failure: only their hash.
    std::map<std::string, std::size_t> bytes_below(const std::string& directory) const {
        std::map<std::string, std::size_t> bytes;
        for (const std::string& name : folder.files())
            if (name.starts_with(directory + "/"))
                bytes[name.substr(directory.size())] = std::hash<std::string>{}(folder.read(name));
        return bytes;
    }
    void expect_bytes_of_a_plain_run(const std::string& arguments, const std::string& switches = "") const {
        shell("rm -rf reference");
        const Result run = shell(MOSAICER_PROGRAM " " + switches + " " + arguments + " reference");
        ASSERT_EQ(run.exit_code, 0) << run.text;
        EXPECT_EQ(bytes_below("out"), bytes_below("reference"));
        EXPECT_THAT(bytes_below("out"), testing::Not(IsEmpty()));
    }

    TemporaryDirectory folder;
};

/// The example game, with a copy of its own.
class ExamplePlan : public AtlasPlan {
protected:
    ExamplePlan() { fs::copy(MOSAICER_SOURCE_DIR "/examples", folder.path(), fs::copy_options::recursive); }
};

TEST_F(ExamplePlan, makes_the_bytes_of_a_plain_run_and_then_nothing_more) {
    for (const std::string switches : {"-draft", "-draft -b -c -tag_mips"}) {
        shell("rm -rf out build.ninja.state");
        plan_and_build("textures atlas_set.xml out -- " + switches);
        expect_bytes_of_a_plain_run("textures atlas_set.xml", switches);
        EXPECT_THAT(rebuilt(), IsEmpty());
        // Every file that was made is known to Ninja, those of split sets too.
        shell("ninja -t clean");
        EXPECT_THAT(bytes_below("out"), IsEmpty());
    }
}

TEST_F(ExamplePlan, makes_anew_only_what_changed) {
    const std::string arguments = "textures atlas_set.xml out -- -draft";
    plan_and_build(arguments);

    touch("textures/ui/icon_undo.png");
    EXPECT_THAT(rebuilt(), ElementsAre("plan build.ninja", "set example/ui/hud"));
    fs::remove(folder.path() / "out/example/title/atlas0/atlas.png");
    EXPECT_THAT(rebuilt(), ElementsAre("set example/title"));
    rewrite("atlas_set.xml", "<!--", "<!-- As always:");
    EXPECT_THAT(rebuilt(), ElementsAre("plan build.ninja")) << "words change no set";
    rewrite("atlas_set.xml", "name=\"icon_undo\" rotation=\"90\"", "name=\"icon_undo\" rotation=\"270\"");
    EXPECT_THAT(rebuilt(), ElementsAre("plan build.ninja", "set example/ui/hud"));
    EXPECT_THAT(rebuilt(), IsEmpty());

    shell("sleep 0.02 && cp -p textures/particles/sparkle.png textures/particles/sparkle_2.png");
    const std::vector<std::string> particles{"pack example/particles", "plan build.ninja", "set example/particles"};
    EXPECT_EQ(rebuilt(), particles);
    expect_bytes_of_a_plain_run("textures atlas_set.xml", "-draft");
    shell("sleep 0.02 && rm textures/particles/sparkle_2.png");
    EXPECT_EQ(rebuilt(), particles);
    EXPECT_THAT(rebuilt(), IsEmpty());
    expect_bytes_of_a_plain_run("textures atlas_set.xml", "-draft");
}

TEST_F(ExamplePlan, keeps_plan_and_files_while_the_definition_is_broken) {
    plan_and_build("textures atlas_set.xml out -- -draft");
    const auto before = bytes_below("out");
    const std::string old_plan = folder.read("build.ninja");
    rewrite("atlas_set.xml", "name=\"icon_save\"", "name=\"icon_safe\"");
    const Result broken = shell("ninja");
    EXPECT_NE(broken.exit_code, 0);
    EXPECT_THAT(broken.text, HasSubstr("kst: Did not find texture icon_safe referenced in set example/ui/hud"));
    EXPECT_EQ(bytes_below("out"), before);
    EXPECT_EQ(folder.read("build.ninja"), old_plan);
    rewrite("atlas_set.xml", "name=\"icon_safe\"", "name=\"icon_save\"");
    EXPECT_THAT(rebuilt(), ElementsAre("plan build.ninja"));
}

/// What a remote executor does: each edge in a directory of its own that holds its inputs and nothing else.
TEST_F(ExamplePlan, needs_for_each_edge_only_what_it_names) {
    plan_and_build("textures atlas_set.xml out -- -draft");
    const Result farm = shell(R"sh(set -e
        for stamp in build.ninja.state/*.log; do
            rm -rf sandbox && mkdir -p sandbox/build.ninja.state
            ninja -t query "$stamp" | sed -n '/input:/,/outputs:/s/^    |* *//p' | while read -r input; do
                case $input in "$stamp" | /* | out/*) ;; *) cp --parents "$input" sandbox ;; esac
            done
            (cd sandbox && eval "$(cd .. && ninja -t commands -s "$stamp")")
            mkdir -p farm && cp -r sandbox/out/. farm
        done
        rm -rf out && mv farm out)sh");
    EXPECT_EQ(farm.exit_code, 0) << farm.text;
    expect_bytes_of_a_plain_run("textures atlas_set.xml", "-draft");
}

TEST_F(AtlasPlan, takes_names_with_blanks_quotes_and_signs) {
    const std::string odd = "o'd d$:|#\xC3\xA4";
    folder.write("my tex/" + odd + "/a b$.tga", tga_bytes(4, 4, 0xFF00FF00u));
    folder.write("my tex/c.tga", tga_bytes(4, 4, 0xFF00FF00u));
    folder.write("my sets$.xml", "<?xml version='1.0' encoding='UTF-8'?><g><texture_set name=\"it's $HOME: "
                                 "\xC3\xA4/x\"><t name='a b$'/></texture_set>"
                                 "<atlas name='-q [a,b]' autofill=\"" +
                                     odd + "\"/><atlas name='x/x'><t name='c' rename_to='$out'/></atlas></g>");
    const std::string arguments = "'my tex' 'my sets$.xml'";
    plan_and_build(arguments + " out");
    expect_bytes_of_a_plain_run(arguments);
    EXPECT_THAT(rebuilt(), IsEmpty());
    touch("my tex/" + odd + "/a b$.tga");
    EXPECT_THAT(rebuilt(), testing::SizeIs(4)) << "plan, pack and two sets";
}

TEST_F(AtlasPlan, builds_sets_that_hang_together_in_one_edge) {
    for (const char* const name : {"a", "b", "c"})
        folder.write("tex/" + std::string(name) + ".tga", tga_bytes(4, 4, 0xFF00FF00u));
    folder.write("sets.xml", "<g><atlas name='u'><t name='a' used_by='4'/></atlas><atlas name='w'><t name='b'/></atlas>"
                             "<atlas name='uw'><t name='b'/></atlas><atlas name='k1'><t name='c' used_by='1'/></atlas>"
                             "<atlas name='k2'><t name='c' used_by='2'/></atlas></g>");
    plan_and_build("tex sets.xml out");
    expect_bytes_of_a_plain_run("tex sets.xml");
    EXPECT_THAT(folder.read("out/k2/tdb_atlas_set.xml"), HasSubstr("groups=\"1 2 \""));
    touch("tex/b.tga");
    EXPECT_THAT(rebuilt(), ElementsAre("plan build.ninja", "set u"));
    touch("tex/c.tga");
    EXPECT_THAT(rebuilt(), ElementsAre("plan build.ninja", "set k1"));
}

TEST_F(AtlasPlan, builds_split_sets_that_have_no_part_of_a_name_in_common) {
    folder.write("tex/a.tga", tga_bytes(4, 4, 0xFF00FF00u));
    folder.write("sets.xml", "<g><atlas name='u'><t name='a' used_by='1'/></atlas>"
                             "<atlas name='w' autosplit='true'><t name='a' used_by='2'/></atlas></g>");
    plan_and_build("tex sets.xml out");
    expect_bytes_of_a_plain_run("tex sets.xml");
    EXPECT_THAT(folder.read("out/w/atlas0/tdb_atlas_set.xml"), HasSubstr("groups=\"1 2 \""));
}

TEST_F(AtlasPlan, counts_a_run_as_done_only_when_it_ended_well) {
    folder.write("tex/a.tga", tga_bytes(8, 8, 0xFF00FF00u));
    folder.write("sets.xml", "<atlas name='u' width='4' height='4'><t name='a'/></atlas>");
    ASSERT_EQ(plan("tex sets.xml out").exit_code, 0);
    for (int round = 0; round < 2; ++round) {
        const Result built = shell("ninja");
        EXPECT_NE(built.exit_code, 0);
        EXPECT_THAT(built.text, HasSubstr("Insert of a in atlas u failed, packing aborted"));
    }
    folder.write("sets.xml", "<atlas name='u' width='8' height='8'><t name='a'/></atlas>");
    touch("sets.xml");
    EXPECT_THAT(rebuilt(), ElementsAre("plan build.ninja", "set u"));
    EXPECT_THAT(rebuilt(), IsEmpty());
}

TEST_F(AtlasPlan, shows_warnings_of_a_run_and_no_more) {
    folder.write("tex/a.tga", tga_bytes(8, 8, 0xFF00FF00u));
    folder.write("tex/broken.tga", "x");
    folder.write("sets.xml", "<atlas name='u'><t name='a'/></atlas>");
    ASSERT_EQ(plan("tex sets.xml out").exit_code, 0);
    EXPECT_EQ(shell("ninja").text, "[1/1] set u\nThere were warnings: \ntex/broken.tga: Unexpected end of file\n\n");
}

TEST_F(AtlasPlan, is_the_same_text_each_time_and_left_alone_if_it_is) {
    folder.write("tex/a.tga", tga_bytes(8, 8, 0xFF00FF00u));
    folder.write("sets.xml", "<atlas name='u'><t name='a'/></atlas>");
    ASSERT_EQ(plan("tex sets.xml out").exit_code, 0);
    const auto time = fs::last_write_time(folder.path() / "build.ninja");
    const std::string text = folder.read("build.ninja");
    ASSERT_EQ(plan("./tex/ sets.xml out").exit_code, 0);
    EXPECT_NE(folder.read("build.ninja"), text) << "paths stand as given";
    ASSERT_EQ(plan("tex sets.xml out").exit_code, 0);
    EXPECT_EQ(folder.read("build.ninja"), text);
    const auto second_time = fs::last_write_time(folder.path() / "build.ninja");
    EXPECT_NE(second_time, time);
    ASSERT_EQ(plan("tex sets.xml out").exit_code, 0);
    EXPECT_EQ(fs::last_write_time(folder.path() / "build.ninja"), second_time);
    EXPECT_THAT(folder.files(), ElementsAre("build.ninja", "sets.xml", "tex/a.tga"));
}

TEST_F(AtlasPlan, refuses_what_is_no_switch_of_a_run) {
    folder.write("sets.xml", "<g/>");
    for (const std::string wrong : {"-pui", "-q", "-?", "junk", "''"}) {
        const Result refused = plan("tex sets.xml out -- " + wrong);
        EXPECT_EQ(refused.exit_code, 2) << wrong;
        EXPECT_THAT(refused.text, testing::StartsWith("kst: ")) << wrong;
    }
    EXPECT_EQ(plan("tex sets.xml out -- -bnone").text, "kst: no directory none for extra bitmaps\n");
    EXPECT_EQ(plan("tex none.xml out").text, "kst: cannot load none.xml\n");
    EXPECT_EQ(shell(KST_PROGRAM " atlas plan tex sets.xml out -o b --mosaicer no/where").text,
              "kst: no mosaicer at no/where; --mosaicer tells where it is\n");
    EXPECT_EQ(plan("tex sets.xml out").exit_code, 0) << "an empty definition gives an empty plan";
    EXPECT_EQ(shell("ninja").exit_code, 0);
}

} // namespace
} // namespace mosaicer
