#include "texture/GammaCurve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace mosaicer {
namespace {

/// How far a value lies from the middle between two floats, as a share of itself. Twice the error of a long double
/// power is about 2^-63; any value farther away than that is rounded to the right float.
long double distance_from_tie(long double value) {
    const auto nearest = static_cast<float>(value);
    const long double above = (static_cast<long double>(nearest) + std::nextafter(nearest, 2.0f)) / 2;
    const long double below = (static_cast<long double>(nearest) + std::nextafter(nearest, -1.0f)) / 2;
    return std::min(std::abs(above - value), std::abs(value - below)) / value;
}

long double power(float base, float exponent) {
    return std::pow(static_cast<long double>(base), static_cast<long double>(exponent));
}

/// The byte by the rules, from a power in long double.
int byte_by_rules(float sample) {
    const long double exact = power(sample, 0.45454544f);
    EXPECT_GT(distance_from_tie(exact), 0x1p-58L) << sample;
    const double v = static_cast<double>(static_cast<float>(exact)) * 255.0;
    const double t = std::trunc(v);
    return static_cast<int>(std::min(v - t >= 0.5 ? t + 1 : t, 255.0));
}

TEST(GammaCurve, decodes_to_the_nearest_floats) {
    EXPECT_EQ(decoded_bytes[0], 0.0f);
    EXPECT_EQ(decoded_bytes[255], 1.0f);
    for (std::size_t byte = 1; byte < 256; ++byte) {
        const long double exact = power(static_cast<float>(byte) * 0.003921569f, 2.2f);
        EXPECT_EQ(decoded_bytes[byte], static_cast<float>(exact)) << byte;
        EXPECT_GT(distance_from_tie(exact), 0x1p-58L) << byte;
    }
}

TEST(GammaCurve, thresholds_are_the_least_samples_of_their_bytes) {
    for (int byte = 1; byte < 256; ++byte) {
        const float threshold = encoding_thresholds[static_cast<std::size_t>(byte - 1)];
        EXPECT_EQ(byte_by_rules(threshold), byte);
        EXPECT_EQ(byte_by_rules(std::nextafter(threshold, 0.0f)), byte - 1);
    }
}

TEST(GammaCurve, encodes_by_the_thresholds) {
    for (int byte = 1; byte < 256; ++byte) {
        const float threshold = encoding_thresholds[static_cast<std::size_t>(byte - 1)];
        EXPECT_EQ(encoded_byte(threshold), byte);
        EXPECT_EQ(encoded_byte(std::nextafter(threshold, 0.0f)), byte - 1);
    }
    for (float sample = 1e-7f; sample < 1.0f; sample *= 1.0003f) {
        const auto reached = std::upper_bound(encoding_thresholds.begin(), encoding_thresholds.end(), sample);
        EXPECT_EQ(encoded_byte(sample), reached - encoding_thresholds.begin()) << sample;
    }
}

TEST(GammaCurve, gives_every_byte_back) {
    for (std::size_t byte = 0; byte < 256; ++byte)
        EXPECT_EQ(encoded_byte(decoded_bytes[byte]), byte);
}

TEST(GammaCurve, clamps_what_filters_overshoot) {
    for (const float sample : {-1e30f, -0.25f, -1e-30f, -0.0f, 0.0f, 1e-40f})
        EXPECT_EQ(encoded_byte(sample), 0) << sample;
    for (const float sample : {1.0f, 1.0000001f, 3.5f, 1e30f})
        EXPECT_EQ(encoded_byte(sample), 255) << sample;
}

} // namespace
} // namespace mosaicer
