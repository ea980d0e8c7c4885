#include "script/vm/ScriptVM.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <sstream>

#include "script/value/BasicClasses.h"
#include "script/value/ClassString.h"
#include "script/value/WrappingClass.h"
#include "script/vm/ObjectClasses.h"
#include "script/vm/ScriptStacks.h"
#include "script/vm/ScriptedClass.h"
#include "tests/script/Assembler.h"

namespace kst::script {
namespace {

using enum Opcode;

/// A program that is loaded with its code.
struct Program {
    explicit Program(Assembler& assembler, ScriptInterface* imports = nullptr)
        : code(assembler.code()), vm(code, imports) {
        vm.load();
    }
    ScriptValue call(const char* name, std::vector<ScriptValue> arguments = {}) {
        return vm.call(intern(name), arguments);
    }
    std::string error_of(const char* name, std::vector<ScriptValue> arguments = {}) {
        try {
            call(name, std::move(arguments));
        } catch (const VMError& error) {
            EXPECT_GE(error.instruction(), code.data());
            EXPECT_LT(error.instruction(), code.data() + code.size());
            return error.what();
        }
        return "no error";
    }
    std::vector<std::uint8_t> code;
    ScriptVM vm;
};

/// Hands out values by name.
struct Imports : ScriptInterface {
    std::map<idstring, ScriptValue> values;
    bool has(idstring id) override { return values.contains(id); }
    ScriptValue get(idstring id) override { return values.at(id); }
};

/// A native function.
struct Native : ScriptClass {
    explicit Native(std::function<ScriptValue(Arguments)> f) : ScriptClass(Counting::none), function(std::move(f)) {}
    ScriptValue call(Data, Arguments arguments) override { return function(arguments); }
    ScriptValue value() { return {*this, 0}; }
    std::function<ScriptValue(Arguments)> function;
};

/// Every test leaves stacks, pools and registry as it found them.
class VM : public testing::Test {
protected:
    static std::vector<std::size_t> live() {
        const ScriptStacks& stacks = ScriptStacks::instance();
        return {stacks.values.count(),
                stacks.locals.count(),
                stacks.frame_count,
                ProgramRegistry::instance().live(),
                ScriptVM::ClassMethod::instance().live(),
                ScriptVM::ClassInstance::instance().live(),
                ClassString::instance().live(),
                ClassTag::instance().live()};
    }
    void SetUp() override { before_ = live(); }
    void TearDown() override { EXPECT_EQ(live(), before_); }

private:
    std::vector<std::size_t> before_;
};

/// `main` pushes what the test wants; then the result returns.
std::string result_of(const std::function<void(Assembler&)>& body) {
    Assembler a;
    a.function("main", "main").op(return_).label("main");
    body(a);
    a.op(return_);
    Program program(a);
    // Twice: the second run finds names resolved.
    const std::string first = program.call("main").to_string();
    EXPECT_EQ(program.call("main").to_string(), first);
    return first;
}

TEST_F(VM, operators) {
    struct Case {
        std::function<void(Assembler&)> body;
        std::string result;
    };
    const auto binary = [](auto left, auto right, Opcode opcode) {
        return [=](Assembler& a) {
            const auto push = [&](auto value) {
                if constexpr (std::is_arithmetic_v<decltype(value)>)
                    a.number(static_cast<float>(value));
                else
                    a.op(push_string, value);
            };
            push(left);
            push(right);
            a.op(opcode);
        };
    };
    const Case cases[] = {
        {binary(2, 3, add), "5"},
        {binary("2", 3, add), "23"},
        {binary(2, "3", add), "5"},
        {binary(2, 3, sub), "-1"},
        {binary(3, "ab", mul), "ababab"},
        {binary("ab", 3, mul), "ababab"},
        {binary(1, 4, div), "0.25"},
        {binary(-7, 3, mod), "-1"},
        {binary("7", "4", mod), "3"},
        {binary("7", "4", add_numbers), "11"},
        {binary("7", "4", sub_numbers), "3"},
        {binary("7", "4", mul_numbers), "28"},
        {binary("7", "4", div_numbers), "1.75"},
        {binary(1, 2, lt), "true"},
        {binary(2, 2, le), "true"},
        {binary(2, 3, ge), "false"},
        {binary(3, 2, gt), "true"},
        {binary("a", "a", eq), "true"},
        {binary("a", "b", ne), "true"},
        {binary("a", "b", lt), "true"},
        {binary("3", 3, eq), "false"},
        {[](Assembler& a) { a.op(push_string, "5x").op(negate); }, "-5"},
        {[](Assembler& a) { a.op(push_string, "").op(cnv_boolean); }, "false"},
        {[](Assembler& a) { a.op(push_true).op(cnv_number); }, "1"},
        {[](Assembler& a) { a.number(1.5f).op(cnv_string).op(member, "size"); }, "3"},
        {[](Assembler& a) { a.op(push_string, std::string(300, 'x')).op(member, "size"); }, "300"},
        {[](Assembler& a) { a.op(push_void).op(member, "type_string"); }, "<void>"},
        {[](Assembler& a) { a.number(1).op(push_false).op(pop).number(2).op(pop_again); }, "1"},
        {[](Assembler& a) { a.number(1).number(2); }, "1"}, // what is above the result goes
        {[](Assembler&) {}, ""},                            // nothing there: void
        {[](Assembler& a) { a.op(push_this).op(member, "type_string"); }, "<void>"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(result_of(c.body), c.result);
}

TEST_F(VM, short_cuts_give_what_the_single_instructions_give) {
    const float numbers[] = {0, -0.0f, 1.5f, -3, 1e38f, std::numeric_limits<float>::infinity(), std::nanf("")};
    for (const Opcode opcode : {add, sub, mul, Opcode::div, lt, le, eq, ge, gt, ne}) {
        Assembler a;
        a.op(declare_object, "left").op(declare_object, "right");
        for (const char* name : {"plain", "values", "stored", "passed", "tested"})
            a.function(name, name);
        a.op(return_);
        // Globals take no short cut, and resize parts the operator from its result.
        a.label("plain").op(resize, 2).op(push_global_ref, 0).op(push_local, 0).op(resize, 2).op(assign);
        a.op(push_global_ref, 1).op(push_local, 1).op(resize, 2).op(assign);
        a.op(push_global, 0).op(push_global, 1).op(resize, 2).op(opcode).op(resize, 2).op(return_);
        a.label("values").op(resize, 2).op(push_local, 0).op(push_local, 1).op(opcode).op(return_);
        a.label("stored").op(resize, 3).op(push_local_ref, 2).op(push_local, 0).op(push_local, 1).op(opcode);
        a.op(assign).op(push_local, 2).op(return_);
        a.label("passed").op(resize, 2).op(push_local, 0).op(push_local, 1).op(opcode).op(param);
        a.op(push_local, 2).op(return_);
        a.label("tested").op(resize, 2).op(push_global, 0).op(push_local, 1).op(opcode).op(brif, "yes");
        a.op(push_false).op(return_).label("yes").op(push_true).op(return_);
        Program program(a);
        for (const float left : numbers)
            for (const float right : numbers) {
                const std::vector<ScriptValue> both{number_value(left), number_value(right)};
                const ScriptValue plain = program.call("plain", both);
                for (const char* name : {"values", "stored", "passed"})
                    EXPECT_EQ(program.call(name, both).to_string(), plain.to_string()) << name << left << ' ' << right;
                EXPECT_EQ(program.call("tested", both).to_boolean(), plain.to_boolean()) << left << ' ' << right;
            }
    }
}

/// sum(n): locals n, i, s; s := 0; while (i < n) { s := s + i; i := i + 1 }
Assembler& add_sum(Assembler& a) {
    a.label("sum").op(resize, 1).op(resize, 3).op(push_local_ref, 1).number(0).op(assign);
    a.op(push_local_ref, 2).number(0).op(assign);
    a.label("loop").op(push_local, 1).op(push_local, 0).op(lt).op(brifn, "done");
    a.op(push_local_ref, 2).op(push_local, 2).op(push_local, 1).op(add).op(assign);
    a.op(push_local_ref, 1).op(push_local_ref, 1).op(deref).number(1).op(add).op(assign);
    return a.op(bra, "loop").label("done").op(push_local, 2).op(return_);
}

TEST_F(VM, loops_and_missing_or_extra_arguments) {
    Assembler a;
    a.function("sum", "sum").op(return_);
    Program program(add_sum(a));
    EXPECT_EQ(program.call("sum", {number_value(1000)}).to_number(), 499500);
    EXPECT_EQ(program.call("sum").to_number(), 0);
    EXPECT_EQ(program.call("sum", {number_value(4), string_value("extra")}).to_number(), 6);
    EXPECT_TRUE(program.call("none").is_void());
    ScriptStacks::instance().jump_budget = 100;
    EXPECT_EQ(program.error_of("sum", {number_value(1000)}), "Script error: instruction budget used up");
    ScriptStacks::instance().jump_budget = ~std::uint64_t{0};
}

/// fib(n) calls itself through its global.
Assembler& add_fib(Assembler& a, unsigned global) {
    a.label("fib").op(resize, 1).op(push_local, 0).number(2).op(lt).op(brifn, "more").op(push_local, 0).op(return_);
    a.label("more");
    for (const float step : {1.0f, 2.0f})
        a.op(push_local, 0).number(step).op(sub).op(param).op(push_global, global).op(call, 1);
    return a.op(add).op(return_);
}

TEST_F(VM, recursion_and_its_limits) {
    Assembler a;
    a.function("fib", "fib").function("down", "down").function("wide", "wide").function("up", "up").op(return_);
    add_fib(a, 0);
    // down(n): n < 1 ? 0 : down(n - 1) + 1
    a.label("down").op(resize, 1).op(push_local, 0).number(1).op(lt).op(brifn, "deeper").number(0).op(return_);
    a.label("deeper").op(push_local, 0).number(1).op(sub).op(param).op(push_global, 1).op(call, 1).number(1).op(add);
    a.op(return_);
    a.label("wide").op(resize, 255).op(push_global, 2).op(call, 0).op(return_);
    a.label("up").number(1).number(1).op(push_global, 3).op(call, 0).op(return_);
    Program program(a);
    EXPECT_EQ(program.call("fib", {number_value(20)}).to_number(), 6765);
    EXPECT_EQ(program.call("down", {number_value(4990)}).to_number(), 4990);
    EXPECT_EQ(program.error_of("down", {number_value(5001)}), "Script error: local stack overflow");
    EXPECT_EQ(program.error_of("wide"), "Script error: local stack overflow");
    EXPECT_EQ(program.error_of("up"), "Script error: value stack overflow");
    EXPECT_GT(ScriptStacks::instance().call_count, 2000U); // for the trace
    EXPECT_EQ(program.call("fib", {number_value(10)}).to_number(), 55);
    EXPECT_EQ(ScriptStacks::instance().call_count, 0U);
}

TEST_F(VM, endless_recursion_without_locals_ends_at_the_call_stack) {
    Assembler a;
    a.function("f", "f").op(return_).label("f").op(push_global, 0).op(call, 0).op(return_);
    Program program(a);
    EXPECT_EQ(program.error_of("f"), "Script error: call stack overflow");
    EXPECT_EQ(ScriptStacks::instance().call_count, 5000U);
}

TEST_F(VM, faults_in_the_code_are_errors) {
    Assembler a;
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"Internal error: No such local",
         [&] { a.op(resize, 9).op(push_local_ref, 8).op(resize, 1).number(1).op(assign); }},
        {"Internal error: No such global", [&] { a.op(push_global, 999); }},
        {"Internal error: No such global", [&] { a.op(push_global_ref, 999).op(deref); }},
        {"Internal error: No current object", [&] { a.op(push_member_ref, 0).op(deref); }},
        {"Internal error: End of no class", [&] { a.op(end_class); }},
        {"Internal error: Invalid opcode", [&] { a.op(static_cast<Opcode>(48)); }},
        {"cant call this thing (type:<number>)", [&] { a.number(1).op(call, 0); }},
        {"cant set this to a value (type:<string>)", [&] { a.op(push_string, "a").number(1).op(assign); }},
        {"cant find member: foo in type <number>", [&] { a.number(1).op(member, "foo"); }},
        {"Script error: calls are nested too deeply",
         [&] {
             a.op(resize, 1)
                 .op(push_local_ref, 0)
                 .op(push_local_ref, 0)
                 .op(assign)
                 .op(push_local_ref, 0)
                 .op(cnv_string);
         }},
    };
    std::string names;
    for (const auto& c : cases)
        a.function(names += 'f', names), static_cast<void>(c);
    a.op(return_);
    names.clear();
    for (const auto& c : cases) {
        a.label(names += 'f');
        c.second();
        a.op(return_);
    }
    Program program(a);
    names.clear();
    for (const auto& c : cases)
        EXPECT_EQ(program.error_of((names += 'f').c_str()), c.first);
}

/// class Counter { object count; method bump() { count := count + 1; return this; } object next; }
/// class Child { method super() { return base; } object base; method set(b) { base := b; } }
/// functions: make() makes a Counter, child() a Child
Assembler& add_classes(Assembler& a) {
    a.op(begin_class, "Counter").op(declare_object, "count").function("bump", "bump").op(declare_object, "next");
    a.function("link", "link").op(end_class);
    a.op(begin_class, "Child").function("super", "super").op(declare_object, "base").function("set", "set");
    a.op(end_class).function("make", "make").function("child", "child").op(return_);
    a.label("bump").op(push_member_ref, 0).op(push_member, 0).number(1).op(add).op(assign).op(push_this).op(return_);
    a.label("link").op(resize, 1).op(push_member_ref, 2).op(push_local, 0).op(assign).op(return_);
    a.label("super").op(push_member, 1).op(return_);
    a.label("set").op(resize, 1).op(push_member_ref, 1).op(push_local, 0).op(assign).op(return_);
    a.label("make").op(push_global, 0).op(call, 0).op(return_);
    return a.label("child").op(push_global, 1).op(call, 0).op(return_);
}

ScriptValue call_member(const ScriptValue& object, const char* name, std::vector<ScriptValue> arguments = {}) {
    return object.member(intern(name)).call(arguments);
}

TEST_F(VM, objects_and_their_methods) {
    Assembler a;
    Program program(add_classes(a));
    ScriptValue counter = program.call("make");
    EXPECT_TRUE(counter.member(intern("count")).is_void());
    EXPECT_THROW(call_member(counter, "bump"), VMError); // void knows no +
    EXPECT_EQ(counter.type_name(), "<Counter>");
    EXPECT_EQ(counter.to_number(), -1);
    EXPECT_TRUE(counter.to_boolean());
    EXPECT_EQ(counter.member(intern("bump")).type_name(), "<Counter method>");
    call_member(counter, "link", {counter}); // a circle
    EXPECT_TRUE(counter.member(intern("next")).identical(counter));
    call_member(counter, "link", {{}});
    counter.member(intern("extension")).set(string_value("tag"));
    EXPECT_EQ(counter.member(intern("extension")).to_string(), "tag");
    EXPECT_EQ(counter.member(intern("extension")).member(intern("size")).to_number(), 3);
    counter.member(intern("extension")).set(counter.member(intern("extension")));
    EXPECT_THROW(counter.member(intern("extension")).to_string(), DSError);
    counter.set_tag({});
    // A method value alone keeps its object.
    const ScriptValue link = counter.member(intern("link"));
    counter = {};
    EXPECT_EQ(ScriptVM::ClassInstance::instance().live(), 0U);
    EXPECT_EQ(ScriptVM::ClassMethod::instance().live(), 2U);
    link.call({{number_value(1)}});
}

TEST_F(VM, unknown_members_go_to_super) {
    Assembler a;
    Program program(add_classes(a));
    const ScriptValue child = program.call("child");
    const ScriptValue counter = program.call("make");
    EXPECT_THROW(child.member(intern("count")), DSError);
    EXPECT_FALSE(child.has_member(intern("count")));
    call_member(child, "set", {counter});
    EXPECT_TRUE(child.has_member(intern("count")));
    EXPECT_EQ(child.member(intern("bump")).type_name(), "<Counter method>");
    EXPECT_TRUE(child.member(intern("nothing"), /*must_exist=*/false).is_void());
    EXPECT_EQ(child.member(intern("type_string")).to_string(), "<Counter>"); // of what it extends, as any other name
    EXPECT_EQ(child.type_name(), "<Child>");
    call_member(child, "set", {child}); // back to itself
    EXPECT_THROW(child.member(intern("nothing")), DSBaseError);
    call_member(child, "set", {{}});
}

TEST_F(VM, a_long_chain_of_objects_goes_without_deep_recursion) {
    Assembler a;
    Program program(add_classes(a));
    ScriptValue chain;
    for (int i = 0; i < 100000; ++i) {
        const ScriptValue next = program.call("make");
        call_member(next, "link", {chain});
        chain = next;
    }
    EXPECT_EQ(ScriptVM::ClassInstance::instance().live(), 100000U);
    chain = {};
    EXPECT_EQ(ScriptVM::ClassInstance::instance().live(), 0U);
    EXPECT_EQ(ScriptVM::ClassMethod::instance().live(), 0U);
}

TEST_F(VM, values_of_a_destroyed_program_are_dead) {
    const auto error_of = [](const std::function<void()>& action) {
        try {
            action();
        } catch (const DSError& error) {
            return std::string(error.what());
        }
        return std::string("no error");
    };
    Assembler a;
    auto program = std::make_unique<Program>(add_classes(a));
    const ScriptValue object = program->call("make");
    const ScriptValue method = object.member(intern("bump"));
    const ScriptValue library = program->vm.value();
    const ScriptValue function = library.member(intern("make"));
    const ScriptValue factory = library.member(intern("Counter"));
    EXPECT_TRUE(library.member(intern("count")).is_void());
    EXPECT_EQ(factory.call({}).type_name(), "<Counter>");
    program.reset();
    EXPECT_EQ(error_of([&] { function.call({}); }), "Program containing function has been destroyed");
    EXPECT_EQ(error_of([&] { method.call({}); }), "Program containing method has been destroyed");
    EXPECT_EQ(error_of([&] { factory.call({}); }), "Program containing class doesnt exist");
    EXPECT_EQ(error_of([&] { object.member(intern("count")); }), "Program containing class has been destroyed");
    EXPECT_EQ(error_of([&] { library.member(intern("make")); }), "Program containing library doesnt exist");
    EXPECT_EQ(object.type_name() + method.type_name(), "<destroyed object><destroyed object method>");
    EXPECT_FALSE(object.to_boolean());
    EXPECT_EQ(object.to_number(), 0);
}

TEST_F(VM, programs_import_from_each_other_and_natives_call_back) {
    Assembler library_code;
    library_code.function("sum", "sum").op(return_);
    Program library(add_sum(library_code));
    Native twice([](Arguments arguments) {
        const ScriptValue first = arguments[0].call(arguments.subspan(1));
        return first.add(arguments[0].call(arguments.subspan(1)));
    });
    Imports imports;
    imports.values[intern("twice")] = twice.value();
    imports.values[intern("lib")] = library.vm.value();
    Assembler a;
    a.op(import_, "twice").op(import_, "lib").function("main", "main").function("again", "again").op(return_);
    a.label("main").op(push_global, 1).op(member, "sum").op(param).number(5).op(param).op(push_global, 0).op(call, 2);
    a.op(return_);
    a.label("again").op(push_global, 3).op(param).op(push_global, 0).op(call, 1).op(return_);
    Program program(a, &imports);
    EXPECT_EQ(program.call("main").to_number(), 20);
    EXPECT_EQ(program.error_of("again"), "Script error: calls are nested too deeply");
    imports.values.erase(intern("lib"));
    try {
        const Program fails(a, &imports);
        FAIL();
    } catch (const VMError& error) {
        EXPECT_STREQ(error.what(), "Script error: Cant find object to import (lib)");
    }
}

TEST_F(VM, a_native_may_destroy_its_caller) {
    std::unique_ptr<Program> program;
    std::vector<std::uint8_t> code; // outlives the program
    Native destroy([&](Arguments) {
        code = std::move(program->code);
        program.reset();
        return ScriptValue();
    });
    Imports imports;
    imports.values[intern("destroy")] = destroy.value();
    Assembler a;
    a.op(import_, "destroy").function("main", "main").op(return_);
    a.label("main").op(push_global, 0).op(call, 0).op(push_global, 1).op(call, 0).op(return_);
    program = std::make_unique<Program>(a, &imports);
    ScriptVM& vm = program->vm;
    EXPECT_THROW(vm.call(intern("main"), {}), VMError);
}

/// A counted native object, which does something at its end.
struct Mortal : ScriptClass {
    explicit Mortal(std::function<void()> f) : ScriptClass(Counting::pooled), at_end(std::move(f)) {}
    void add_ref(Data) override { ++references; }
    void release(Data) override {
        if (--references == 0)
            at_end();
    }
    ScriptValue fresh() {
        references = 1;
        return ScriptValue::adopt(*this, 0);
    }
    std::function<void()> at_end;
    int references = 0;
};

// Wherever a value ends, the program may end with it, in the midst of its instruction.
TEST_F(VM, the_end_of_a_value_may_destroy_its_program) {
    const std::function<void(Assembler&)> endings[] = {
        [](Assembler& a) { a.op(pop); },
        [](Assembler& a) { a.op(pop_again).number(1).number(2).op(add).op(pop); },
        [](Assembler& a) { a.number(1).op(lt).op(brif, "end"); },
        [](Assembler& a) { a.number(1).op(lt).op(pop); },
        [](Assembler& a) { a.op(brif, "end"); },
        [](Assembler& a) { a.op(cnv_number).op(pop); },
        [](Assembler& a) { a.number(2).op(mod).op(pop); },
        [](Assembler& a) { a.number(2).op(add).op(pop); },
        [](Assembler& a) { a.op(member, "type_string").op(pop); },
        [](Assembler& a) { a.op(member, "nothing").op(pop); },
        [](Assembler& a) { a.op(param).op(push_global, 1).op(call, 1).op(pop); }, // a native
        [](Assembler& a) { a.op(param).op(push_global, 2).op(call, 1).op(pop); }, // a function that resizes its frame
        [](Assembler& a) { a.op(param).op(push_global, 3).op(call, 1).op(pop); }, // one that assigns to its parameter
        [](Assembler& a) { a.op(param).op(push_global, 4).op(call, 1).op(pop); }, // one that returns at once
        [](Assembler& a) { a.op(param).op(push_global, 5).op(call, 1).op(pop); }, // one that adds to its parameter
    };
    for (const auto& ending : endings) {
        std::unique_ptr<Program> program;
        std::vector<std::uint8_t> code; // outlives the program
        Mortal mortal([&] {
            code = std::move(program->code);
            program.reset();
        });
        Native make([&](Arguments) { return mortal.fresh(); });
        Native nothing([](Arguments) { return ScriptValue(); });
        Imports imports;
        imports.values[intern("make")] = make.value();
        imports.values[intern("nothing")] = nothing.value();
        Assembler a;
        a.op(import_, "make").op(import_, "nothing").function("shrink", "shrink").function("assign", "assign");
        a.function("leave", "leave").function("add", "add").function("main", "main").op(return_);
        a.label("shrink").op(resize, 1).op(resize, 0).op(push_void).op(return_);
        a.label("assign").op(resize, 1).op(push_local_ref, 0).number(1).op(assign).op(push_local, 0).op(return_);
        a.label("leave").op(resize, 1).op(push_void).op(return_);
        a.label("add").op(resize, 1).op(push_local_ref, 0).number(1).number(2).op(add).op(assign).op(push_local, 0);
        a.op(return_);
        a.label("main").op(resize, 0).op(push_global, 0).op(call, 0);
        ending(a);
        a.label("end").number(1).op(return_);
        program = std::make_unique<Program>(a, &imports);
        EXPECT_THROW(program->vm.call(intern("main"), {}), VMError);
        EXPECT_EQ(program, nullptr);
    }
}

TEST_F(VM, dump_and_visit_tell_of_classes) {
    Assembler a;
    Program program(add_classes(a));
    const ScriptValue object = program.call("make");
    std::ostringstream text;
    ScriptVM::dump(text);
    EXPECT_EQ(text.str(), "2 classes \n" + std::string(60, '-') + "\nTotal VMS: 1    Total classes: 2\n");
    struct Visitor : LibraryVisitor {
        std::string seen;
        void visit_class(std::string_view name, std::size_t live_objects) override {
            seen.append(name).append(" ").append(std::to_string(live_objects)).append(";");
        }
    } visitor;
    program.vm.visit(visitor);
    EXPECT_EQ(visitor.seen, "Counter 1;Child 0;");
}

} // namespace
} // namespace kst::script
