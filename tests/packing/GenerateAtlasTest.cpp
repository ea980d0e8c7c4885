#include "packing/AtlasSurface.h"
#include "tests/packing/PackingFixtures.h"

#include <gtest/gtest.h>

namespace mosaicer {
namespace {

using testing_support::CapturedChannel;
using testing_support::TextureShelf;
using testing_support::thrown_text;

struct GenerateCase {
    std::size_t count; ///< of 128 x 128 textures
    std::int32_t side; ///< of the surface
    float min_usage;
    bool try_alternative;
    bool generated;
    std::string debug;
};

TEST(GenerateAtlas, tells_each_attempt_on_one_line) {
    const std::string too_empty = " failure (did not reach 0.75 usage, only 0.625)";
    const std::string again = ", trying alternative insertion strategy\n";
    const std::string five = "Performing inserts (5)... *****";
    const GenerateCase cases[]{
        {4, 1024, 0.75f, true, true, "Performing inserts (4)... ** success\n"},
        {5, 1024, 0.75f, true, false, five + too_empty + again + five + too_empty + "\n"},
        {5, 1024, 0.75f, false, false, five + too_empty + "\n"},
        {5, 1024, 0.625f, false, true, five + " success\n"},
        {5, 1024, 0.0f, true, true, five + " success\n"},
        {3, 1024, -1.0f, true, true, "Performing inserts (3)... * success\n"},
        {25, 1024, 0.0f, true, true, "Performing inserts (25)... ***** success\n"},
        {200, 4096, 0.0f, true, true, "Performing inserts (200)... ********** success\n"},
        {2, 128, 0.5f, true, false,
         "Performing inserts (2)... ** failure completing inserts" + again +
             "Performing inserts (2)... * failure completing inserts\n"}, // regions of 16 and 144: the first fails too
    };
    for (const GenerateCase& c : cases) {
        TextureShelf shelf;
        const std::vector<SetTextureEntry> list(c.count, shelf.entry(128, 128));
        AtlasSurface surface(c.side, c.side);
        const CapturedChannel debug(Report.debug);
        EXPECT_EQ(surface.generate_atlas(list, c.min_usage, PackingOrder::DESC_DIM, InsertionStrategy::PIXEL_STEP,
                                         c.try_alternative),
                  c.generated);
        EXPECT_EQ(debug.text(), c.debug);
        EXPECT_EQ(surface.entries().size(), c.generated ? c.count : 0);
        EXPECT_EQ(surface.width(), c.side);
    }
}

TEST(GenerateAtlas, falls_back_for_one_call_only) {
    TextureShelf shelf;
    const auto list = shelf.sized({{100, 100}, {60, 60}, {55, 55}, {90, 20}});
    AtlasSurface surface(160, 120);
    const CapturedChannel debug(Report.debug);
    for (int call = 0; call < 2; ++call) // 60 x 60 is missed beside 100 x 100 by steps of 60, by the alternative too
        EXPECT_FALSE(surface.generate_atlas(list, 0.0f, PackingOrder::DESC_DIM, InsertionStrategy::SMALL_STEP, true));
    EXPECT_TRUE(surface.generate_atlas(list, 0.0f, PackingOrder::DESC_DIM, InsertionStrategy::PIXEL_STEP, true));
    EXPECT_EQ(surface.entries()[1].x, 100);
    EXPECT_EQ(surface.entries()[1].y, 0);
}

TEST(GenerateAtlas, refuses_an_unresolved_order_and_counts_usage_in_single_precision) {
    TextureShelf shelf;
    AtlasSurface surface(10, 10);
    const auto list = shelf.sized({{10, 6}});
    EXPECT_EQ(thrown_text([&] {
                  surface.generate_atlas(list, 0, PackingOrder::BY_PRECOOK, InsertionStrategy::PIXEL_STEP, true);
              }),
              "Unknown packing order");
    EXPECT_TRUE(surface.generate_atlas(list, 0.6f, PackingOrder::DESC_DIM, InsertionStrategy::PIXEL_STEP, false));
}

} // namespace
} // namespace mosaicer
