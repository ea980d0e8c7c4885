#include "compression/Resampling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace compression {
namespace {

FloatImage row(const std::vector<float>& red) {
    FloatImage image{static_cast<std::int32_t>(red.size()), 1, {}};
    for (const float value : red)
        image.pixels.insert(image.pixels.end(), {value, 0.0f, 0.0f, 1.0f});
    return image;
}

FloatImage noise(std::int32_t width, std::int32_t height) {
    std::mt19937 random(7);
    FloatImage image{width, height, std::vector<float>(static_cast<std::size_t>(width * height) * 4)};
    for (float& sample : image.pixels)
        sample = static_cast<float>(random() % 1000) / 999.0f;
    return image;
}

FloatImage resampled(const FloatImage& source, std::int32_t width, std::int32_t height, int filter, float gamma = 0) {
    FloatImage target{width, height, {}};
    resample_image(source, target, gamma, filter);
    return target;
}

std::vector<float> reds(const FloatImage& image) {
    std::vector<float> result;
    for (std::size_t i = 0; i < image.pixels.size(); i += 4)
        result.push_back(image.pixels[i]);
    return result;
}

TEST(ResamplingFilters, have_the_values_of_their_formulas) {
    struct ValueCase {
        int index;
        const char* name;
        double x;
        double value;
    };
    const ValueCase cases[] = {{0, "point", 0, 1},
                               {1, "box", -0.5, 1},
                               {1, "box", 0.5, 0},
                               {2, "triangle", 0.25, 0.75},
                               {3, "quadratic", 0, 0.75},
                               {3, "quadratic", -1, 0.125},
                               {4, "cubic", 0, 2.0 / 3},
                               {4, "cubic", -1, 1.0 / 6},
                               {4, "cubic", 1.5, 1.0 / 48},
                               {5, "catrom", -0.5, 0.5625},
                               {5, "catrom", 1.5, -0.0625},
                               {6, "mitchell", 0, 8.0 / 9},
                               {6, "mitchell", -1, 1.0 / 18},
                               {6, "mitchell", 1.5, -5.0 / 144},
                               {7, "gaussian", 0, 0.7978845608},
                               {7, "gaussian", 1, 0.1079819330},
                               {8, "sinc", 0.5, 0.6366197724},
                               {9, "bessel", 0, 0.7853981634},
                               {9, "bessel", -1, 0.14230767},
                               {10, "hanning", 0.5, 0.5},
                               {11, "hamming", 0.5, 0.54},
                               {12, "blackman", 0.5, 0.34},
                               {13, "kaiser", 0, 1},
                               {13, "kaiser", 0.6, 0.30654546}};
    for (const ValueCase& c : cases) {
        const auto& filter = resampling_filters()[static_cast<std::size_t>(c.index)];
        EXPECT_EQ(filter.name, c.name);
        EXPECT_NEAR(filter.evaluate(c.x), c.value, c.index == 13 || c.index == 9 ? 1e-7 : 1e-9) << c.name << c.x;
    }
    EXPECT_EQ(resampling_filters().size(), 14u);
}

TEST(ResamplingFilters, are_cardinal_where_they_say_so) {
    for (const auto& filter : resampling_filters())
        for (int x = 1; filter.cardinal && x <= 4; ++x)
            EXPECT_NEAR(filter.evaluate(x) / filter.evaluate(0), 0.0, 1e-12) << filter.name;
}

TEST(ResampleImage, averages_pairs_with_the_box) {
    EXPECT_EQ(reds(resampled(row({0, 1, 0.5f, 0.25f}), 2, 1, 1)), (std::vector<float>{0.5f, 0.375f}));
}

TEST(ResampleImage, weighs_by_the_triangle_and_renormalises_at_the_edges) {
    // Scale 1/2: centre 1, blur 2; weights of pixels 0..2 are 0.75, 0.75, 0.25 within the image, sum 1.75.
    const auto result = reds(resampled(row({1, 0, 0, 0, 0, 0}), 3, 1, 2));
    EXPECT_FLOAT_EQ(result[0], 0.75f / 1.75f);
    EXPECT_FLOAT_EQ(result[1], 0.0f);
    // Centre 3: pixels 1..4 with 0.25, 0.75, 0.75, 0.25.
    EXPECT_FLOAT_EQ(reds(resampled(row({0, 1, 0, 0, 0, 0}), 3, 1, 2))[1], 0.125f);
}

TEST(ResampleImage, picks_pixels_where_the_filter_can_do_no_more) {
    for (const int filter : {0, 1})
        EXPECT_EQ(reds(resampled(row({0.1f, 0.2f}), 5, 1, filter)), (std::vector<float>{0.1f, 0.1f, 0.2f, 0.2f, 0.2f}));
    EXPECT_EQ(reds(resampled(row({0.1f, 0.2f, 0.3f, 0.4f}), 2, 1, 0)), (std::vector<float>{0.2f, 0.4f}));
}

TEST(ResampleImage, keeps_a_flat_image_flat_and_the_same_size_the_same) {
    for (int filter = 0; filter < 14; ++filter) {
        for (const float value : reds(resampled(row(std::vector<float>(13, 0.6f)), 5, 3, filter)))
            EXPECT_NEAR(value, 0.6f, 1e-6f) << filter;
        if (resampling_filters()[static_cast<std::size_t>(filter)].cardinal) {
            const FloatImage source = noise(7, 5);
            const FloatImage same = resampled(source, 7, 5, filter);
            for (std::size_t i = 0; i < source.pixels.size(); ++i)
                EXPECT_NEAR(same.pixels[i], source.pixels[i], 1e-6f) << filter;
        }
    }
}

/// Both axes at once, without passes: the product of the two weights.
float direct_sum(const FloatImage& source, int width, int height, int x, int y, const ResamplingFilter& filter) {
    const auto weight = [&](int i, int j, int from, int to) {
        const double scale = static_cast<double>(to) / from;
        const double blur = std::max(1.0, 1.0 / scale);
        const double distance = (i + 0.5 - (j + 0.5) / scale) / blur;
        return std::abs(distance) < filter.support ? filter.evaluate(distance) : 0.0;
    };
    double sum = 0;
    double weights = 0;
    for (int v = 0; v < source.height; ++v)
        for (int u = 0; u < source.width; ++u) {
            const double w = weight(u, x, source.width, width) * weight(v, y, source.height, height);
            weights += w;
            sum += w * static_cast<double>(source.pixels[static_cast<std::size_t>((v * source.width + u) * 4 + 1)]);
        }
    return static_cast<float>(sum / weights);
}

TEST(ResampleImage, equals_the_direct_sum_in_both_pass_orders) {
    const int sizes[][4] = {{20, 6, 5, 9}, {6, 20, 9, 5}, {16, 16, 8, 8}, {5, 7, 13, 3}};
    for (const auto& size : sizes)
        for (const int filter : {2, 3, 4, 5, 6, 7, 8, 9, 10, 13}) {
            const FloatImage source = noise(size[0], size[1]);
            const FloatImage target = resampled(source, size[2], size[3], filter);
            for (int y = 0; y < size[3]; ++y)
                for (int x = 0; x < size[2]; ++x)
                    EXPECT_NEAR(target.pixels[static_cast<std::size_t>((y * size[2] + x) * 4 + 1)],
                                direct_sum(source, size[2], size[3], x, y,
                                           resampling_filters()[static_cast<std::size_t>(filter)]),
                                2e-5f)
                        << filter;
        }
}

TEST(ResampleImage, averages_in_the_power_of_gamma) {
    // (0 + 1) / 2 to the power 2.
    EXPECT_FLOAT_EQ(reds(resampled(row({0, 1}), 1, 1, 1, 2.0f))[0], 0.25f);
}

TEST(ResampleImage, weighs_colours_by_alpha_on_request) {
    FloatImage source = row({1.0f, 0.2f});
    source.pixels[3] = 0.0f;
    source.pixels[7] = 0.5f;
    FloatImage target{1, 1, {}};
    resample_image(source, target, resampling_filters()[1], {.weigh_by_alpha = true});
    EXPECT_FLOAT_EQ(target.pixels[0], 0.2f);
    EXPECT_FLOAT_EQ(target.pixels[3], 0.25f);
}

TEST(GenerateMips, takes_every_level_from_level_0) {
    CompressionOptions options;
    options.g_mip_filter_type = 1;
    std::vector<FloatImage> levels{row({0, 1, 0.5f, 0.25f}), row({9, 9}), {1, 1, {}}};
    generate_mips(levels, 2, options);
    EXPECT_EQ(reds(levels[1]), (std::vector<float>{9, 9}));
    EXPECT_EQ(reds(levels[2]), (std::vector<float>{0.4375f}));
}

TEST(GenerateMips, raises_level_0_once_and_alike) {
    CompressionOptions options;
    options.g_enable_filter_gamma = true;
    std::vector<FloatImage> levels{noise(9, 6), {4, 3, {}}, {2, 1, {}}};
    const FloatImage before = levels[0];
    generate_mips(levels, 1, options);
    EXPECT_EQ(levels[0].pixels, before.pixels);
    EXPECT_EQ(levels[1].pixels, resampled(before, 4, 3, 2, 2.2f).pixels);
    EXPECT_EQ(levels[2].pixels, resampled(before, 2, 1, 2, 2.2f).pixels);
}

TEST(GenerateMips, overrides_width_and_blur_unless_negative) {
    CompressionOptions options;
    options.g_mip_filter_type = 2;
    options.g_override_filter_width = true;
    options.g_filter_width = 0.0f;
    std::vector<FloatImage> levels{row({0.1f, 0.2f}), {1, 1, {}}};
    generate_mips(levels, 1, options);
    EXPECT_EQ(reds(levels[1]), (std::vector<float>{0.2f})); // a filter without support picks
    options.g_filter_width = -1.0f;
    options.g_filter_blur = 0.0f;
    generate_mips(levels, 1, options);
    EXPECT_EQ(reds(levels[1]), (std::vector<float>{0.2f}));
    options.g_filter_blur = -1.0f;
    generate_mips(levels, 1, options);
    EXPECT_FLOAT_EQ(reds(levels[1])[0], 0.15f);
    options.g_filter_width = 1e30f;
    generate_mips(levels, 1, options);
    EXPECT_FLOAT_EQ(reds(levels[1])[0], 0.15f);
}

} // namespace
} // namespace compression
