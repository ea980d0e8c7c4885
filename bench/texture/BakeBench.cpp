#include "packing/AtlasSurface.h"
#include "texture/AtlasBaker.h"
#include "texture/AtlasBlit.h"
#include "texture/ImageOutput.h"
#include "texture/TextureLoader.h"

#include <benchmark/benchmark.h>

#include <deque>
#include <filesystem>
#include <random>
#include <string>

namespace mosaicer {
namespace {

constexpr std::int32_t side = 2048;
constexpr std::int32_t sprite_side = 124; // 128 with its padding, so that 256 of them fill the surface

/// A surface full of padded sprites, loaded without files: each has its level 0 alone, which is where the bytes are.
struct FullAtlas {
    std::deque<SourceTexture> records;
    AtlasSurface surface{side, side};
    std::vector<LoadedTexture> textures;

    FullAtlas() {
        std::mt19937 random(1);
        for (int i = 0; i < 256; ++i) {
            SourceTexture& record = records.emplace_back();
            record.image.width = record.image.height = sprite_side;
            SetTextureEntry entry;
            entry.texture = &record;
            entry.pad_texels_u = entry.pad_texels_v = 2;
            surface.insert(entry, /*pixel_step=*/true, /*expanding_square=*/false);
            LoadedTexture& texture = textures.emplace_back();
            texture.width = texture.height = sprite_side;
            for (std::int32_t level_side = sprite_side; level_side > 0; level_side /= 2) {
                Bitmap& level = texture.mips.emplace_back(level_side, level_side);
                for (std::uint8_t& byte : level.pixels())
                    byte = static_cast<std::uint8_t>(random());
            }
        }
    }

    MipChain chain() const { return filled_chain(side, side, 12, {0.5f, 0.5f, 0.5f}); }

    void blit(MipChain& levels) {
        for (std::size_t i = 0; i < textures.size(); ++i)
            blit_entry(levels, surface.entries()[i], textures[i], CornerTags::none);
    }
};

void count_pixels(benchmark::State& state) {
    state.counters["MPix/s"] = {side * side / 1e6, benchmark::Counter::kIsIterationInvariantRate};
}

void BM_Fill(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(filled_chain(side, side, 12, {0.5f, 0.5f, 0.5f}));
    count_pixels(state);
}

void BM_Blit(benchmark::State& state) {
    FullAtlas atlas;
    if (atlas.surface.entries().size() != 256)
        return state.SkipWithError("the sprites do not fill the surface");
    MipChain levels = atlas.chain();
    for (auto _ : state)
        atlas.blit(levels);
    count_pixels(state);
}

void BM_Dilate(benchmark::State& state) {
    FullAtlas atlas;
    MipChain levels = atlas.chain();
    atlas.blit(levels);
    dilate(levels, atlas.surface.entries());
    const std::span<const std::uint8_t> top = levels[0].pixels();
    for (std::size_t i = 3; i < top.size(); i += 4)
        if (i / 4 % side < 2 && top[i] != top[i - i / 4 % side * 4 + 8])
            return state.SkipWithError("the padding does not repeat the edge");
    for (auto _ : state)
        dilate(levels, atlas.surface.entries());
    count_pixels(state);
}

void BM_AverageColour(benchmark::State& state) {
    FullAtlas atlas;
    MipChain levels = atlas.chain();
    atlas.blit(levels);
    for (auto _ : state)
        benchmark::DoNotOptimize(average_colour(levels[0]));
    count_pixels(state);
}

void BM_Save(benchmark::State& state, TextureFileFormat format) {
    FullAtlas atlas;
    MipChain levels = atlas.chain();
    atlas.blit(levels);
    const std::string path = (std::filesystem::temp_directory_path() / "mosaicer_bake_bench").string();
    for (auto _ : state)
        if (!save_image(levels, TexelFormat::AF_A8R8G8B8, format, path))
            return state.SkipWithError("not written");
    std::filesystem::remove(path);
    count_pixels(state);
}

BENCHMARK(BM_Fill)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Blit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dilate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AverageColour)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Save, dds, TextureFileFormat::DDS)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Save, bmp, TextureFileFormat::BMP)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace mosaicer
