#include "compression/Profile.h"

#include "compression/Codes.h"
#include "compression/OptionKeys.h"
#include "tests/compression/ChainRecorder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

namespace compression {
namespace {

std::int32_t read(const std::string& text, CompressionOptions& options) {
    std::istringstream stream(text);
    return read_profile(stream, options);
}

TEST(Profile, sets_options_of_every_type_by_key) {
    CompressionOptions options;
    ASSERT_EQ(read("# quality first\ng_quality 72\r\n\ng_filter_gamma   1.8\n"
                   "g_b_dither_color true\ng_override_filter_width 1\ng_bviewdxt1 whatever\ng_read_depth\n"
                   "g_inbias_r -0.25",
                   options),
              OK);
    EXPECT_EQ(options.g_quality, 72);
    EXPECT_EQ(options.g_filter_gamma, 1.8f);
    EXPECT_TRUE(options.g_b_dither_color);
    EXPECT_TRUE(options.g_override_filter_width);
    EXPECT_EQ(options.g_inbias_r, -0.25f);
    EXPECT_EQ(options.g_filter_width, 10.0f);
}

TEST(Profile, refuses_a_line_without_a_value_of_its_type) {
    for (const std::string line : {"g_quality", "g_quality high", "g_quality 7.5", "g_quality 99999999999",
                                   "g_filter_gamma nan", "g_filter_gamma 1e99", "g_b_border yes", "g_quality 7 2"}) {
        CompressionOptions options;
        EXPECT_EQ(read(line + "\n", options), UNSUPPORTED_OPTION) << line;
        EXPECT_EQ(options.g_quality, 71);
    }
    CompressionOptions options;
    EXPECT_EQ(read(std::string(5000, 'x'), options), UNSUPPORTED_OPTION);
    EXPECT_EQ(read("", options), OK);
}

TEST(Profile, gives_its_code_for_a_file_that_cannot_be_read) {
    CompressionOptions options;
    EXPECT_EQ(read_profile_file("/nonexistent/profile.txt", options), CANT_OPEN_PROFILE);
    EXPECT_EQ(read_profile_file("/", options), CANT_OPEN_PROFILE);
}

TEST(Profile, is_read_by_the_entry_where_a_path_is_set) {
    const std::string path = ::testing::TempDir() + "mosaicer_profile.txt";
    std::ofstream(path) << "g_texture_format 16\n";
    set_profile_path(path);
    testing::ChainRecorder recorder;
    EXPECT_EQ(recorder.compress({testing::patterned_level(2, 2)}, testing::supplied(FORMAT_A8R8G8B8)), OK);
    EXPECT_EQ(recorder.level(0).size(), 8u);
    std::remove(path.c_str());
    EXPECT_EQ(recorder.compress({testing::patterned_level(2, 2)}, testing::supplied(FORMAT_A8R8G8B8)),
              CANT_OPEN_PROFILE);
    set_profile_path("");
}

TEST(OptionKeys, name_each_option_once_and_reach_its_field) {
    std::set<std::string_view> names;
    for (const OptionKey& key : option_keys()) {
        EXPECT_TRUE(names.insert(key.name).second) << key.name;
        CompressionOptions options;
        const auto set_and_compare = [&](auto field) {
            const auto before = options.*field;
            EXPECT_EQ(read(std::string(key.name) + (before != 0 ? " 0" : " 1"), options), OK);
            EXPECT_NE(options.*field, before) << key.name;
        };
        std::visit(set_and_compare, key.field);
        EXPECT_EQ(options_are_supported(options), key.use != OptionUse::refused) << key.name;
    }
    EXPECT_EQ(names.size(), 72u);
}

TEST(OptionKeys, refused_switches_stop_the_entry) {
    CompressionOptions options = testing::supplied(FORMAT_A8R8G8B8);
    options.g_b_fade_color = true;
    testing::ChainRecorder recorder;
    EXPECT_EQ(recorder.compress({testing::patterned_level(1, 1)}, options), UNSUPPORTED_OPTION);
    options = testing::supplied(FORMAT_A8R8G8B8);
    options.g_mip_filter_type = 14;
    EXPECT_EQ(recorder.compress({testing::patterned_level(1, 1)}, options), UNSUPPORTED_OPTION);
    options = testing::supplied(FORMAT_A8R8G8B8);
    options.g_mip_map_type = 34;
    EXPECT_EQ(recorder.compress({testing::patterned_level(1, 1)}, options), UNSUPPORTED_OPTION);
    EXPECT_TRUE(recorder.pieces.empty());
}

} // namespace
} // namespace compression
