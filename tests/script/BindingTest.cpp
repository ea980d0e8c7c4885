#include "script/binding/bind.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "script/binding/NativeObjects.h"
#include "script/value/BasicClasses.h"
#include "script/value/ClassString.h"
#include "script/value/WrappingClass.h"
#include "tests/script/RunSource.h"

namespace kst::script {
namespace {

/// What a test sees of the objects it made.
int living_probes = 0;

class Probe : public Bound<Probe> {
public:
    static constexpr std::string_view script_name = "Probe";
    static void bind(StaticMemberSet<Probe>& members) {
        members.method<&Probe::twice>("twice");
        members.method<&Probe::whole>("whole");
        members.method<&Probe::small>("small");
        members.method<&Probe::truth>("truth");
        members.method<&Probe::text>("text");
        members.method<&Probe::anything>("anything");
        members.method<&Probe::four>("four", 3.0f, "d");
        members.method<&Probe::nothing>("nothing");
        members.method<&Probe::give>("give");
        members.method<&Probe::other>("other");
        members.method<&Probe::other_reference>("other_reference");
        members.method<&Probe::whole_list>("whole_list");
        members.method<&Probe::whole_list>("list_again");
        members.method<&Probe::silent_list>("silent_list");
        members.method<&Probe::call_each>("call_each");
        members.method<&Probe::fail>("fail");
        members.method<[](Probe& probe, float x) { return probe.step_ + x; }>("lambda");
        members.method<&Probe::make>("make");
        members.property<&Probe::step, &Probe::set_step>("step");
        members.property<&Probe::step>("fixed_step");
        members.property<&Probe::failing_step, &Probe::set_failing_step>("failing_step");
    }

    Probe() { ++living_probes; }
    Probe(const Probe& other) : Bound(other), step_(other.step_), kept_(other.kept_) { ++living_probes; }
    Probe& operator=(const Probe&) = default;
    ~Probe() override { --living_probes; }

    float twice(float x) const noexcept { return x * 2; }
    int whole(int x) { return x; }
    std::uint8_t small(std::uint8_t x) { return x; }
    bool truth(bool x) const { return !x; }
    std::string text(const std::string& a, std::string_view b) const { return a + "|" + std::string(b); }
    ScriptValue anything(const ScriptValue& value) { return std::exchange(kept_, value); }
    // NOLINTNEXTLINE(performance-unnecessary-value-param): each way of taking a text counts
    std::string four(float a, std::string b, float c, const std::string& d) {
        return std::to_string(static_cast<int>(a)) + b + std::to_string(static_cast<int>(c)) + d;
    }
    void nothing() noexcept {}
    Probe* give(bool self) { return self ? this : nullptr; }
    float other(const Probe* probe) const { return probe->step_; }
    float other_reference(Probe& probe, float plus) { return probe.step_ + plus; }
    int whole_list(Arguments arguments) { return static_cast<int>(arguments.size()); }
    void silent_list(Arguments) {}
    void call_each(Arguments arguments) {
        for (const ScriptValue& argument : arguments)
            argument.call({&argument, 1});
    }
    void fail() const { throw std::runtime_error("No such place"); }
    ScriptValue make() const { return make_script_owned<Probe>(*this); }
    float step() const { return step_; }
    void set_step(float step) { step_ = step; }
    float failing_step() const { throw std::runtime_error("No step"); }
    void set_failing_step(float) { throw std::runtime_error("Not this step"); }

private:
    float step_ = 1;
    ScriptValue kept_;
};

/// A class of a bound class, with a member more and one replaced, and a print form of its own.
class SpecialProbe final : public Bound<SpecialProbe, Probe> {
public:
    static constexpr std::string_view script_name = "SpecialProbe";
    static void bind(StaticMemberSet<SpecialProbe>& members) {
        members.method<[](SpecialProbe&) { return "special"; }>("kind");
        members.method<[](SpecialProbe&, float x) { return x * 100; }>("twice");
    }
    std::string type_name() const override { return "<SpecialProbe:7>"; }
    ScriptValue call(Arguments arguments) override {
        if (arguments.empty())
            throw std::runtime_error("Nothing to count");
        return number_value(static_cast<float>(arguments.size()));
    }
};

/// Objects whose members only data knows: variables by name, one table for all objects of one kind.
class Record : public Bound<Record> {
public:
    static constexpr std::string_view script_name = "Record";
    static void bind(StaticMemberSet<Record>& members) { members.method<&Record::count>("count"); }

    class Variable final : public PropertyFactory {
    public:
        explicit Variable(std::size_t index) : index_(index) {}

    protected:
        ScriptValue read(LibraryHelper& object) const override { return static_cast<Record&>(object).values_[index_]; }
        void write(LibraryHelper& object, const ScriptValue& value) const override {
            static_cast<Record&>(object).values_[index_] = value;
        }

    private:
        std::size_t index_;
    };

    explicit Record(std::shared_ptr<const MemberSet> table) : table_(std::move(table)) {}
    const MemberSet& members() const override { return *table_; }
    int count() const { return 2; }

private:
    std::shared_ptr<const MemberSet> table_;
    std::array<ScriptValue, 2> values_;
};

std::shared_ptr<MemberSet> record_table(std::string_view first, std::string_view second) {
    auto table = std::make_shared<MemberSet>(&StaticMemberSet<Record>::instance());
    EXPECT_TRUE(table->add(first, MemberFactoryPointer(new Record::Variable(0))));
    EXPECT_TRUE(table->add(second, MemberFactoryPointer(new Record::Variable(1))));
    return table;
}

/// Counts how often it was told.
struct Told : Bound<Told> {
    static constexpr std::string_view script_name = "Told";
    static void bind(StaticMemberSet<Told>&) {}
    void on_unreferenced() override {
        ++times;
        EXPECT_EQ(handle(), no_handle);
    }
    int times = 0;
};

struct Imports : ScriptInterface {
    std::map<idstring, ScriptValue> values;
    bool has(idstring id) override { return values.contains(id); }
    ScriptValue get(idstring id) override { return values.at(id); }
};

/// A method that has no use for its object.
template <int number>
MemberFactoryPointer gives() {
    return MemberFactoryPointer(new TMMethodFactory<Record, [](Record&) { return number; }>);
}

/// An object that is called as a function.
struct Action final : Bound<Action> {
    static constexpr std::string_view script_name = "Action";
    static void bind(StaticMemberSet<Action>&) {}
    explicit Action(std::function<ScriptValue()> action) : action_(std::move(action)) {}
    ScriptValue call(Arguments) override { return action_(); }

private:
    std::function<ScriptValue()> action_;
};

/// Every test leaves table and pools as it found them.
class Binding : public testing::Test {
protected:
    void SetUp() override {
        StaticMemberSet<Probe>::instance(); // its defaults are strings
        before_ = live();
    }
    void TearDown() override { EXPECT_EQ(live(), before_); }

    /// Runs the body of `main` with `p`, a probe, and `q`, a special one.
    std::string run(const std::string& body) {
        Probe probe;
        SpecialProbe special;
        Imports imports;
        imports.values[intern("p")] = probe.value();
        imports.values[intern("q")] = special.value();
        return result_of("import p, q; main() {" + body + "}", &imports);
    }

private:
    static std::vector<std::size_t> live() {
        return {NativeObjects::instance().live(), ClassString::instance().live(), ClassTag::instance().live(),
                static_cast<std::size_t>(living_probes)};
    }
    std::vector<std::size_t> before_;
};

TEST_F(Binding, converts_arguments_and_results_by_signature) {
    struct Case {
        const char* body;
        const char* result;
    };
    const Case cases[] = {
        {"return p.twice(\"1.5\");", "3"},
        {"return p.twice(1, 2, 3);", "2"}, // extra ones are ignored
        {"return p.whole(-2.9);", "-2"},
        {"return p.whole(1000000) * 1000000 * 1000000;", "9.9999998e+17"},
        {"return p.small(1000);", "255"},
        {"return p.small(-1);", "0"},
        {"return p.small(1.0 * \"nan\");", "0"},
        {"return p.truth(0);", "true"},
        {"return p.text(1, \"x\");", "1|x"},
        {"p.anything(\"kept\"); return p.anything(1);", "kept"},
        {"return p.four(1, \"b\");", "1b3d"},
        {"return p.four(1, \"b\", 9);", "1b9d"},
        {"return p.four(1, \"b\", 9, \"z\");", "1b9z"},
        {"return p.nothing() = void;", "true"},
        {"return p.give(true) = p;", "true"},
        {"return p.give(false) = void;", "true"},
        {"return p.whole_list(1, 2, 3);", "3"},
        {"return p.list_again();", "0"},
        {"return p.lambda(4);", "5"},
        {"return p.other(q);", "1"},
        {"return p.other_reference(p, 2);", "3"},
        {"return p;", "<Probe>"},
        {"return p.type_string;", "<Probe>"},
        {"return p.twice = p.twice and not (p.twice = q.twice);", "true"},
        {"if (p.twice) { return p.twice; }", "<member(number):number>"},
        {"return q.kind();", "special"},
        {"return q.twice(1);", "100"}, // the class's own, not the base's
        {"return q.whole(1);", "1"},
        {"return q(1, 2);", "2"},
        {"return q;", "<SpecialProbe:7>"},
        {"return p < q and not (q < p);", "true"}, // by age
        {"return p.member(\"whole\")(7);", "7"},
        {"p.extension := \"tagged\"; return p.extension.size;", "6"},
        {"return p.missing;", "cant find member: missing in type <Probe>"},
        {"return p(1);", "Can't call this thing<Probe>"},
        {"return p.four(1);", "To few arguments to: <member(number,string,number,string):string>"},
        {"return p.twice();", "To few arguments to: <member(number):number>"},
        {"return p.other(1);", "Value is not of type <Probe> it is of type <number>"},
        {"return q.other_reference(void);", "To few arguments to: <member(Probe,number):number>"},
        {"return q.other_reference(void, 1);", "Value is not of type <Probe> it is of type <void>"},
        {"p.fail();", "No such place"},
        {"return p.failing_step + 1;", "No step"},
        {"p.failing_step := 1;", "Not this step"},
        {"q();", "Nothing to count"},
        {"p.twice := 1;", "cant set this to a value (type:<member(number):number>)"},
        {"p.call_each(p.call_each);", "Script error: calls are nested too deeply"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(run(c.body), c.result) << c.body;
}

TEST_F(Binding, describes_members_by_their_signature) {
    const std::pair<const char*, const char*> cases[] = {
        {"truth", "<member(boolean):boolean>"},  {"text", "<member(string,string):string>"},
        {"anything", "<member(object):object>"}, {"nothing", "<member()>"},
        {"make", "<member():object>"},           {"give", "<member(boolean):Probe>"},
        {"other", "<member(Probe):number>"},     {"whole_list", "<member(...):number>"},
        {"silent_list", "<member(...)>"},        {"other_reference", "<member(Probe,number):number>"},
        {"lambda", "<member(number):number>"},   {"step", "<member():number>"},
    };
    for (const auto& [name, description] : cases)
        EXPECT_EQ(StaticMemberSet<Probe>::instance().find(intern(name))->description(), description);
}

TEST_F(Binding, properties_are_read_and_assigned_like_variables) {
    EXPECT_EQ(run("p.step := 2.5; object a := p.step; p.step := 4; return \"\" + a + \" \" + p.step;"), "2.5 4");
    EXPECT_EQ(run("p.step := 3; return p.fixed_step.type_string + p.step.string;"), "<number>3");
    EXPECT_EQ(run("p.fixed_step := 1;"), "cant set this to a value (type:<member():number>)");
}

TEST_F(Binding, an_object_of_scripts_goes_with_its_last_value) {
    const int before = living_probes;
    EXPECT_EQ(run("p.step := 9; object m := p.make(); object n := m.make(); m := void; return n.step;"), "9");
    ScriptValue made = make_script_owned<Probe>();
    ScriptValue method = made.member(intern("make"));
    made = {};
    EXPECT_EQ(living_probes, before + 1); // the bound method keeps it
    ScriptValue second = method.call({});
    method = {};
    EXPECT_EQ(living_probes, before + 1);
    second = {};
    EXPECT_EQ(living_probes, before);
}

TEST_F(Binding, a_chain_of_any_length_goes_at_once) {
    ScriptValue last;
    for (int i = 0; i < 200000; ++i) {
        ScriptValue next = make_script_owned<Probe>();
        next.member(intern("anything")).call({&last, 1});
        last = std::move(next);
    }
    last = {};
}

TEST_F(Binding, values_of_a_destroyed_object_are_dead) {
    std::optional<Probe> probe(std::in_place);
    const ScriptValue value = probe->value();
    const ScriptValue copy = value; // NOLINT(performance-unnecessary-copy-initialization): a second count
    const ScriptValue method = value.member(intern("twice"));
    const ScriptValue property = value.member(intern("step"));
    EXPECT_EQ(value.to_number(), -1);
    EXPECT_EQ(value.native_pointer(), static_cast<LibraryHelper*>(&*probe));
    EXPECT_GE(probe->handle(), 0);
    probe.reset();
    EXPECT_EQ(value.type_name(), "<destroyed c++class>");
    EXPECT_EQ(value.to_string(), "");
    EXPECT_EQ(value.to_number(), 0);
    EXPECT_FALSE(value.to_boolean());
    EXPECT_EQ(value.native_pointer(), nullptr);
    EXPECT_TRUE(value.get_tag().is_void());
    EXPECT_TRUE(value.equals(copy));
    Probe alive;
    EXPECT_TRUE(value.less(alive.value()));
    EXPECT_FALSE(alive.value().less(value));
    const auto error_of = [](const auto& action) -> std::string {
        try {
            action();
        } catch (const DSError& error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_EQ(error_of([&] { value.call({}); }), "Can't call this thing<destroyed c++class>");
    EXPECT_EQ(error_of([&] { value.member(intern("twice")); }), "cant find member: twice in type <destroyed c++class>");
    // Ahead of the look at the arguments.
    EXPECT_EQ(error_of([&] { method.call({}); }), "Object already destroyed");
    EXPECT_EQ(error_of([&] { property.set(value); }), "Object already destroyed");
    EXPECT_EQ(error_of([&] { value.set_tag(value); }), "Object already destroyed");
    EXPECT_EQ(error_of([&] {
                  alive.value().member(intern("other")).call({&value, 1});
              }),
              "Value is not of type <Probe> it is of type <destroyed c++class>");
}

TEST_F(Binding, an_object_is_told_each_time_its_last_value_goes) {
    Told told;
    for (int i = 1; i <= 2; ++i) {
        const ScriptValue first = told.value();
        { const ScriptValue second = told.value(); }
        EXPECT_EQ(told.times, i - 1);
        EXPECT_TRUE(first.equals(told.value()));
    }
    EXPECT_EQ(told.times, 2);
    // A copy has values of its own.
    const ScriptValue value = told.value();
    Told copy(told);
    EXPECT_EQ(copy.handle(), LibraryHelper::no_handle);
}

TEST_F(Binding, tables_made_at_run_time_serve_all_objects_of_a_kind) {
    Imports imports;
    auto table = record_table("health", "count"); // the second name hides the class's own
    EXPECT_FALSE(table->add("health", MemberFactoryPointer(new Record::Variable(1))));
    imports.values[intern("a")] = make_script_owned<Record>(table);
    imports.values[intern("b")] = make_script_owned<Record>(std::move(table));
    imports.values[intern("c")] = make_script_owned<Record>(record_table("x", "y"));
    EXPECT_EQ(result_of("import a, b, c; main() { a.health := \"75\"; b.health := 3; a.count := b; c.x := c.count();"
                        "return a.health + b.health + a.count.health.string + c.x.string; }",
                        &imports),
              "75332");
}

// A place in the code remembers what it found, which must hold no longer than it is true.
TEST_F(Binding, one_place_in_the_code_calls_members_of_many_tables) {
    const auto grown = record_table("x", "y");
    int made = 0;
    const auto make = [&] { // each with a table of its own, most where the last one was
        auto table = std::make_shared<MemberSet>(&StaticMemberSet<Record>::instance());
        if (++made % 3 != 0)
            table->add("count", made % 3 == 1 ? gives<5>() : gives<6>());
        return make_script_owned<Record>(std::move(table));
    };
    Action grow([&]() -> ScriptValue { return boolean_value(grown->add("count", gives<7>())); });
    Action maker(make);
    Imports imports;
    imports.values[intern("a")] = make_script_owned<Record>(grown);
    imports.values[intern("b")] = make_script_owned<Record>(record_table("x", "y"));
    imports.values[intern("grow")] = grow.value();
    imports.values[intern("make")] = maker.value();
    EXPECT_EQ(
        result_of("import a, b, grow, make; count(x) { return x.count().string; }"
                  "main() { object text := count(b) + count(a); grow(); text := text + count(a) + count(b) + \" \";"
                  "object i := 0; while (i < 9) { text := text + count(make()); i := i + 1; } return text; }",
                  &imports),
        "2272 562562562");
    // What every value has is not the table's.
    grown->add("extension", gives<8>());
    EXPECT_EQ(result_of("import a; main() { a.extension := 3; return a.extension(); }", &imports),
              "cant call this thing (type:<number>)");
}

TEST_F(Binding, a_member_outlives_its_table) {
    auto record = std::make_unique<Record>(record_table("health", "armour"));
    ScriptValue health = record->value().member(intern("health"));
    record.reset(); // and with it the table
    EXPECT_THROW(health.to_number(), DSError);
    EXPECT_EQ(health.type_name(), "<member>");
}

TEST_F(Binding, an_object_answers_imports_with_its_members) {
    Probe probe;
    EXPECT_EQ(result_of("import twice, fixed_step; main() { return twice(fixed_step); }", &probe), "2");
    EXPECT_EQ(result_of("import nothing_like_it; main() { }", &probe),
              "Script error: Cant find object to import (nothing_like_it)");
}

} // namespace
} // namespace kst::script
