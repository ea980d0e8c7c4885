#include "compression/BoundedRamp.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

namespace compression {
namespace {

struct Sample {
    double position, value;
};

double fit_error(const std::vector<Sample>& samples, double steps, double end0, double end1) {
    double error = 0;
    for (const Sample& sample : samples) {
        const double difference = sample.value - (end0 + (end1 - end0) * sample.position / steps);
        error += difference * difference;
    }
    return error;
}

RampSums sums_of(const std::vector<Sample>& samples) {
    RampSums sums{static_cast<double>(samples.size()), 0, 0, 0};
    double tt = 0;
    for (const Sample& sample : samples) {
        sums.t += sample.position;
        tt += sample.position * sample.position;
        sums.tx += sample.position * sample.value;
    }
    sums.v = tt - sums.t * sums.t / sums.f;
    return sums;
}

// The least error on a grid of legal ends, refined around its best point.
double least_error_by_search(const std::vector<Sample>& samples, double steps, double lower, double upper) {
    double best = 1e9;
    double a = 0;
    double b = 0;
    double reach = upper - lower;
    for (int level = 0; level < 12; ++level, reach /= 4) {
        const double a0 = a;
        const double b0 = b;
        for (int i = -8; i <= 8; ++i)
            for (int j = -8; j <= 8; ++j) {
                const double end0 = std::min(std::max(a0 + reach * i / 8, lower), upper);
                const double end1 = std::min(std::max(b0 + reach * j / 8, lower), upper);
                if (const double error = fit_error(samples, steps, end0, end1); error < best) {
                    best = error;
                    a = end0;
                    b = end1;
                }
            }
    }
    return best;
}

TEST(BoundedRamp, is_the_best_of_all_legal_ramps) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> value(0, 1);
    int bounded = 0;
    for (int round = 0; round < 400; ++round) {
        const int steps = round % 3 == 0 ? 7 : 1 + round % 3;
        std::vector<Sample> samples(4 + random() % 12);
        double mean = 0;
        for (Sample& sample : samples) {
            sample.position = static_cast<double>(random() % static_cast<unsigned>(steps + 1));
            sample.value = (value(random) + (steps > 0 ? sample.position / steps : 0)) / 2;
            mean += sample.value;
        }
        samples[0].position = 0;
        samples[1].position = steps;
        mean /= static_cast<double>(samples.size());
        for (Sample& sample : samples)
            sample.value -= mean;
        // Narrower than the samples' range in most rounds, so that every side and corner gets its turn.
        const double lower = -mean * value(random);
        const double upper = (1 - mean) * value(random);
        const Ramp ramp = fit_bounded_ramp(sums_of(samples), steps, lower, upper);
        ASSERT_GE(std::min(ramp.end0, ramp.end1), lower);
        ASSERT_LE(std::max(ramp.end0, ramp.end1), upper);
        bounded += ramp.end0 == lower || ramp.end0 == upper || ramp.end1 == lower || ramp.end1 == upper;
        EXPECT_LE(fit_error(samples, steps, ramp.end0, ramp.end1),
                  least_error_by_search(samples, steps, lower, upper) + 1e-9);
    }
    EXPECT_GT(bounded, 100);
}

} // namespace
} // namespace compression
