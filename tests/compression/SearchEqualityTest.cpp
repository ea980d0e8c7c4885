#include "compression/ClusterFit.h"
#include "compression/CompressionOptions.h"
#include "compression/ExhaustiveSearch.h"
#include "compression/FastFit.h"
#include "compression/FastFitBatch.h"
#include "compression/PaletteError.h"
#include "tests/compression/TestBlocks.h"
#include "tests/compression/oracle/Searches.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

// The fast searches against their plain forms, bit for bit.

namespace compression {
namespace {

void expect_equal(const BlockContext& fast, const BlockContext& plain, const std::string& kind) {
    EXPECT_EQ(fast.end0, plain.end0) << kind;
    EXPECT_EQ(fast.end1, plain.end1) << kind;
    EXPECT_EQ(fast.colour_count, plain.colour_count) << kind;
    EXPECT_TRUE(std::equal(fast.indices.begin(), fast.indices.begin() + fast.count, plain.indices.begin())) << kind;
}

TEST(EvaluatePalette, is_the_plain_one) {
    for (const TestBlock& block : test_blocks(100))
        for (const int colour_count : {3, 4}) {
            BlockContext fast = make_context(block);
            fast_fit(fast, colour_count);
            BlockContext plain = fast;
            EXPECT_EQ(evaluate_palette(fast), oracle::evaluate_palette(plain));
            expect_equal(fast, plain, block.kind);
        }
}

// What the plain fit makes of one lane: three colours with the evaluation's indices if they are no worse.
BlockContext solve_plainly(const TestBlock& block, bool may_choose) {
    BlockContext four = make_context(block);
    fast_fit(four, 4);
    if (!may_choose)
        return four;
    BlockContext three = four;
    fast_fit(three, 3);
    BlockContext evaluated = four;
    return oracle::evaluate_palette(three) <= oracle::evaluate_palette(evaluated) ? three : four;
}

BlockContext lane_of(const FastBatchResult& result, std::size_t lane) {
    BlockContext block;
    block.count = 16;
    const int w0 = result.word0[lane];
    const int w1 = result.word1[lane];
    block.end0 = {w0 >> 11, w0 >> 5 & 63, w0 & 31};
    block.end1 = {w1 >> 11, w1 >> 5 & 63, w1 & 31};
    block.colour_count = result.colour_count[lane];
    for (std::size_t i = 0; i < 16; ++i)
        block.indices[i] = static_cast<std::uint8_t>(result.indices[lane] >> (2 * i) & 3);
    return block;
}

void expect_equal(const LineFit& fast, const LineFit& plain, const std::string& kind) {
    EXPECT_EQ(fast.score, plain.score) << kind;
    EXPECT_EQ(fast.axis, plain.axis) << kind;
    EXPECT_EQ(fast.end0, plain.end0) << kind;
    EXPECT_EQ(fast.end1, plain.end1) << kind;
    EXPECT_EQ(fast.steps, plain.steps) << kind;
}

TEST(LineFit, finds_what_the_plain_walk_finds) {
    std::mt19937 random(4);
    for (const TestBlock& block : test_blocks(100)) {
        const BlockContext context = make_context(block);
        const DistinctColours colours(context);
        if (colours.count < 2)
            continue;
        Order order{};
        std::iota(order.begin(), order.end(), std::uint8_t{0});
        const auto end = order.begin() + static_cast<std::ptrdiff_t>(colours.count);
        const std::size_t channel = random() % 4;
        if (channel < 3) // else as they come: an order that no line has
            std::sort(order.begin(), end, [&](std::uint8_t a, std::uint8_t b) {
                return colours.centred[a][channel] < colours.centred[b][channel];
            });
        for (const int step_limit : {2, 3}) {
            const LineFit plain = oracle::fit_line(colours, order, step_limit);
            for (const SplitWalkKernel& kernel : split_walk_kernels())
                expect_equal(fit_line(colours, order, step_limit, kernel), plain, block.kind);
            expect_equal(fit_line_in_box(colours, order, step_limit, context.weights),
                         oracle::fit_line_in_box(colours, order, step_limit, context.weights), block.kind);
        }
    }
}

TEST(LatticeSearch, finds_what_the_plain_walk_finds) {
    std::mt19937 random(3);
    for (const TestBlock& block : test_blocks(60)) {
        const BlockContext context = make_context(block);
        const DistinctColours colours(context);
        // Ends at two of the colours, and beyond them as far as the outermost rows of the end table go.
        const Vector3& a = colours.weighted[random() % colours.count];
        const Vector3& b = colours.weighted[random() % colours.count];
        const double reach = static_cast<double>(random() % 5) / 2;
        Vector3 end0{};
        Vector3 end1{};
        for (std::size_t c = 0; c < 3; ++c) {
            end0[c] = a[c] + reach * (a[c] - b[c]);
            end1[c] = b[c] + reach * (b[c] - a[c]) / 2;
        }
        for (const int levels : {3, 4}) {
            const LatticeResult plain = oracle::lattice_search(colours, context.weights, levels, end0, end1);
            for (const LatticeKernel& kernel : lattice_kernels()) {
                const LatticeResult fast = lattice_search(colours, context.weights, levels, end0, end1, kernel);
                EXPECT_EQ(fast.error, plain.error) << block.kind;
                EXPECT_EQ(fast.end0, plain.end0) << block.kind;
                EXPECT_EQ(fast.end1, plain.end1) << block.kind;
                EXPECT_EQ(fast.indices, plain.indices) << block.kind;
            }
        }
    }
}

TEST(FastFitBatch, gives_every_lane_the_plain_result) {
    std::vector<TestBlock> blocks = test_blocks(200);
    std::erase_if(blocks, [](const TestBlock& block) { return block.pixels.size() < 16; });
    FastBatch batch;
    batch.weights = CompressionOptions{}.colour_weights;
    for (std::size_t first = 0; first + batch_lanes <= blocks.size(); first += batch_lanes) {
        for (std::size_t lane = 0; lane < batch_lanes; ++lane)
            for (std::size_t i = 0; i < 16; ++i)
                for (std::size_t c = 0; c < 3; ++c)
                    batch.colours[c][i][lane] = static_cast<float>(blocks[first + lane].pixels[i][c]) / 255.0f;
        for (const bool may_choose : {false, true})
            for (const FastBatchKernel& kernel : fast_batch_kernels()) {
                batch.may_choose = batch.offers_black = may_choose;
                FastBatchResult result;
                kernel.solve(batch, result);
                for (std::size_t lane = 0; lane < batch_lanes; ++lane)
                    expect_equal(lane_of(result, lane), solve_plainly(blocks[first + lane], may_choose),
                                 blocks[first + lane].kind);
            }
    }
}

TEST(ExhaustiveSearch, finds_what_the_plain_walk_finds) {
    for (const TestBlock& block : test_blocks(1))
        for (const bool poor_start : {false, true}) {
            BlockContext start = make_context(block);
            if (start.count < 2)
                continue;
            start.format = static_cast<int>(block.pixels[0][0] & 1);
            if (!poor_start)
                cluster_fit(start, 4);
            const double error = evaluate_palette(start);
            BlockContext plain = start;
            const double plain_error = oracle::exhaustive_search(plain, error);
            for (const PaletteBoundKernels& kernels : palette_bound_kernels()) {
                BlockContext fast = start;
                EXPECT_EQ(exhaustive_search(fast, error, kernels), plain_error) << block.kind;
                expect_equal(fast, plain, block.kind);
            }
        }
}

} // namespace
} // namespace compression
