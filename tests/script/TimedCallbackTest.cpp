#include "script/runtime/ScriptTCList.h"

#include <gtest/gtest.h>

#include "tests/script/RuntimeSupport.h"

namespace kst::script {
namespace {

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
