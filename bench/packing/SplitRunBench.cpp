// A whole split run of 600 textures at a required usage, one removal at a time: each removal packs the list anew.

#include "bench/packing/MixedSizes.h"
#include "packing/AtlasSurface.h"
#include "packing/SetDrivers.h"

#include <benchmark/benchmark.h>

namespace mosaicer {
namespace {

void BM_SplitRun(benchmark::State& state) {
    const MixedSizes sizes(600, 512);
    AtlasSetDefinition definition;
    definition.textures = sizes.entries();
    // Sides of whole powers of two, so that every texture reaches the usage at least alone.
    for (SetTextureEntry& entry : definition.textures) {
        entry.width = 1 << static_cast<int>(std::log2(entry.texture->image.width));
        entry.height = 1 << static_cast<int>(std::log2(entry.texture->image.height));
    }
    definition.width = definition.height = static_cast<std::int32_t>(state.range(0));
    definition.insertion_strat = static_cast<InsertionStrategy>(state.range(1));
    definition.removal_strats = {static_cast<RemovalKind>(state.range(2))};
    definition.min_usage = 0.75f;
    std::size_t placed = 0;
    std::size_t atlases = 0;
    const auto count = [&](AtlasSurface& surface, const BakeRequest&) {
        placed += surface.entries().size();
        ++atlases;
    };
    for (auto _ : state) {
        placed = 0;
        atlases = 0;
        create_split_atlas(definition, "out", count);
    }
    if (placed != definition.textures.size())
        state.SkipWithError("not every texture was placed");
    state.counters["atlases"] = static_cast<double>(atlases);
}

BENCHMARK(BM_SplitRun)
    ->ArgNames({"side", "strategy", "removal"})
    ->ArgsProduct({{1024, 4096}, {0, 2}, {1, 2}})
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace mosaicer
