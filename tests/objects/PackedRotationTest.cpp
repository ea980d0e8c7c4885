#include "objects/controllers/KeyedControllers.h"
#include "objects/controllers/thin_keys.h"
#include "tests/objects/stream_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace kst {
namespace {

using test_support::reading;
using test_support::StreamBytes;

using Keys = std::vector<Key<GQuat>>;

float largest_difference(const GQuat& a, const GQuat& b) {
    return std::max(std::max(std::abs(a.x - b.x), std::abs(a.y - b.y)),
                    std::max(std::abs(a.z - b.z), std::abs(a.w - b.w)));
}

GQuat negated(const GQuat& q) {
    return {-q.x, -q.y, -q.z, -q.w};
}

TEST(PackedQuatTest, PacksToTheBit) {
    // 512 stands for 0: (0.75 + 0) × 2/3 × 1024.
    EXPECT_EQ(pack({0, 0, 0, 1}).bits, 3u + (512u << 2) + (512u << 12) + (512u << 22));
    EXPECT_EQ(unpack(pack({0, 0, 0, 1})), (GQuat{0, 0, 0, 1}));
    EXPECT_EQ(unpack(pack({0, -1, 0, 0})), (GQuat{0, 1, 0, 0}));
    // 1.25 × 2/3 × 1024 = 853.3, 0.25 × 2/3 × 1024 = 170.7; x is the first of four equals.
    EXPECT_EQ(pack({0.5f, 0.5f, -0.5f, 0.5f}).bits, 0u + (853u << 2) + (170u << 12) + (853u << 22));
    EXPECT_EQ(pack({-0.5f, 0.5f, -0.5f, 0.5f}).bits, 0u + (170u << 2) + (853u << 12) + (170u << 22));
    EXPECT_EQ(unpack({853u << 2}).y, 853 * 0.00146484375f - 0.75f);
    // Three components that are too long leave nothing for the fourth.
    EXPECT_EQ(unpack({2u}), (GQuat{-0.75f, -0.75f, 0, -0.75f}));
}

TEST(PackedQuatTest, ComesBackUpToItsSign) {
    std::mt19937 random(1);
    for (int i = 0; i < 10'000; ++i) {
        const auto part = [&] { return static_cast<float>(random() % 2001) - 1000; };
        const GQuat q = normalised(GQuat{part(), part(), part(), part() + 0.5f});
        const GQuat back = unpack(pack(q));
        EXPECT_LT(std::min(largest_difference(q, back), largest_difference(q, negated(back))), 0.0045f);
        EXPECT_EQ(pack(negated(q)), pack(q));
    }
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float wild : {nan, 1e30f, -1e30f})
        for (const GQuat& q : {GQuat{wild, 1, 1, 1}, GQuat{wild, wild, wild, wild}, GQuat{1, wild, 0, -wild}})
            EXPECT_LE(std::abs(unpack(pack(q)).x), 1);
}

/// Key by key, as the rule is told.
Keys literal_thinning(const Keys& keys) {
    Keys kept;
    std::vector<Key<GQuat>> skipped;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        bool skip = i > 0 && i + 1 < keys.size();
        if (skip) {
            const Key<GQuat>&last = kept.back(), &next = keys[i + 1];
            skipped.push_back(keys[i]);
            for (const Key<GQuat>& k : skipped) {
                const float a = (k.time - last.time) / (next.time - last.time);
                const GQuat b = blend(last.value, next.value, a);
                const auto off = [](float x, float y) { return std::abs(x - y) > 0.0015f; };
                if (off(b.x, k.value.x) || off(b.y, k.value.y) || off(b.z, k.value.z) || off(b.w, k.value.w))
                    skip = false;
            }
        }
        if (!skip) {
            kept.push_back(keys[i]);
            skipped.clear();
        }
    }
    return kept;
}

void expect_literal(const Keys& keys, const char* what) {
    const Keys expected = literal_thinning(keys);
    const Keys thinned = thin_keys(keys);
    ASSERT_EQ(thinned.size(), expected.size()) << what;
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(std::memcmp(&thinned[i], &expected[i], sizeof expected[i]), 0) << what << ' ' << i;
}

Keys arc_keys(std::size_t count, double angle_per_key, double wobble = 0, unsigned seed = 1) {
    std::mt19937 random(seed);
    Keys keys;
    for (std::size_t i = 0; i < count; ++i) {
        const auto noise = [&] {
            return static_cast<float>(wobble * (static_cast<int>(random() % 2001) - 1000) / 1000);
        };
        GQuat q = rotation_about({1, 2, 2}, static_cast<float>(2 * angle_per_key * static_cast<double>(i)));
        q = {q.x + noise(), q.y + noise(), q.z + noise(), q.w + noise()};
        keys.push_back({static_cast<float>(i), normalised(q)});
    }
    return keys;
}

TEST(ThinKeysTest, EvenlyOnAnArcTwoKeysRemain) {
    const Keys keys = arc_keys(100, 0.01);
    const Keys thinned = thin_keys(keys);
    ASSERT_EQ(thinned.size(), 2u);
    EXPECT_EQ(thinned[1].time, 99);
    EXPECT_EQ(thin_keys(Keys()).size(), 0u);
    EXPECT_EQ(thin_keys(arc_keys(1, 0)).size(), 1u);
    EXPECT_EQ(thin_keys(arc_keys(2, 0)).size(), 2u);
}

TEST(ThinKeysTest, KeepsWhatTheLiteralRuleKeeps) {
    for (const double angle : {0.0, 1e-6, 0.0005, 0.003, 0.02, 0.4})
        for (const double wobble : {0.0, 0.0002, 0.0007, 0.0012, 0.003})
            expect_literal(arc_keys(800, angle, wobble),
                           (std::to_string(angle) + " " + std::to_string(wobble)).c_str());
    for (const double bend : {1e-7, 3e-6, 1e-4}) {
        Keys keys;
        for (int i = 0; i < 1000; ++i) {
            // A turn whose axis and speed change on the way, with uneven times and a change of sign now and then.
            const auto t = static_cast<float>(i);
            const auto turned = static_cast<float>(bend) * t * t;
            const GQuat q = rotation_about({1, turned, 0.5f}, 0.002f * t + turned);
            keys.push_back({t + (i % 3 == 0 ? 0.2f : 0), i % 401 == 0 ? negated(q) : q});
        }
        expect_literal(keys, "bend");
    }
}

TEST(ThinKeysTest, KeepsWhatTheLiteralRuleKeepsOfHostileKeys) {
    std::mt19937 random(4);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (int round = 0; round < 200; ++round) {
        Keys keys = arc_keys(random() % 500, round % 3 * 0.001);
        for (std::size_t hits = random() % 4; hits > 0 && !keys.empty(); --hits) {
            Key<GQuat>& key = keys[random() % keys.size()];
            switch (random() % 6) {
            case 0:
                key.time = nan;
                break;
            case 1:
                key.time = -key.time;
                break;
            case 2:
                key.value = {0, 0, 0, 0};
                break;
            case 3:
                key.value.x = nan;
                break;
            case 4:
                key.value.y *= 1.001f;
                break;
            default:
                key.value.w = 1e30f;
            }
        }
        expect_literal(keys, "hostile");
    }
    expect_literal(Keys(400, {0, {0, 0, 0, 0}}), "all the same, and nothing");
}

TEST(ThinKeysTest, LongTracksTakeLittleTime) {
    EXPECT_EQ(thin_keys(arc_keys(200'000, 1e-6)).size(), 2u);
    // Of no length, so that nothing can be bounded: the comparisons run out, and keys remain.
    Keys zero(50'000);
    for (std::size_t i = 0; i < zero.size(); ++i)
        zero[i] = {static_cast<float>(i), {0, 0, 0, 0}};
    const std::size_t kept = thin_keys(zero).size();
    EXPECT_GT(kept, 2u);
    EXPECT_LT(kept, zero.size() / 60);
}

TEST(PackedRotationTest, ReadsTheTrackOfItsTwinAndWritesItThinner) {
    StreamBytes bytes;
    bytes.text("r").u32(2).f32({-1, 12}).u32(3);
    for (const float time : {0.0f, 5.0f, 10.0f})
        bytes.f32({time, 0, 0, 0, -1});
    QuatLinearRotationControllerPacked packed;
    Archive archive = reading(bytes.bytes);
    ReferenceMap references;
    packed.load(archive, references);
    EXPECT_EQ(packed.track().keys().size(), 2u);
    EXPECT_EQ(packed.memory_size(), 12u + 8 * 2);
    EXPECT_TRUE(packed.track().looping());
    GQuat value;
    ASSERT_TRUE(packed.get(3, value));
    EXPECT_EQ(value, (GQuat{0, 0, 0, 1}));
    Archive out = test_support::writing();
    packed.save(out, references);
    StreamBytes expected;
    expected.text("r").u32(2).f32({-1, 12}).u32(2).f32({0, 0, 0, 0, 1}).f32({10, 0, 0, 0, 1});
    EXPECT_EQ(test_support::written(out), expected.bytes);
}

} // namespace
} // namespace kst
