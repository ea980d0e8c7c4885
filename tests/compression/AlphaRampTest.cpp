#include "compression/AlphaRamp.h"

#include "tests/compression/TestBlocks.h"
#include "tests/compression/oracle/Searches.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <vector>

namespace compression {
namespace {

// Kinds of alpha, as bytes of one block's samples.
struct AlphaKind {
    const char* name;
    std::vector<int> (*make)(std::mt19937& random, int count);
};

std::vector<int> noise(std::mt19937& random, int count) {
    std::vector<int> bytes;
    std::generate_n(std::back_inserter(bytes), count, [&] { return static_cast<int>(random() % 256); });
    return bytes;
}

std::vector<int> few_values(std::mt19937& random, int count) {
    const std::vector<int> values = noise(random, 2 + static_cast<int>(random() % 4));
    std::vector<int> bytes;
    std::generate_n(std::back_inserter(bytes), count, [&] { return values[random() % values.size()]; });
    return bytes;
}

std::vector<int> narrow_noise(std::mt19937& random, int count) {
    const int low = static_cast<int>(random() % 250);
    const int range = 1 << random() % 6;
    std::vector<int> bytes = noise(random, count);
    for (int& byte : bytes)
        byte = std::min(255, low + byte % (range + 1));
    return bytes;
}

// Across the block, with a grain: ties between thresholds and samples, and ends beyond 0 and 255.
std::vector<int> ramp(std::mt19937& random, int count) {
    const int start = static_cast<int>(random() % 320) - 32;
    const int right = static_cast<int>(random() % 33) - 16;
    const int down = static_cast<int>(random() % 33) - 16;
    const int grain = static_cast<int>(random() % 3);
    std::vector<int> bytes;
    bytes.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        bytes.push_back(
            std::clamp(start + right * (i % 4) + down * (i / 4) + static_cast<int>(random()) % (grain + 1), 0, 255));
    return bytes;
}

std::vector<int> cut_at_both_ends(std::mt19937& random, int count) {
    std::vector<int> bytes = noise(random, count);
    for (int& byte : bytes)
        byte = std::clamp(3 * byte - 256, 0, 255);
    return bytes;
}

std::vector<int> mostly_0_and_255(std::mt19937& random, int count) {
    std::vector<int> bytes = noise(random, count);
    for (int& byte : bytes)
        byte = random() % 4 == 0 ? byte : byte / 128 * 255;
    return bytes;
}

constexpr std::array kinds{AlphaKind{"noise", noise},
                           AlphaKind{"few values", few_values},
                           AlphaKind{"narrow noise", narrow_noise},
                           AlphaKind{"ramp", ramp},
                           AlphaKind{"cut at both ends", cut_at_both_ends},
                           AlphaKind{"mostly 0 and 255", mostly_0_and_255}};

AlphaContext make_alpha(const std::vector<int>& bytes) {
    AlphaContext alpha;
    for (const int byte : bytes)
        alpha.samples[static_cast<std::size_t>(alpha.count++)] = static_cast<float>(byte) / 255.0f;
    return alpha;
}

void expect_plain_results(std::vector<AlphaContext> alphas, const char* kind) {
    std::vector<AlphaContext> plain = alphas;
    for (AlphaContext& alpha : plain)
        oracle::solve_alpha(alpha);
    for (const RampBatchKernel& kernel : ramp_batch_kernels()) {
        solve_alpha(alphas, kernel);
        for (std::size_t i = 0; i < alphas.size(); ++i) {
            SCOPED_TRACE(testing::Message()
                         << kind << ", kernel " << static_cast<int>(kernel.level) << ", samples " << alphas[i].count);
            EXPECT_EQ(alphas[i].steps, plain[i].steps);
            EXPECT_EQ(alphas[i].alpha0, plain[i].alpha0);
            EXPECT_EQ(alphas[i].alpha1, plain[i].alpha1);
            EXPECT_EQ(alphas[i].codes, plain[i].codes);
        }
    }
}

TEST(AlphaRamp, is_the_plain_one_for_each_kind_and_count) {
    std::mt19937 random(5);
    for (const AlphaKind& kind : kinds)
        for (int round = 0; round < 40; ++round) {
            std::vector<AlphaContext> alphas;
            for (int count = 1; count <= 16; ++count)
                for (const int samples : {count, 16})
                    alphas.push_back(make_alpha(kind.make(random, samples)));
            expect_plain_results(alphas, kind.name);
        }
}

// Output scales and biases also take alpha beyond 0 and 1.
TEST(AlphaRamp, is_the_plain_one_off_the_grid_of_bytes_and_beyond_it) {
    std::mt19937 random(6);
    std::uniform_real_distribution<float> unit(0, 1);
    constexpr std::array scales{0.05f, 1.0f, 1.5f, 100.0f};
    for (int round = 0; round < 100; ++round) {
        std::vector<AlphaContext> alphas(1 + random() % alpha_batch);
        for (AlphaContext& alpha : alphas) {
            alpha.count = 1 + static_cast<int>(random() % 16);
            const float scale = scales[random() % scales.size()];
            const float bias = scale > 1 ? -0.3f * scale : 0.0f;
            std::generate_n(alpha.samples.begin(), alpha.count, [&] {
                return random() % 8 == 0 ? static_cast<float>(random() % 2) : scale * unit(random) + bias;
            });
        }
        expect_plain_results(alphas, "floats");
    }
}

TEST(AlphaRamp, is_the_plain_one_for_the_colours_of_the_other_searches) {
    for (const TestBlock& block : test_blocks(150)) {
        AlphaContext alpha;
        for (const auto& pixel : block.pixels)
            alpha.samples[static_cast<std::size_t>(alpha.count++)] = static_cast<float>(pixel[1]) / 255.0f;
        expect_plain_results({alpha}, block.kind.c_str());
    }
}

} // namespace
} // namespace compression
