#include "script/runtime/ScriptTCList.h"

#include <gtest/gtest.h>

#include "tests/script/RuntimeSupport.h"

namespace kst::script {
namespace {

struct ScheduleCase {
    const char* body;
    const char* result;
};

class TimedCallbacks : public testing::TestWithParam<ScheduleCase> {};

// A second is 4800 units. Each callback notes the list's seconds and those since its last call.
TEST_P(TimedCallbacks, follow_the_schedule) {
    const std::string program = std::string(R"(
import containers;
object c; object log; object entry; object other;
note(e, time, elapsed) { log := log + "%.3f/%.3f ".format(time, elapsed); return e; }
name(e, time) { log := log + e.type_string + (e = entry) + " "; }
remove_other(e, time) { log := log + "r "; c.remove(other); }
add_more(e, time) { log := log + "a "; c.add(note, 0, 1); }
update_more(e, time) { log := log + "u "; c.update(1200); }
update_for_ever(e, time) { c.update(4800); }
clear_all(e, time) { log := log + "c "; c.clear(); }
reset_all(e, time) { log := log + "0 "; c.reset(); }
fail(e, time) { log := log + "f "; e.missing(); }
main() { log := ""; c := containers.CallbackHandler(); )") +
                                GetParam().body + " return log; }";
    const std::size_t before = live_records();
    {
        RuntimeHost host;
        EXPECT_EQ(result_of(program, &host), GetParam().result) << GetParam().body;
    }
    EXPECT_EQ(live_records(), before) << GetParam().body;
}

INSTANTIATE_TEST_SUITE_P(
    Schedules, TimedCallbacks,
    testing::Values(
        // Every second, for ever, seen by updates of 0.4 s: due at 1.2 (elapsed 1.2) and, from there, at 2.4.
        ScheduleCase{"c.add(note, 4800, -1); object i := 0; while (i < 6) { c.update(1920); i := i + 1; }",
                     "1.200/1.200 2.400/1.200 "},
        // Twice only, and one call an update however long it is. The boundary itself is due.
        ScheduleCase{"c.add(note, 4800, 2); c.update(4800); c.update(48000); c.update(48000);",
                     "1.000/1.000 11.000/10.000 "},
        ScheduleCase{"c.add(note, 4800, 2); c.update(4799); log := log + \"- \"; c.update(1);", "- 1.000/1.000 "},
        // An entry begins when it is added.
        ScheduleCase{"c.update(2400); c.add(note, 4800, 1); c.update(2400); c.update(2400);", "1.500/1.000 "},
        // No call at all: the count is gone before the time has come. But due at once it is called.
        ScheduleCase{"c.add(note, 4800, 0); c.update(0); c.update(4800);", ""},
        ScheduleCase{"c.add(note, 0, 0); c.update(0); c.update(4800);", "0.000/0.000 "},
        ScheduleCase{"entry := c.add(name, 0, 1); c.update(0); entry := 0;", "<ScriptTimedCallback>true "},
        ScheduleCase{"entry := c.add(note, 4800, -1); c.update(4800); c.remove(entry); c.remove(entry); "
                     "c.update(4800); entry := 0;",
                     "1.000/1.000 "},
        // The walk is over a copy: what is taken out still has its turn, what is put in waits for the next update.
        ScheduleCase{
            "c.add(remove_other, 0, 1); other := c.add(note, 0, -1); c.update(4800); c.update(4800); other := 0;",
            "r 1.000/1.000 "},
        ScheduleCase{"c.add(add_more, 0, 1); c.update(4800); log := log + \"- \"; c.update(4800);", "a - 2.000/1.000 "},
        ScheduleCase{"c.add(clear_all, 0, -1); c.add(note, 0, -1); c.update(4800); c.update(4800);", "c 1.000/1.000 "},
        ScheduleCase{"c.add(reset_all, 4800, -1); c.update(4800); c.update(2400); c.update(2400);", "0 0 "},
        ScheduleCase{"c.add(update_more, 4800, -1); c.add(note, 2400, -1); c.update(4800);", "u 1.250/1.250 "},
        ScheduleCase{"c.add(update_for_ever, 4800, -1); c.update(4800);", "Script error: calls are nested too deeply"},
        ScheduleCase{"c.add(note, 4800, -1); c.update(9600); c.reset(); c.update(2400); c.update(2400);",
                     "2.000/2.000 1.000/1.000 "},
        // A copy goes on from the same state, with entries of its own.
        ScheduleCase{"entry := c.add(note, 4800, 1); c.update(2400); object d := c.copy(); c.remove(entry); "
                     "d.update(2400); c.update(9600); entry := 0; log := log + d.type_string;",
                     "1.000/1.000 <ScriptTCList>"},
        ScheduleCase{"c.add(4, 0, 1); c.update(0);", "cant call this thing (type:<number>)"},
        ScheduleCase{"c.remove(c);", "Value is not of type <ScriptTimedCallback> it is of type <ScriptTCList>"},
        ScheduleCase{"c.remove(void);", "Value is not of type <ScriptTimedCallback> it is of type <void>"}));

/// Fails each time it is called, and counts.
class Failing : public Bound<Failing> {
public:
    static constexpr std::string_view script_name = "Failing";
    static void bind(StaticMemberSet<Failing>&) {}
    ScriptValue call(Arguments) override {
        ++calls;
        destroyed.reset();
        throw DSError("failed");
    }
    int calls = 0;
    std::unique_ptr<ScriptTCList> destroyed;
};

TEST(TimedCallbacks, a_failing_callback_has_had_its_turn_and_others_have_theirs_later) {
    const std::size_t before = live_records();
    {
        Failing first, second;
        ScriptTCList list;
        list.add(first.value(), 10, 1);
        list.add(second.value(), 10, -1);
        EXPECT_EQ(error_of([&] { list.update(10); }), "failed");
        EXPECT_EQ(list.active(), 1u);
        EXPECT_EQ(second.calls, 0);
        EXPECT_EQ(error_of([&] { list.update(0); }), "failed");
        EXPECT_EQ(error_of([&] { list.update(0); }), "no error");
        EXPECT_EQ(first.calls + second.calls, 2);
        // One that destroys the list on its way out.
        second.destroyed = std::make_unique<ScriptTCList>(list);
        EXPECT_EQ(error_of([&] { second.destroyed->update(10); }), "failed");
    }
    EXPECT_EQ(live_records(), before);
}

} // namespace
} // namespace kst::script
