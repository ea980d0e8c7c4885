#include "objects/controllers/KeyedControllers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/objects/stream_support.h"

namespace kst {
namespace {

using test_support::reading;
using test_support::StreamBytes;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

/// Keys whose content is their number.
KeyTrack<Key<float>> numbered_track(const std::vector<float>& times, bool looping = false) {
    KeyTrack<Key<float>> track;
    for (const float time : times)
        track.add_key(time, static_cast<float>(track.keys().size()));
    track.set_looping(looping);
    return track;
}

struct LookUp {
    std::vector<float> times;
    bool looping;
    float start, end;
    float time;
    float previous, next, alpha, delta;
};

TEST(KeyTrackTest, FindsTheSegmentByWrapAndEdgeRules) {
    for (const LookUp& c : {
             // One key, and before and behind the keys.
             LookUp{{5}, false, 5, 5, 4, 0, 0, 0, 0},
             {{5}, false, 5, 5, 5, 0, 0, 0, 0},
             {{5}, false, 5, 5, 6, 0, 0, 0, 0},
             {{1, 2}, false, 1, 2, 0.5f, 0, 0, 0, 0},
             {{1, 2}, false, 1, 2, 2.5f, 1, 1, 0, 0},
             // Between keys, and exactly at one: it is the end of its segment, but the first key is alone.
             {{1, 2, 4}, false, 1, 4, 2.5f, 1, 2, 0.25f, 2},
             {{1, 2, 4}, false, 1, 4, 2, 0, 1, 1, 1},
             {{1, 2, 4}, false, 1, 4, 4, 1, 2, 1, 2},
             {{1, 2, 4}, false, 1, 4, 1, 0, 0, 0, 0},
             // Wrapped into 0 to 1.
             {{0, 1}, true, 0, 1, 1.5f, 0, 1, 0.5f, 1},
             {{0, 1}, true, 0, 1, -0.25f, 0, 1, 0.75f, 1},
             {{0, 1}, true, 0, 1, 7.25f, 0, 1, 0.25f, 1},
             // A round without length is its first key.
             {{3, 4}, true, 3, 3, 9, 0, 0, 0, 0},
             {{3, 4}, true, 3, 3, 2, 0, 0, 0, 0},
             // Keys end at 2, the round at 4: from the last key to the first one of the next round.
             {{0, 2}, true, 0, 4, 3, 1, 0, 0.5f, 2},
             {{0, 2}, true, 0, 4, 7.5f, 1, 0, 0.75f, 2},
             // Keys begin at 1, the round at 2: the first key comes again one unit behind the end of the round.
             {{1, 3}, true, 2, 6, 5, 1, 0, 0.5f, 4},
             // Keys begin behind the round: the first key counts as coming at the end.
             {{1, 3}, true, 0, 4, 3.5f, 1, 0, 0.5f, 1},
             // Too close for a blend.
             {{1, 1.0000005f}, false, 1, 2, 1.0000005f, 0, 1, 0, 1.0000005f - 1},
         }) {
        KeyTrack<Key<float>> track = numbered_track(c.times, c.looping);
        track.set_range(c.start, c.end);
        KeyTrack<Key<float>>::Segment s;
        ASSERT_TRUE(track.find_segment(c.time, s));
        EXPECT_THAT((std::vector{*s.previous, *s.next, s.alpha, s.delta}),
                    testing::ElementsAre(c.previous, c.next, c.alpha, c.delta))
            << testing::PrintToString(c.times) << " at " << c.time;
    }
}

TEST(KeyTrackTest, TriesTheLastSegmentFirst) {
    KeyTrack<Key<float>> track = numbered_track({0, 1, 2});
    KeyTrack<Key<float>>::Segment s;
    track.find_segment(1.5f, s);
    track.find_segment(1, s);
    EXPECT_EQ(*s.previous, 1) << "the beginning of the segment that was found last";
    EXPECT_EQ(s.alpha, 0);
    track.add_key(7, 3);
    track.find_segment(1, s);
    EXPECT_EQ(*s.previous, 0) << "a new key makes it search again";
    // Before the first and behind the last key nothing is remembered.
    track.find_segment(-5, s);
    track.find_segment(1, s);
    EXPECT_EQ(*s.previous, 0);
}

TEST(KeyTrackTest, AddsKeysInOrder) {
    KeyTrack<Key<float>> track;
    KeyTrack<Key<float>>::Segment s;
    EXPECT_TRUE(track.empty());
    EXPECT_FALSE(track.find_segment(0, s));
    for (const float time : {4.0f, 9.0f, -1.0f, 5.0f})
        track.add_key(time, time);
    track.add_key(5, 50);
    EXPECT_FALSE(track.empty());
    EXPECT_EQ(track.start(), -1);
    EXPECT_EQ(track.end(), 9);
    std::vector<float> times, values;
    for (const Key<float>& key : track.keys()) {
        times.push_back(key.time);
        values.push_back(key.value);
    }
    EXPECT_THAT(times, testing::ElementsAre(-1, 4, 5, 9));
    EXPECT_THAT(values, testing::ElementsAre(-1, 4, 50, 9));
}

/// The rules once more, from the first key to the last and in double precision.
double literal_linear(const KeyTrack<Key<float>>& track, double time) {
    struct WideKey {
        double time, value;
    };
    std::vector<WideKey> keys;
    for (const Key<float>& key : track.keys())
        keys.push_back({key.time, key.value});
    const double first = keys[0].time, start = track.start(), end = track.end(), span = end - start;
    if (track.looping() && (time < start || time > end))
        time = span <= 0.00001 ? first : time - span * std::floor((time - first) / span);
    std::size_t i = 0;
    while (i < keys.size() && keys[i].time < time)
        ++i;
    if (i == 0)
        return keys[0].value;
    const WideKey previous = keys[i - 1];
    if (i == keys.size() && !track.looping())
        return previous.value;
    const bool next_round = i == keys.size();
    WideKey next = keys[next_round ? 0 : i];
    if (next_round)
        next.time = first <= start ? end + start - first : end;
    const double delta = next.time - previous.time;
    const double alpha = delta > 0.000001 ? (time - previous.time) / delta : 0;
    return (1 - alpha) * previous.value + alpha * next.value;
}

TEST(KeyTrackTest, AgreesWithTheLiteralRulesAtAnyTime) {
    std::mt19937 random(5);
    const auto quarter = [&](int from, int to) {
        return static_cast<float>(from + static_cast<int>(random() % static_cast<unsigned>(4 * (to - from)))) / 4;
    };
    for (int round = 0; round < 300; ++round) {
        LinearFloatController controller;
        for (std::size_t i = random() % 12 + 1; i > 0; --i)
            controller.add_key(quarter(0, 40), quarter(-8, 8));
        controller.track().set_looping(random() % 2 == 0);
        if (random() % 2 == 0)
            controller.track().set_range(controller.start_time() - quarter(-1, 3),
                                         controller.end_time() + quarter(0, 3));
        float time = -20;
        for (int i = 0; i < 100; ++i) {
            // Sixteenths and a bit, so that no time is so near to a key that rounding decides on its side.
            time = random() % 3 == 0 ? quarter(-20, 60) + 0.03125f : time + 0.3125f;
            float value = 0;
            ASSERT_TRUE(controller.get(time, value));
            // Steep where two keys stand a quarter apart.
            EXPECT_NEAR(value, literal_linear(controller.track(), static_cast<double>(time)), 2e-3)
                << round << ' ' << time;
        }
    }
}

TEST(KeyTrackTest, LookUpsInHostileTracksStayAmongTheKeys) {
    std::mt19937 random(9);
    const std::vector<float> times{0, 1, 2, -3, nan, infinity, -infinity, 1e30f, 1e-30f, -0.0f};
    const auto any_time = [&] { return times[random() % times.size()]; };
    for (int round = 0; round < 2000; ++round) {
        StreamBytes bytes;
        const auto count = static_cast<std::uint32_t>(random() % 5);
        bytes.u32(static_cast<std::uint32_t>(random())).f32({any_time(), any_time()}).u32(count);
        for (std::uint32_t i = 0; i < count; ++i)
            bytes.f32({any_time(), 1});
        Archive archive = reading(bytes.bytes);
        ReferenceMap references;
        LoadForm form(archive, references);
        KeyTrack<Key<float>> track;
        KeyTrack<Key<float>>::fields(track, form);
        for (int i = 0; i < 10; ++i) {
            KeyTrack<Key<float>>::Segment s;
            if (track.find_segment(any_time(), s))
                ASSERT_EQ(*s.previous + *s.next, 2);
            else
                ASSERT_TRUE(track.empty() || count == 0);
        }
    }
}

} // namespace
} // namespace kst
