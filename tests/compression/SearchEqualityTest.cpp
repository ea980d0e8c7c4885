#include "compression/ClusterFit.h"
#include "compression/ExhaustiveSearch.h"
#include "compression/FastFit.h"
#include "compression/PaletteError.h"
#include "tests/compression/TestBlocks.h"
#include "tests/compression/oracle/Searches.h"

#include <gtest/gtest.h>

#include <algorithm>

// The fast searches against their plain forms, bit for bit.

namespace compression {
namespace {

void expect_equal(const BlockContext& fast, const BlockContext& plain, const std::string& kind) {
    EXPECT_EQ(fast.end0, plain.end0) << kind;
    EXPECT_EQ(fast.end1, plain.end1) << kind;
    EXPECT_EQ(fast.colour_count, plain.colour_count) << kind;
    EXPECT_TRUE(std::equal(fast.indices.begin(), fast.indices.begin() + fast.count, plain.indices.begin())) << kind;
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
