// Inserting a whole list under each strategy. What doesn't fit any more is part of it: a walk that fails is the
// longest. LiteralWalk is the same work, candidate by candidate, where it ends within a second or two.

#include "bench/packing/MixedSizes.h"
#include "packing/AtlasSurface.h"
#include "packing/InsertionStrategies.h"
#include "tests/packing/LiteralSurface.h"

#include <benchmark/benchmark.h>

namespace mosaicer {
namespace {

using testing_support::LiteralRect;
using testing_support::LiteralSurface;

const InsertionStrategyInfo& strategy_of(const benchmark::State& state) {
    return insertion_strategies[static_cast<std::size_t>(state.range(0))];
}

template <class Surface, class Entry>
void insert_all(Surface& surface, const std::vector<Entry>& entries, const InsertionStrategyInfo& info) {
    surface.reset();
    for (const Entry& entry : entries)
        surface.insert(entry, info.pixel_step, info.expanding_square);
}

std::vector<LiteralRect> literal_entries(const std::vector<SetTextureEntry>& entries) {
    std::vector<LiteralRect> rects;
    for (const SetTextureEntry& entry : entries)
        rects.push_back({0, 0, entry.texture->image.width, entry.texture->image.height});
    return rects;
}

bool same_places(const AtlasSurface& surface, const LiteralSurface& literal) {
    return std::equal(surface.entries().begin(), surface.entries().end(), literal.entries().begin(),
                      literal.entries().end(), [](const AtlasEntry& a, const LiteralRect& b) {
                          return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
                      });
}

void report(benchmark::State& state, std::size_t asked, std::size_t placed) {
    state.SetLabel(std::string(strategy_of(state).text));
    state.counters["placed"] = static_cast<double>(placed);
    state.counters["entries/s"] = {static_cast<double>(asked), benchmark::Counter::kIsIterationInvariantRate};
}

void BM_Walk(benchmark::State& state) {
    const auto side = static_cast<std::int32_t>(state.range(1));
    const MixedSizes sizes(static_cast<std::size_t>(state.range(2)), std::min(512, side / 2));
    AtlasSurface surface(side, side);
    for (auto _ : state)
        insert_all(surface, sizes.entries(), strategy_of(state));
    report(state, sizes.entries().size(), surface.entries().size());
}

void BM_LiteralWalk(benchmark::State& state) {
    const auto side = static_cast<std::int32_t>(state.range(1));
    const MixedSizes sizes(static_cast<std::size_t>(state.range(2)), std::min(512, side / 2));
    const auto rects = literal_entries(sizes.entries());
    LiteralSurface literal(side, side);
    for (auto _ : state)
        insert_all(literal, rects, strategy_of(state));
    AtlasSurface surface(side, side);
    insert_all(surface, sizes.entries(), strategy_of(state));
    if (!same_places(surface, literal))
        state.SkipWithError("other places than the fast walk");
    report(state, rects.size(), literal.entries().size());
}

BENCHMARK(BM_Walk)
    ->ArgNames({"strategy", "side", "count"})
    ->ArgsProduct({{0, 1, 2, 3}, {256, 1024, 4096}, {100, 500, 2000}})
    ->Unit(benchmark::kMillisecond);

BENCHMARK(BM_LiteralWalk)
    ->ArgNames({"strategy", "side", "count"})
    ->ArgsProduct({{0, 1, 2, 3}, {256}, {100, 500}})
    ->ArgsProduct({{0, 2, 3}, {1024}, {100}})
    ->ArgsProduct({{2}, {4096}, {500}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace mosaicer
