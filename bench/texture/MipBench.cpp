#include "tests/texture/support/LiteralMips.h"
#include "tests/texture/support/Pictures.h"
#include "texture/GammaMips.h"
#include "texture/MipFilters.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <functional>
#include <string>

namespace {

using namespace mosaicer;

/// Megapixels of level 0 in a second.
void count_pixels(benchmark::State& state, std::int32_t side) {
    state.counters["MPix/s"] = {static_cast<double>(side) * side / 1e6, benchmark::Counter::kIsIterationInvariantRate};
}

MipChain build(const Bitmap& base, MipFilter filter, compression::SimdLevel simd) {
    MipChain chain;
    chain.push_back(*base.copy(0, 0, base.width(), base.height()));
    if (mip_way(filter) == MipWay::linear_light)
        filter_mips_gamma(chain, filter, simd);
    else
        filter_mips(chain, filter);
    return chain;
}

/// The first and the last level of a small picture against the plain loops.
bool agrees_with_plain_loops(MipFilter filter, compression::SimdLevel simd) {
    if (mip_way(filter) != MipWay::linear_light)
        return true;
    const MipChain chain = build(pictures::photo(64, 64), filter, simd);
    return std::ranges::all_of(std::array{1, 6}, [&](int level) {
        return std::ranges::equal(chain[static_cast<std::size_t>(level)].pixels(),
                                  literal::gamma_level(chain[0], filter, level).pixels());
    });
}

/// A whole chain.
void filter_chain(benchmark::State& state, MipFilter filter, compression::SimdLevel simd, bool opaque) {
    const auto side = static_cast<std::int32_t>(state.range(0));
    if (!agrees_with_plain_loops(filter, simd))
        return state.SkipWithError("wrong bytes");
    const Bitmap base = opaque ? pictures::photo(side, side) : pictures::noise(side, side);
    for (auto _ : state)
        benchmark::DoNotOptimize(build(base, filter, simd));
    count_pixels(state, side);
}

/// A whole chain by the plain loops.
void filter_chain_plainly(benchmark::State& state, MipFilter filter) {
    const auto side = static_cast<std::int32_t>(state.range(0));
    const Bitmap base = pictures::noise(side, side);
    for (auto _ : state)
        for (int level = 1; level < static_cast<int>(full_level_count(side, side)); ++level)
            benchmark::DoNotOptimize(literal::gamma_level(base, filter, level));
    count_pixels(state, side);
}

void register_chain(const std::string& name, MipFilter filter, compression::SimdLevel simd, bool opaque) {
    benchmark::RegisterBenchmark(name.c_str(), filter_chain, filter, simd, opaque)
        ->Arg(256)
        ->Arg(1024)
        ->Arg(2048)
        ->Unit(benchmark::kMillisecond);
}

const bool registered = [] {
    using compression::SimdLevel;
    const SimdLevel best = compression::best_simd_level();
    for (const auto& [word, filter] : KeywordTable<MipFilter>::entries)
        if (filter != MipFilter::KEEP)
            register_chain("BM_Mips/" + std::string(word), filter, best, /*opaque=*/false);
    register_chain("BM_MipsOpaque/KAISER_GAMMA", MipFilter::KAISER_GAMMA, best, /*opaque=*/true);
    for (const auto& [name, simd] : {std::pair{"scalar", SimdLevel::scalar}, {"sse2", SimdLevel::sse2}})
        if (simd < best)
            register_chain(std::string("BM_MipsKernel/KAISER_GAMMA/") + name, MipFilter::KAISER_GAMMA, simd, false);
    for (const MipFilter filter : {MipFilter::KAISER_GAMMA, MipFilter::BOX_GAMMA})
        benchmark::RegisterBenchmark(("BM_MipsPlain/" + std::string(keyword_of(filter))).c_str(), filter_chain_plainly,
                                     filter)
            ->Arg(256)
            ->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
