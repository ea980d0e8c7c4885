#include "objects/timers/TimerManager.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <memory>
#include <vector>

#include "tests/script/RuntimeSupport.h"

namespace kst {
namespace {

/// A counter of 1000 a second that only the test moves.
std::int64_t counter = 5000;
std::int64_t read_counter() {
    return counter;
}

struct TimerTest : testing::Test {
    TimerManager timers{read_counter, 1000};

    void frame(std::int64_t milliseconds, float main_step = 0) {
        counter += milliseconds;
        timers.main().update(main_step);
        timers.tick();
    }

    /// Runs the body of `main` with `t`, the manager.
    std::string run(const std::string& body) {
        script::RuntimeHost host;
        host.add("t", timers.value());
        return script::result_of("import t; main() {" + body + "}", &host);
    }
};

TEST_F(TimerTest, StepsFlowDownTheTree) {
    timers.pausable().set_multiplier(2);
    frame(1000, 0.5f);
    EXPECT_EQ(timers.wall().time(), 1);
    EXPECT_EQ(timers.wall_running().time(), 1);
    EXPECT_EQ(timers.game_animation().time(), 0.1f); // its longest step
    EXPECT_EQ(timers.main().time(), 0.5f);
    EXPECT_EQ(timers.pausable().time(), 1);
    EXPECT_EQ(timers.game().delta_time(), 1);

    timers.pausable().pause();
    frame(20, 0.25f);
    EXPECT_EQ(timers.wall().time(), 1.02f);
    EXPECT_EQ(timers.game_animation().delta_time(), 0.02f);
    EXPECT_EQ(timers.main().delta_time(), 0.25f);
    EXPECT_EQ(timers.pausable().time(), 1);
    EXPECT_EQ(timers.pausable().delta_time(), 0);
    EXPECT_EQ(timers.game().time(), 1);
    EXPECT_EQ(timers.game().delta_time(), 0);
    EXPECT_DOUBLE_EQ(timers.running_time(), 1.02);

    timers.pausable().play();
    timers.game().set_max_step(-1); // a limit below zero runs backwards
    frame(0, 1);
    EXPECT_EQ(timers.game().time(), 0);
}

TEST_F(TimerTest, TimesAreSetOnWhatIsSynchronised) {
    ChildTimer& follower = timers.make_timer("follower", timers.main());
    ChildTimer below(&follower);
    timers.main().set_time(7);
    EXPECT_EQ(below.time(), 7);
    follower.set_synchronised(false);
    timers.main().set_time(9);
    EXPECT_EQ(follower.time(), 7);
    EXPECT_EQ(below.time(), 7);
    EXPECT_EQ(timers.game().time(), 9); // two levels below
    timers.main().reset();
    EXPECT_EQ(timers.main().time(), 0);
    EXPECT_EQ(timers.game().time(), 0);
    EXPECT_EQ(follower.time(), 7);
    timers.main().set_time(9);
    follower.reset(); // its own time goes to 0, whoever it follows
    EXPECT_EQ(follower.time(), 0);
    EXPECT_EQ(below.time(), 0);

    frame(0, 0.5f);
    ChildTimer late(&timers.main());
    EXPECT_EQ(late.delta_time(), 0.5f);
    EXPECT_EQ(late.time(), 9.5f);
    follower.set_parent(&timers.wall()); // not synchronised: the step, not the time
    EXPECT_EQ(follower.time(), 0.5f);
    EXPECT_EQ(follower.delta_time(), 0);
}

TEST_F(TimerTest, RampsReachTheirTargetByTheirClock) {
    ChildTimer& slow = timers.make_timer("slow", timers.wall());
    timers.ramp_multiplier(slow, 3, 1, timers.wall());
    // Steps of a quarter second: what is left shrinks with the time that is left, so the steps are even.
    for (const float expected : {1.5f, 2.0f, 2.5f, 3.0f}) {
        frame(250);
        EXPECT_FLOAT_EQ(slow.multiplier(), expected);
    }
    EXPECT_EQ(timers.ramp_count(), 1u); // gone at the next tick
    slow.set_multiplier(1);
    frame(250);
    EXPECT_EQ(timers.ramp_count(), 0u);
    EXPECT_EQ(slow.multiplier(), 1);

    timers.ramp_multiplier(slow, 100, 1, timers.wall());
    timers.ramp_multiplier(slow, 0, 2, timers.wall()); // replaces the first
    frame(1000);
    EXPECT_FLOAT_EQ(slow.multiplier(), 0.5f);
    timers.ramp_multiplier(slow, 8, 0, timers.wall());
    frame(1000);
    EXPECT_FLOAT_EQ(slow.multiplier(), 0.5f);
    timers.ramp_multiplier(slow, 8, std::numeric_limits<float>::quiet_NaN(), timers.wall());
    frame(1);
    EXPECT_EQ(slow.multiplier(), 8);
}

TEST_F(TimerTest, TheGameDoesNotCrawl) {
    timers.ramp_multiplier(timers.game(), 0, 1, timers.wall());
    float last = 1;
    int frames = 0;
    for (; timers.game().multiplier() > 0; ++frames) {
        last = timers.game().multiplier();
        frame(10);
        ASSERT_LT(timers.game().multiplier(), last);
    }
    // 1 second in hundred frames: the 98th would go below 0.03.
    EXPECT_EQ(frames, 98);
    EXPECT_NEAR(last, 0.03f, 1e-4f);
    frame(10);
    EXPECT_EQ(timers.ramp_count(), 0u);

    timers.ramp_multiplier(timers.game(), 1, 1, timers.wall());
    frame(10);
    EXPECT_EQ(timers.game().multiplier(), 0.03f);
    frame(10);
    EXPECT_GT(timers.game().multiplier(), 0.03f);
    // A target on the slowest speed is reached in its time; one below it ends the ramp as soon as that speed is passed.
    timers.game().set_multiplier(1);
    timers.ramp_multiplier(timers.game(), 0.03f, 1, timers.wall());
    frame(990);
    EXPECT_NEAR(timers.game().multiplier(), 0.0397f, 1e-4f);
    frame(10);
    EXPECT_EQ(timers.game().multiplier(), 0.03f);
    timers.ramp_multiplier(timers.game(), 0.02f, 1, timers.wall());
    frame(10);
    EXPECT_EQ(timers.game().multiplier(), 0.02f);
    timers.game().set_multiplier(1);
    frame(10);
    EXPECT_EQ(timers.ramp_count(), 0u);
    EXPECT_EQ(timers.game().multiplier(), 1);
    // Any other timer does crawl.
    timers.ramp_multiplier(timers.pausable(), 0, 1, timers.wall());
    frame(990);
    EXPECT_NEAR(timers.pausable().multiplier(), 0.01f, 1e-4f);
}

TEST_F(TimerTest, MakesAndFindsTimersByName) {
    EXPECT_EQ(timers.timer("game"), &timers.game());
    EXPECT_EQ(timers.timer("wall"), nullptr);
    EXPECT_EQ(timers.timer("mine"), nullptr);
    ChildTimer& mine = timers.make_timer("mine", timers.wall());
    EXPECT_EQ(timers.timer("mine"), &mine);
    mine.set_multiplier(5);
    mine.set_max_step(1);
    mine.pause();
    mine.set_synchronised(false);
    frame(1000, 4);
    EXPECT_EQ(&timers.make_timer("mine", timers.main()), &mine);
    EXPECT_EQ(mine.parent(), &timers.main());
    EXPECT_EQ(mine.time(), 4);
    EXPECT_EQ(mine.multiplier(), 1);
    EXPECT_FALSE(mine.is_paused());
    EXPECT_TRUE(mine.is_synchronised());
    EXPECT_EQ(mine.max_step(), ChildTimer::no_step_limit);
    EXPECT_EQ(timers.wall().children().size(), 1u); // the game's animation alone
    EXPECT_THROW(timers.make_timer("game", timers.wall()), script::DSError);
}

TEST_F(TimerTest, NoTimerRunsOnItself) {
    ChildTimer& above = timers.make_timer("above", timers.main());
    ChildTimer& below = timers.make_timer("below", above);
    EXPECT_THROW(above.set_parent(&above), script::DSError);
    EXPECT_THROW(timers.make_timer("above", below), script::DSError);
    EXPECT_EQ(above.parent(), &timers.main());
    EXPECT_EQ(run("t.make_timer(\"above\", t.timer(\"below\"));"), "A timer can not run on itself");

    std::vector<std::unique_ptr<ChildTimer>> chain;
    Timer root;
    Timer* last = &root;
    const auto grow = [&] {
        auto next = std::make_unique<ChildTimer>(last);
        last = chain.emplace_back(std::move(next)).get();
    };
    for (int i = 1; i < ChildTimer::depth_limit; ++i)
        grow();
    EXPECT_THROW(grow(), script::DSError);
    EXPECT_THROW(chain.front()->set_parent(&timers.game()), script::DSError);
    root.update(1);
    EXPECT_EQ(last->time(), 1);
}

TEST_F(TimerTest, EitherSideMayGoFirst) {
    ChildTimer orphan;
    {
        Timer parent;
        orphan.set_parent(&parent);
        const ChildTimer gone(&parent);
        EXPECT_EQ(parent.children().size(), 2u);
    }
    EXPECT_EQ(orphan.parent(), nullptr);
    {
        Timer clock;
        ChildTimer ramped(&clock);
        timers.ramp_multiplier(ramped, 2, 10, timers.wall());
        timers.ramp_multiplier(timers.game(), 2, 10, clock);
    }
    frame(100);
    EXPECT_EQ(timers.ramp_count(), 0u);
    EXPECT_EQ(timers.game().multiplier(), 1);
}

TEST_F(TimerTest, ScriptsSeeTheTree) {
    struct Case {
        const char* body;
        const char* result;
    };
    frame(500, 2);
    for (const Case& c : {
             Case{"return t;", "<TimerManager>"},
             Case{"return t.wall();", "<Timer>"},
             Case{"return t.game();", "<ChildTimer>"},
             Case{"return t.wall().time() + t.main().delta_time();", "2.5"},
             Case{"return t.timer(\"game\") = t.game();", "true"},
             Case{"return t.timer(\"none\") = void;", "true"},
             Case{"object m; m := t.make_timer(\"m\", t.game()); m.set_multiplier(0.5); m.pause();"
                  "return \"\" + m.time() + m.multiplier() + m.is_paused() + t.timer(\"m\").is_paused();",
                  "20.5truetrue"},
             Case{"object g; g := t.game(); g.set_max_step(3); g.play(); return g.max_step();", "3"},
             Case{"t.ramp_multiplier(t.wall(), 1, 1, t.wall());",
                  "Value is not of type <ChildTimer> it is of type <Timer>"},
             Case{"t.make_timer(\"m\", 4);", "Value is not of type <Timer> it is of type <number>"},
             Case{"t.ramp_multiplier(t.pausable(), 4, 1, t.wall());", ""},
         })
        EXPECT_EQ(run(c.body), c.result) << c.body;
    frame(1000);
    EXPECT_EQ(timers.pausable().multiplier(), 4);
}

} // namespace
} // namespace kst
