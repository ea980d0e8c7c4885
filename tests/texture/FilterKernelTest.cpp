#include "texture/FilterKernel.h"

#include "tests/texture/support/LiteralMips.h"

#include <gmock/gmock.h>

#include <cmath>

namespace mosaicer {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

std::vector<float> taps(const FilterKernel& kernel) {
    return {kernel.taps().begin(), kernel.taps().end()};
}

TEST(FilterKernel, is_scaled_to_a_sum_of_1) {
    EXPECT_THAT(taps(FilterKernel({1, 2, 1})), ElementsAre(0.25f, 0.5f, 0.25f));
    EXPECT_THAT(taps(FilterKernel({-1, 5})), ElementsAre(-0.25f, 1.25f));
    EXPECT_THAT(taps(FilterKernel({1, -1})), ElementsAre(1, -1)) << "nothing to scale by";
}

TEST(FilterKernel, of_a_box_has_equal_taps) {
    EXPECT_THAT(taps(mip_kernel(MipFilter::BOX_GAMMA, 1)), ElementsAre(0.5f, 0.5f));
    EXPECT_THAT(taps(mip_kernel(MipFilter::BOX_GAMMA, 5)), testing::AllOf(SizeIs(32), Each(1 / 32.0f)));
}

TEST(FilterKernel, of_a_level_is_the_one_of_the_formulas) {
    for (const MipFilter filter : {MipFilter::KAISER_GAMMA, MipFilter::KAISER_GAMMA_CRISP})
        for (std::size_t level = 1; level <= 12; ++level)
            EXPECT_EQ(taps(mip_kernel(filter, level)), literal::level_kernel(filter, static_cast<int>(level)))
                << keyword_of(filter) << " level " << level;
}

// From a table of sines and Bessel functions: taps 5 and 4 lie at x = +-0.25, taps 0 and 9 at +-2.25.
//   I0(4) = 11.3019, sinc(0.25) = 0.900316, I0(4 sqrt(1 - 0.05^2)) = 11.2532, sinc(2.25) = 0.100035,
//   I0(4 sqrt(1 - 0.45^2)) = I0(3.57211) = 7.84063
TEST(FilterKernel, has_the_shape_of_a_windowed_sinc) {
    const std::vector<float> kernel = taps(mip_kernel(MipFilter::KAISER_GAMMA, 1));
    ASSERT_THAT(kernel, SizeIs(10));
    EXPECT_NEAR(static_cast<double>(kernel[0] / kernel[4]), 0.100035 * 7.84063 / (0.900316 * 11.2532), 2e-5);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(kernel[i], kernel[9 - i]);
}

TEST(Sine, agrees_with_long_double) {
    for (double x = -160; x < 160; x += 0.00371)
        EXPECT_NEAR(detail::sine(x), static_cast<double>(std::sin(static_cast<long double>(x))), 0x1.2p-53) << x;
}

TEST(BesselI0, has_the_values_of_the_tables) {
    for (const auto& [x, value] : {std::pair{0.0f, 1.0}, {1.0f, 1.26606587775201}, {4.0f, 11.3019219521363}})
        EXPECT_NEAR(detail::bessel_i0(x), value, 1e-13);
}

} // namespace
} // namespace mosaicer
