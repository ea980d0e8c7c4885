#include "texture/GammaMips.h"

#include "tests/texture/support/LiteralMips.h"
#include "tests/texture/support/Pictures.h"

#include "texture/FoldedWindow.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>

namespace mosaicer {
namespace {

using compression::SimdLevel;
using testing::Each;

constexpr std::array gamma_filters{MipFilter::BOX_GAMMA, MipFilter::KAISER_GAMMA, MipFilter::KAISER_GAMMA_CRISP};

MipChain gamma_chain_of(Bitmap base, MipFilter filter, SimdLevel simd = compression::best_simd_level()) {
    MipChain chain;
    chain.push_back(std::move(base));
    filter_mips_gamma(chain, filter, simd);
    return chain;
}

std::vector<SimdLevel> levels_of_this_machine() {
    std::vector<SimdLevel> levels;
    for (const SimdLevel level : {SimdLevel::scalar, SimdLevel::sse2, SimdLevel::avx2})
        if (level <= compression::best_simd_level())
            levels.push_back(level);
    return levels;
}

struct Size {
    std::int32_t width;
    std::int32_t height;
};

void PrintTo(const Size& size, std::ostream* stream) {
    *stream << size.width << "x" << size.height;
}

class EveryKernel : public testing::TestWithParam<Size> {};

TEST_P(EveryKernel, gives_the_bytes_of_the_plain_loops) {
    const auto [width, height] = GetParam();
    const std::array<std::function<Bitmap(std::int32_t, std::int32_t)>, 3> pictures{
        [](auto w, auto h) { return pictures::noise(w, h); }, pictures::hard_edges, pictures::photo};
    for (const auto& picture : pictures)
        for (const MipFilter filter : gamma_filters) {
            const Bitmap base = picture(width, height);
            std::vector<std::vector<std::uint8_t>> expected{pictures::bytes(base)};
            for (std::size_t level = 1; level < full_level_count(width, height); ++level)
                expected.push_back(pictures::bytes(literal::gamma_level(base, filter, static_cast<int>(level))));
            for (const SimdLevel simd : levels_of_this_machine()) {
                const MipChain chain = gamma_chain_of(picture(width, height), filter, simd);
                ASSERT_EQ(chain.size(), expected.size());
                for (std::size_t level = 0; level < chain.size(); ++level)
                    EXPECT_EQ(pictures::bytes(chain[level]), expected[level])
                        << keyword_of(filter) << " level " << level << " kernel " << static_cast<int>(simd);
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Sizes, EveryKernel,
                         testing::Values(Size{64, 64}, Size{2, 2}, Size{1, 37}, Size{37, 1}, Size{3, 5}, Size{4, 64},
                                         Size{100, 36}, Size{19, 23}, Size{63, 17}, Size{7, 130}, Size{150, 9},
                                         Size{1, 300}, Size{3, 520}));

TEST(GammaMips, keep_white_white_and_black_black) {
    for (const MipFilter filter : gamma_filters)
        for (const std::uint8_t byte : {std::uint8_t{0}, std::uint8_t{255}})
            for (const auto [width, height] : {Size{256, 256}, Size{100, 3}, Size{1, 70}})
                for (const Bitmap& level : gamma_chain_of(pictures::flat(width, height, byte), filter))
                    EXPECT_THAT(pictures::bytes(level), Each(byte)) << keyword_of(filter) << width << "x" << height;
}

TEST(GammaMips, average_in_linear_light) {
    Bitmap base = pictures::flat(2, 1, 0);
    for (std::size_t i = 4; i < 8; ++i)
        base.pixels()[i] = 255;
    EXPECT_THAT(pictures::bytes(gamma_chain_of(std::move(base), MipFilter::BOX_GAMMA)[1]), Each(186));
}

TEST(GammaMips, of_one_pixel_are_that_pixel) {
    EXPECT_EQ(gamma_chain_of(pictures::flat(1, 1, 9), MipFilter::KAISER_GAMMA).size(), 1u);
}

TEST(GammaMips, replace_levels_that_are_there) {
    MipChain chain;
    chain.push_back(pictures::flat(4, 2, 77));
    chain.emplace_back(50, 50);
    filter_mips_gamma(chain, MipFilter::KAISER_GAMMA);
    ASSERT_EQ(chain.size(), 3u);
    EXPECT_EQ(chain[1].width(), 2);
    EXPECT_EQ(chain[1].height(), 1);
    EXPECT_EQ(chain[2].width(), 1);
    EXPECT_THAT(pictures::bytes(chain[1]), Each(77));
}

TEST(GammaMips, of_a_grey_picture_are_grey) {
    Bitmap base = pictures::noise(33, 20);
    for (std::size_t i = 0; i < base.pixels().size(); i += 4)
        base.pixels()[i + 2] = base.pixels()[i];
    const MipChain chain = gamma_chain_of(std::move(base), MipFilter::KAISER_GAMMA_CRISP);
    for (std::size_t level = 1; level < chain.size(); ++level)
        EXPECT_EQ(
            pictures::bytes(chain[level]),
            pictures::bytes(literal::gamma_level(chain[0], MipFilter::KAISER_GAMMA_CRISP, static_cast<int>(level))));
}

// A sum half-way between two floats is no matter for a short cut.
TEST(FoldedWindow, tells_when_the_last_bits_matter) {
    const AxisFilter axis(2, 1, FilterKernel::box(16), AxisFilter::Layout::shared_blocks);
    ASSERT_TRUE(FoldedWindow::pays(axis, 2));
    const FoldedWindow window(axis, 2);
    const auto weight = [&](int sample) {
        return static_cast<double>(std::ranges::count(axis.positions, sample)) / 16;
    };
    const double tie = 1 + 0x1p-24;
    const std::array<double, 2> certain{0.25, 0.5};
    const std::array<double, 2> tied{tie, tie};
    EXPECT_EQ(window.sum_if_certain(certain.data(), 1), static_cast<float>(weight(0) * 0.25 + weight(1) * 0.5));
    EXPECT_EQ(window.sum_if_certain(tied.data(), 1), std::nullopt);
    EXPECT_EQ(window.sum(tied.data(), 1), 1.0f) << "a tie goes to the even float";
}

TEST(Mirror, folds_far_indices_like_repeated_reflection) {
    for (int size = 1; size <= 9; ++size)
        for (int i = -60; i <= 60; ++i)
            EXPECT_EQ(mirror(i, size), literal::mirror(i, size)) << i << " in " << size;
}

TEST(LevelSizes, leave_no_column_for_a_level_without_it) {
    for (std::int32_t side = 1; side <= 3000; ++side)
        for (std::size_t level = 1; level < full_level_count(side, 1); ++level) {
            const std::int32_t outputs = level_side(side, level);
            ASSERT_EQ(side / (side / outputs), outputs) << side << " level " << level;
        }
}

} // namespace
} // namespace mosaicer
