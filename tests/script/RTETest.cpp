#include "script/runtime/ScriptRTE.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <sstream>

#include "script/language/CompiledFile.h"
#include "script/runtime/ArchiveScanner.h"
#include "script/runtime/HostLibrary.h"
#include "script/runtime/PrintFunction.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tests/support/TemporaryDirectory.h"

namespace kst::script {
namespace {

using test_support::TemporaryDirectory;
using Mode = ScriptRTE::Mode;

/// A tree of scripts on the disk, which is all of the name space.
class RTE : public testing::Test {
protected:
    RTE() { files_.mount_directory("/", folder.path().string()); }

    ScriptRTE environment(Mode mode = Mode::read_only) { return ScriptRTE({.root = "", .mode = mode, .host = &host}); }

    std::string text_of_main(ScriptRTE& environment, const std::string& name, Library* extra = nullptr) {
        try {
            const auto program = environment.start(name, extra);
            return environment.call(*program, intern("main"), {}).to_string();
        } catch (const ScriptRTE::Error& error) {
            return error.what();
        }
    }
    std::string text_of_main(const std::string& name, Library* extra = nullptr) {
        ScriptRTE fresh = environment();
        return text_of_main(fresh, name, extra);
    }

    /// Compiles `text` to a file; the time is that much later than the source's.
    void compile(const std::string& name, const std::string& text, std::chrono::seconds later) {
        const std::string kept = folder.read(name + ".kvs");
        folder.write(name + ".kvs", text);
        environment(Mode::compile).load(name);
        folder.write(name + ".kvs", kept);
        const auto time = std::filesystem::last_write_time(folder / (name + ".kvs"));
        std::filesystem::last_write_time(folder / (name + ".kvx"), time + later);
    }

    TemporaryDirectory folder;
    HostLibrary host;

private:
    VirtualFileSystem files_;
};

/// Tells who it is.
class Named : public Bound<Named> {
public:
    static constexpr std::string_view script_name = "Named";
    explicit Named(std::string who) : who_(std::move(who)) {}
    static void bind(StaticMemberSet<Named>& members) { members.method<&Named::who>("who"); }
    const std::string& who() const { return who_; }

private:
    std::string who_;
};

const std::string says_source = "main() { return \"source\"; }";
const std::string says_compiled = "main() { return \"compiled\"; }";

TEST_F(RTE, modes_say_whether_compiled_files_are_used_saved_and_with_lines) {
    struct Case {
        Mode mode;
        bool uses_current;
        bool saves;
        bool lines;
    };
    for (const Case& c : {Case{Mode::read_only, true, false, false}, Case{Mode::save, true, true, false},
                          Case{Mode::save_debug, true, true, true}, Case{Mode::compile, false, true, false},
                          Case{Mode::compile_debug, false, true, true}}) {
        SCOPED_TRACE(static_cast<int>(c.mode));
        folder.write("p.kvs", says_source);
        for (const int later : {10, 0, -10}) {
            compile("p", says_compiled, std::chrono::seconds(later));
            ScriptRTE rte = environment(c.mode);
            EXPECT_EQ(text_of_main(rte, "p"), c.uses_current && later >= 0 ? "compiled" : "source") << later;
        }
        std::filesystem::remove(folder / "p.kvx");
        ScriptRTE rte = environment(c.mode);
        EXPECT_EQ(text_of_main(rte, "p"), "source");
        EXPECT_EQ(std::filesystem::exists(folder / "p.kvx"), c.saves);
        if (!c.saves)
            continue;
        Archive archive = kst::open("p.kvx", "r");
        const auto file = read_compiled_file(archive, /*skip_debug_block=*/false);
        EXPECT_EQ(file->source_path, c.lines ? "p.kvs" : "");
        // Unresolved names: the file was written ahead of the run, or as if.
        EXPECT_EQ(file->lines.size(), c.lines ? file->code.size() : 0);
    }
}

TEST_F(RTE, a_compiled_file_alone_is_enough) {
    folder.write("p.kvs", says_source);
    compile("p", says_compiled, std::chrono::seconds(0));
    std::filesystem::remove(folder / "p.kvs");
    EXPECT_EQ(text_of_main("p"), "compiled");
    std::filesystem::remove(folder / "p.kvx");
    EXPECT_EQ(text_of_main("p"), "Script: p not found!");
}

TEST_F(RTE, a_file_that_is_no_compiled_script_is_passed_over) {
    folder.write("p.kvs", says_source);
    folder.write("p.kvx", "something else");
    EXPECT_EQ(text_of_main("p"), "source");
}

TEST_F(RTE, a_damaged_compiled_file_is_refused_by_name) {
    folder.write("p.kvs", "f(a) { return a.size; } main() { object v := \"abc\"; return f(v); }");
    environment(Mode::compile_debug).load("p");
    std::filesystem::remove(folder / "p.kvs");
    const std::string whole = folder.read("p.kvx");
    for (std::size_t size = 4; size < whole.size(); ++size) {
        folder.write("p.kvx", whole.substr(0, size));
        EXPECT_THAT(text_of_main("p"), testing::StartsWith("p.kvx: damaged compiled script: ")) << size;
    }
    for (std::size_t at = 4; at < whole.size(); ++at) {
        std::string flipped = whole;
        flipped[at] = static_cast<char>(flipped[at] ^ 0x41);
        folder.write("p.kvx", flipped);
        text_of_main("p"); // any result, any error, no crash
    }
}

TEST_F(RTE, a_file_that_cannot_be_opened_is_named) {
    // Sockets have names, and nobody opens them.
    for (const char* const name : {"source.kvs", "compiled.kvx"})
        ASSERT_EQ(::mknod((folder / name).c_str(), S_IFSOCK | 0600, 0), 0);
    EXPECT_THAT(text_of_main("source"), testing::EndsWith("Cannot open " + (folder / "source.kvs")));
    EXPECT_THAT(text_of_main("compiled"), testing::EndsWith("Cannot open " + (folder / "compiled.kvx")));
    folder.write("p.kvs", "import source; main() {}");
    EXPECT_THAT(text_of_main("p"), testing::EndsWith("Cannot open " + (folder / "source.kvs")));
}

TEST_F(RTE, code_is_loaded_once_and_counts_its_programs) {
    folder.write("d/p.kvs", says_source);
    ScriptRTE rte = environment();
    const std::size_t index = rte.load("d/p");
    std::filesystem::remove(folder / "d/p.kvs");
    EXPECT_EQ(rte.load("d\\P"), index); // the same path
    {
        const auto first = rte.start("d/p");
        const auto second = rte.start("d/p");
        EXPECT_EQ(rte.record(index).users, 2U);
    }
    EXPECT_EQ(rte.record(index).users, 0U);
    EXPECT_EQ(rte.record(index).script_name, "d/p");
    EXPECT_EQ(rte.record(index).source_path, "d/p.kvs");
}

TEST_F(RTE, imports_come_from_the_caller_the_host_the_lib_and_the_tree_in_this_order) {
    const auto script = [](const std::string& who) { return "who() { return \"" + who + "\"; }"; };
    folder.write("d/p.kvs", "import a, b, c, e; main() { return a.who() + b.who() + c.who() + e.who(); }");
    for (const std::string name : {"a", "b", "c", "e"})
        folder.write(name + ".kvs", script(name + "-tree "));
    for (const std::string name : {"a", "b", "c"})
        folder.write("d/lib/" + name + ".kvs", script(name + "-lib "));
    host.add<Named>("a", "a-host ");
    host.add<Named>("b", "b-host ");
    HostLibrary extra;
    extra.add<Named>("a", "a-extra ");
    EXPECT_EQ(text_of_main("d/p", &extra), "a-extra b-host c-lib e-tree ");
    // Scripts of the lib see the tree and then the host, and nothing of the caller.
    folder.write("d/lib/c.kvs", "import a, e; who() { return a.who() + e.who(); }");
    EXPECT_EQ(text_of_main("d/p", &extra), "a-extra b-host a-tree e-tree e-tree ");
}

TEST_F(RTE, errors_carry_their_text_and_their_trace) {
    folder.write("d/p.kvs", "import q;\n"
                            "main() {\n"
                            "  q.deep(2); }\n"
                            "missing() { return q.nothing(); }\n");
    folder.write("q.kvs", "deep(n) {\n"
                          "  if (n = 0) { return void.x; }\n"
                          "  return deep(n - 1); }\n");
    ScriptRTE rte = environment();
    const auto program = rte.start("d/p");
    EXPECT_EQ(rte.stack_text(), "");
    try {
        rte.call(*program, intern("main"), {});
        FAIL();
    } catch (const ScriptRTE::Error& error) {
        EXPECT_STREQ(error.what(), "cant find member: x in type <void>");
        EXPECT_EQ(error.place(), "\tq.kvs(2)\n");
        EXPECT_EQ(rte.stack_text(), "\tq.kvs(3)\n\tq.kvs(3)\n\td/p.kvs(3)\n");
    }
    try {
        rte.call(*program, intern("missing"), {});
        FAIL();
    } catch (const ScriptRTE::Error& error) {
        EXPECT_STREQ(error.what(), "cant call this thing (type:<void>)");
        EXPECT_EQ(error.place(), ""); // the newest call says it
        EXPECT_EQ(rte.stack_text(), "\td/p.kvs(4)\n");
    }
    EXPECT_EQ(environment().stack_text(), "\t??"
                                          "?(0)\n");
    EXPECT_TRUE(rte.call(*program, intern("no_such_function"), {}).is_void());
}

TEST_F(RTE, a_script_that_fails_to_start_may_be_imported_again) {
    folder.write("bad.kvs", "import nowhere;");
    folder.write("p.kvs", "import bad; main() { return 1; }");
    ScriptRTE rte = environment();
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(text_of_main(rte, "p"), "Script error: Cant find object to import (nowhere)");
    EXPECT_EQ(rte.record(rte.load("bad")).users, 0U);
}

TEST_F(RTE, a_union_is_a_value_whose_members_are_its_entries) {
    std::ostringstream out;
    HostLibrary first, second;
    first.add<PrintFunction>("say", out);
    ScriptValue value;
    {
        UnionLibrary both;
        both.add(first);
        both.add(second);
        second.add<PrintFunction>("tell", out);
        value = both.value();
        EXPECT_EQ(value.type_name(), "<union_library>");
        EXPECT_EQ(value.member(intern("tell")).to_string(), "<print>");
        EXPECT_TRUE(value.has_member(intern("say")));
        EXPECT_TRUE(both.get(intern("nothing")).is_void());
        EXPECT_THROW(value.member(intern("nothing")), MemberNotFoundError);
    }
    EXPECT_FALSE(value.has_member(intern("say")));
    EXPECT_EQ(value.type_name(), "<union_library>");
}

TEST_F(RTE, print_writes_a_line_of_its_arguments) {
    std::ostringstream out;
    host.add<PrintFunction>("print", out);
    folder.write("p.kvs", "import print; main() { print(); print(1, \"a b\", true, void, 1.5); print(print = void); }");
    EXPECT_EQ(text_of_main("p"), "");
    EXPECT_EQ(out.str(), "\n1 a b true  1.5\nfalse\n");
}

TEST(ArchiveScanner, reads_lines_and_stays_at_the_end) {
    const std::string text = "a\r\nb\n\nc";
    ScriptRTE::ArchiveScanner scanner(Archive("name", std::make_unique<ConstMemoryDataStore>(text.data(), text.size()),
                                              0, static_cast<std::int64_t>(text.size()), /*unbounded=*/false),
                                      "shown");
    Token token;
    const int lines[] = {1, 2, 4};
    for (const int line : lines) {
        scanner.next_token(token);
        EXPECT_EQ(token.line, line);
    }
    for (int i = 0; i < 3; ++i)
        scanner.next_token(token);
    EXPECT_EQ(token.type, TokenType::end);
    EXPECT_EQ(scanner.name(), "shown");
}

} // namespace
} // namespace kst::script
