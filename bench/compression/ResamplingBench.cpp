// Making a full chain from one level of 1,024 squared, through the door: what g_mip_map_type 30 costs by filter.

#include "compression/Codes.h"
#include "compression/Resampling.h"
#include "tests/compression/ChainRecorder.h"

#include <benchmark/benchmark.h>

namespace {

using namespace compression;

constexpr std::int32_t side = 1024;

void generate_chain_1024(benchmark::State& state) {
    const std::vector<LevelImage> levels{testing::patterned_level(side, side)};
    CompressionOptions options = testing::supplied(FORMAT_A8R8G8B8);
    options.g_mip_map_type = MIP_MAPS_GENERATE;
    options.g_mip_filter_type = static_cast<std::int32_t>(state.range(0));
    options.g_enable_filter_gamma = state.range(1) != 0;
    testing::ChainRecorder recorder;
    if (recorder.compress(levels, options) != OK || recorder.records.size() != 11)
        return state.SkipWithError("wrong levels");
    const auto drop = [](const void* bytes, std::size_t, const LevelRecord*, void*) {
        benchmark::DoNotOptimize(bytes);
        return std::int32_t{0};
    };
    for (auto _ : state)
        benchmark::DoNotOptimize(compress_mip_chain(levels, options, drop, nullptr));
    state.counters["MPix/s"] = {side * side / 1e6, benchmark::Counter::kIsIterationInvariantRate};
}
BENCHMARK(generate_chain_1024)
    ->ArgNames({"filter", "gamma"})
    ->ArgsProduct({{0, 1, 2, 6, 8, 13}, {0}})
    ->Args({2, 1})
    ->Unit(benchmark::kMillisecond);

} // namespace
