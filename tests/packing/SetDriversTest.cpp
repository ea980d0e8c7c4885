#include "packing/SetDrivers.h"

#include "driver/records/RunFlags.h"
#include "packing/AtlasSurface.h"
#include "tests/packing/PackingFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace mosaicer {
namespace {

using testing::ElementsAre;
using testing_support::CapturedChannel;
using testing_support::TextureShelf;
using testing_support::thrown_text;

/// Bakes into lines "NAME: texture texture", and narrows the surface as a real bake does.
struct RecordingBake {
    std::vector<std::string> lines;
    std::vector<BakeRequest> requests;

    BakeAtlas function() {
        return [this](AtlasSurface& surface, const BakeRequest& request) {
            std::string line = request.atlas_name + ":";
            for (const AtlasEntry& entry : surface.entries())
                line.append(" ").append(entry.source.texture->name);
            lines.push_back(line);
            requests.push_back(request);
            surface.adjust_tiling();
            surface.shrink();
        };
    }
};

AtlasSetDefinition definition_of(std::vector<SetTextureEntry> textures, std::int32_t side) {
    AtlasSetDefinition definition;
    definition.name = "levels/foo";
    definition.width = side;
    definition.height = side;
    definition.textures = std::move(textures);
    definition.removal_strats = {RemovalKind::BIGGEST};
    return definition;
}

TEST(CreateAtlas, places_in_list_order_completes_padding_and_hands_all_to_the_bake) {
    TextureShelf shelf;
    auto definition = definition_of(shelf.sized({{10, 10}, {60, 60}, {20, 20}}), 512);
    definition.drop_mips = 1;
    definition.category = "ui";
    definition.nr_mips = 3;
    definition.texel_format = TexelFormat::AF_DXT5;
    definition.file_format = TextureFileFormat::PNG;
    definition.allow_autoload = false;
    definition.pad_texels_u = 4;
    definition.textures[0].pad_texels_u = -1;
    definition.textures[2].pad_texels_v = 1;
    const RunFlagValues flags = std::exchange(RunFlags, {.output_extra_bmp = true, .extra_bmp_path = "bmps"});
    RecordingBake bake;
    const CapturedChannel verbose(Report.verbose);
    create_atlas(definition, "out/", bake.function());
    RunFlags = flags;

    EXPECT_EQ(verbose.text(), "Creating atlas levels/foo...\nDone.\n");
    EXPECT_THAT(bake.lines, ElementsAre("levels/foo: t0 t1 t2"));
    EXPECT_EQ(definition.textures[0].pad_texels_u, 4);
    EXPECT_EQ(definition.textures[2].pad_texels_u, 0);
    const BakeRequest& request = bake.requests.front();
    EXPECT_EQ(request.output_root, "out/");
    EXPECT_EQ(request.category, "ui");
    EXPECT_EQ(request.nr_mips, 3);
    EXPECT_EQ(request.texel_format, TexelFormat::AF_DXT5);
    EXPECT_EQ(request.file_format, TextureFileFormat::PNG);
    EXPECT_TRUE(request.extra_bitmap);
    EXPECT_EQ(request.extra_bitmap_path, "bmps");
    EXPECT_FALSE(request.allow_autoload);
}

TEST(CreateAtlas, bakes_what_was_placed_before_a_texture_that_does_not_fit) {
    TextureShelf shelf;
    auto definition = definition_of(shelf.sized({{10, 10}, {65, 2}, {20, 20}}), 64);
    RecordingBake bake;
    const CapturedChannel errors(Report.errors);
    create_atlas(definition, "out", bake.function());
    EXPECT_EQ(errors.text(), "Insert of t1 in atlas levels/foo failed, packing aborted\n");
    EXPECT_THAT(bake.lines, ElementsAre("levels/foo: t0"));
}

TEST(CreateSplitAtlas, makes_three_atlases_of_ten_equal_textures) {
    TextureShelf shelf;
    std::vector<SetTextureEntry> list(10);
    for (std::size_t i = 0; i < list.size(); ++i)
        list[i] = shelf.entry(512, 512, std::to_string(i));
    const auto definition = definition_of(list, 1024);
    RecordingBake bake;
    const CapturedChannel debug(Report.debug);
    const CapturedChannel verbose(Report.verbose);
    create_split_atlas(definition, "out", bake.function());
    EXPECT_THAT(bake.lines,
                ElementsAre("levels/foo/atlas0: 6 7 8 9", "levels/foo/atlas1: 2 3 4 5", "levels/foo/atlas2: 0 1"));
    EXPECT_EQ(debug.text(), "Performing inserts (4)... ** success\nPerforming inserts (4)... ** success\n"
                            "Performing inserts (2)... ** success\n");
    EXPECT_EQ(verbose.text(), "Creating splitted atlas, output root: out, number of textures: 10\n"
                              "Removal strategy:\nCompoundStrategy:\n\t#0 - RemoveBiggest\n\n"
                              "Not performing rotation of textures.\n"
                              "Generating atlases with a min usage ratio of 0.\n"
                              "Inserting textures using pixel step\n"
                              "Inserting textures in descending dimension\n"
                              "Done.\n");
}

TEST(CreateSplitAtlas, tells_the_whole_of_a_run_that_takes_textures_out_for_usage) {
    TextureShelf shelf;
    auto definition = definition_of(std::vector<SetTextureEntry>(5, shelf.entry(128, 128)), 1024);
    definition.min_usage = 0.75f;
    definition.precook_strat = PrecookStrategy::MAJOR_UDIM;
    definition.packing_order_strat = PackingOrder::BY_PRECOOK;
    definition.insertion_strat = InsertionStrategy::SMALL_STEP;
    definition.removal_strats = {RemovalKind::TILING, RemovalKind::SMALLEST_FROM_SMALLEST_GROUP};
    RecordingBake bake;
    // Both channels on one stream: their order is part of it.
    std::ostringstream all;
    std::ostream* const verbose = std::exchange(Report.verbose, &all);
    std::ostream* const debug = std::exchange(Report.debug, &all);
    create_split_atlas(definition, "out", bake.function());
    Report.verbose = verbose;
    Report.debug = debug;

    EXPECT_THAT(bake.lines, ElementsAre("levels/foo/atlas0: t t t t", "levels/foo/atlas1: t"));
    EXPECT_EQ(all.str(),
              "Creating splitted atlas, output root: out, number of textures: 5\n"
              "Removal strategy:\nCompoundStrategy:\n\t#0 - RemoveTiling\n\t#1 - RemoveFromSmallestGroup\n\n"
              "Rotating textures so that u has the largest dimension.\n"
              "Generating atlases with a min usage ratio of 0.75.\n"
              "Inserting textures using small step\n"
              "Inserting textures in descending u-dimension, ascending v-dimension\n"
              "Performing inserts (5)... ***** failure (did not reach 0.75 usage, only 0.625), trying alternative "
              "insertion strategy\n"
              "Performing inserts (5)... ***** failure (did not reach 0.75 usage, only 0.625)\n"
              "Performing inserts (4)... ** success\n"
              "Performing inserts (1)... * success\n"
              "Done.\n");
}

TEST(CreateSplitAtlas, turns_copies_and_leaves_the_definition_as_it_is) {
    TextureShelf shelf;
    auto definition = definition_of(shelf.sized({{16, 64}}), 64);
    definition.precook_strat = PrecookStrategy::MAJOR_UDIM;
    create_split_atlas(definition, "out", [](AtlasSurface& surface, const BakeRequest&) {
        EXPECT_EQ(surface.entries().at(0).width, 64);
        EXPECT_EQ(surface.entries().at(0).source.rotation, 90);
    });
    EXPECT_EQ(definition.textures[0].rotation, 0);
}

TEST(CreateSplitAtlas, refuses_contradictory_settings_after_the_lines_before_them) {
    TextureShelf shelf;
    auto definition = definition_of(shelf.sized({{16, 64}}), 64);
    RecordingBake bake;
    const auto run = [&] { create_split_atlas(definition, "out", bake.function()); };
    definition.packing_order_strat = PackingOrder::BY_PRECOOK;
    const CapturedChannel verbose(Report.verbose);
    EXPECT_EQ(thrown_text(run), "No precooking set but packing order is set to by precooking order");
    EXPECT_THAT(verbose.text(), testing::EndsWith("Inserting textures using pixel step\n"));
    definition.removal_strats.push_back(RemovalKind::FURTHEST);
    EXPECT_EQ(thrown_text(run), "Furthest specified as removal strategy, but no position data is present");
    definition.has_positions = true;
    definition.packing_order_strat = PackingOrder::DESC_DIM;
    EXPECT_EQ(thrown_text(run), "");
    definition.removal_strats = {static_cast<RemovalKind>(9)};
    EXPECT_EQ(thrown_text(run), "Unrecognized removal strategy");
    EXPECT_THAT(bake.lines, ElementsAre("levels/foo/atlas0: t0"));
}

TEST(CreateSplitAtlas, ends_at_a_standstill_with_the_textures_that_can_never_be_placed) {
    TextureShelf shelf;
    auto definition = definition_of(shelf.sized({{100, 100}, {128, 128}, {300, 20}, {64, 64}}), 256);
    definition.textures[3].pad_texels_u = 1;
    definition.min_usage = 0.75f;
    RecordingBake bake;
    EXPECT_EQ(thrown_text([&] { create_split_atlas(definition, "out", bake.function()); }),
              "Unable to pack set levels/foo, textures that can never be placed: "
              "t0 (reaches a usage of only 0.610352 alone, 0.75 is required), "
              "t2 (larger than the surface: 300 x 20 on 256 x 256), "
              "t3 (reaches a usage of only 0.515625 alone, 0.75 is required)");
}

TEST(CreateSplitAtlas, tells_the_size_that_made_a_texture_too_large) {
    TextureShelf shelf;
    auto definition = definition_of(shelf.sized({{20, 20}, {10, 10}}), 16);
    definition.textures[0].pad_texels_u = definition.textures[0].pad_texels_v = -4; // 12 x 12 would fit
    definition.textures[1].pad_texels_u = definition.textures[1].pad_texels_v = 4;
    const auto run = [&] { create_split_atlas(definition, "out", [](AtlasSurface&, const BakeRequest&) {}); };
    EXPECT_EQ(thrown_text(run), "Unable to pack set levels/foo, textures that can never be placed: t0 (larger than the "
                                "surface: 20 x 20 on 16 x 16), t1 (larger than the surface: 18 x 18 on 16 x 16)");
}

TEST(CreateSplitAtlas, names_the_set_also_when_what_is_left_holds_textures_that_no_surface_takes) {
    TextureShelf shelf;
    auto definition = definition_of(shelf.sized({{8, 8}, {14, 14}, {100, 1}}), 16);
    // Too many texels together, and the biggest leave first: neither of the two is ever inserted.
    definition.textures[0].texture->tile_u = true;
    definition.textures[1].texture->image.is_cube = true;
    definition.textures[0].pad_texels_u = 1;
    definition.removal_strats = {RemovalKind::TILING, RemovalKind::BIGGEST};
    const auto run = [&] { create_split_atlas(definition, "out", [](AtlasSurface&, const BakeRequest&) {}); };
    EXPECT_EQ(thrown_text(run), "Unable to pack set levels/foo, textures that can never be placed: "
                                "t0 (Texture t0 is tiled and has padding texels in the same direction), "
                                "t1 (Unable to insert cube texture in atlas; tex/t1.png), "
                                "t2 (larger than the surface: 100 x 1 on 16 x 16)");
}

TEST(CreateSplitAtlas, names_what_an_expanding_walk_never_reaches) {
    TextureShelf shelf;
    auto definition = definition_of(shelf.sized({{240, 240}}), 256);
    definition.insertion_strat = InsertionStrategy::SMALL_STEP_EXPANDING_SQUARE;
    definition.try_alternative_insertion = false;
    const auto run = [&] { create_split_atlas(definition, "out", [](AtlasSurface&, const BakeRequest&) {}); };
    EXPECT_EQ(thrown_text(run), "Unable to pack set levels/foo, textures that can never be placed: t0 (the insertion "
                                "strategy ends before its regions reach the size of the texture)");
    definition.try_alternative_insertion = true;
    EXPECT_EQ(thrown_text(run), "");
}

TEST(CreateSplitAtlas, goes_on_while_the_order_of_removal_still_changes_something) {
    TextureShelf shelf;
    // Equal areas, and FURTHEST takes the last of equals: the first pass tries t0 alone last, which never fits, and
    // only the second, with the list reversed, ends with t1.
    auto definition = definition_of(shelf.sized({{128, 8}, {32, 32}}), 64);
    definition.removal_strats = {RemovalKind::FURTHEST};
    definition.has_positions = true;
    RecordingBake bake;
    EXPECT_EQ(thrown_text([&] { create_split_atlas(definition, "out", bake.function()); }),
              "Unable to pack set levels/foo, textures that can never be placed: t0 (larger than the surface: 128 x 8 "
              "on 64 x 64)");
    ASSERT_GE(bake.lines.size(), 2u);
    EXPECT_EQ(bake.lines[0], "levels/foo/atlas0:");
    EXPECT_EQ(bake.lines[1], "levels/foo/atlas1: t1");
}

TEST(SideWithoutDroppedMips, is_defined_for_every_number) {
    auto definition = definition_of({}, 64);
    TextureShelf shelf;
    definition.textures = shelf.sized({{8, 8}});
    for (const auto& [drop, fits] :
         {std::pair{3, true}, {4, false}, {31, false}, {32, false}, {1 << 30, false}, {-1, true}, {-(1 << 30), true}}) {
        definition.drop_mips = drop;
        const CapturedChannel errors(Report.errors);
        create_atlas(definition, "out", [](AtlasSurface&, const BakeRequest&) {});
        EXPECT_EQ(errors.text().empty(), fits) << drop;
    }
}

} // namespace
} // namespace mosaicer
