// The DDS reader on files of one level of 2,048 squared in memory. `literal` decodes the same level pixel by pixel
// in floats, and is what the fast forms are measured against.

#include "compression/Codes.h"
#include "tests/compression/ChainRecorder.h"
#include "tests/compression/DdsFileBuilder.h"

#include <benchmark/benchmark.h>

namespace {

using namespace compression;
using testing::Bytes;

constexpr std::uint32_t side = 2048;
constexpr double megapixels = side * side / 1e6;

struct Format {
    testing::PixelFormat pixel_format;
    int kind; ///< of literal_blocks; 0 for A8R8G8B8
    std::size_t bits_per_pixel;
};

const Format formats[] = {{testing::code_format(four_cc('D', 'X', 'T', '1')), 1, 4},
                          {testing::code_format(four_cc('D', 'X', 'T', '3')), 3, 8},
                          {testing::code_format(four_cc('D', 'X', 'T', '5')), 5, 8},
                          {testing::code_format(four_cc('A', 'T', 'I', '2')), 2, 8},
                          {{32, 0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000}, 0, 32}};

Bytes body_of(const Format& format) {
    return testing::random_bytes(side * side * format.bits_per_pixel / 8);
}

Bytes literal(const Format& format, const Bytes& body) {
    if (format.kind != 0)
        return testing::literal_blocks(body, format.kind, side, side);
    Bytes pixels(body.size());
    for (std::size_t i = 0; i < body.size(); i += 4)
        for (std::size_t c = 0; c < 4; ++c)
            pixels[i + c] = testing::cut_to_byte(static_cast<float>(body[i + (c < 3 ? 2 - c : 3)]) / 255.0f);
    return pixels;
}

void set_throughput(benchmark::State& state) {
    state.counters["MPix/s"] = {megapixels, benchmark::Counter::kIsIterationInvariantRate};
}

void read_dds_2048(benchmark::State& state) {
    const Format& format = formats[state.range(0)];
    const Bytes body = body_of(format);
    const Bytes file = testing::DdsFile::plain(format.pixel_format, side, side, body).bytes();
    const auto first = testing::read_back(file);
    if (first.code != OK || first.info.images[0].pixels != literal(format, body))
        return state.SkipWithError("wrong pixels");
    for (auto _ : state)
        benchmark::DoNotOptimize(testing::read_back(file));
    set_throughput(state);
}

void literal_2048(benchmark::State& state) {
    const Format& format = formats[state.range(0)];
    const Bytes body = body_of(format);
    for (auto _ : state)
        benchmark::DoNotOptimize(literal(format, body));
    set_throughput(state);
}

void name_formats(benchmark::internal::Benchmark* bench) {
    bench->ArgName("dxt1_dxt3_dxt5_ati2_argb")->DenseRange(0, 4)->Unit(benchmark::kMillisecond);
}

void write_chain_2048(benchmark::State& state) {
    std::vector<LevelImage> levels;
    for (std::int32_t level_side = side; level_side > 0; level_side /= 2)
        levels.push_back(testing::patterned_level(level_side, level_side));
    CompressionOptions options = testing::supplied(state.range(0) == 0 ? FORMAT_A8R8G8B8 : FORMAT_A8L8);
    const auto drop = [](const void* bytes, std::size_t, const LevelRecord*, void*) {
        benchmark::DoNotOptimize(bytes);
        return std::int32_t{0};
    };
    testing::ChainRecorder recorder;
    if (recorder.compress(levels, options) != OK || recorder.records.size() != levels.size())
        return state.SkipWithError("wrong levels");
    for (auto _ : state)
        benchmark::DoNotOptimize(compress_mip_chain(levels, options, drop, nullptr));
    set_throughput(state);
}

BENCHMARK(read_dds_2048)->Apply(name_formats);
BENCHMARK(literal_2048)->Apply(name_formats);
BENCHMARK(write_chain_2048)->ArgName("argb_a8l8")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
