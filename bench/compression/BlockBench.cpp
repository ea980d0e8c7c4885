#include "bench/compression/Encoders.h"
#include "compression/CompressionOptions.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

namespace mosaicer::bench {
namespace {

const Picture& subject() {
    static const Picture picture = photograph(512, 512);
    return picture;
}

bool decodes_close_to(const Picture& picture, const std::vector<std::uint8_t>& blocks, std::int32_t format) {
    const auto decoded = decode_blocks(blocks, format, picture.bytes.width, picture.bytes.height);
    double sum = 0;
    for (std::size_t i = 0; i < decoded.size(); ++i)
        if (i % 4 != 3 || format != compression::FORMAT_DXT1)
            sum += std::pow(decoded[i] - picture.bytes.pixels[i], 2);
    return sum / static_cast<double>(decoded.size()) < 150;
}

void encode_photograph(benchmark::State& state, const Encoder& encoder, std::int32_t format) {
    const Picture& picture = subject();
    const auto blocks = encoder.encode(picture, format);
    if (!decodes_close_to(picture, blocks, format))
        return state.SkipWithError("wrong pixels");
    for (auto _ : state)
        benchmark::DoNotOptimize(encoder.encode(picture, format));
    const auto pixels = static_cast<double>(picture.bytes.pixels.size() / 4);
    state.counters["MPix/s"] = {pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate};
    state.counters["MB/s"] = {pixels * 4 / 1e6, benchmark::Counter::kIsIterationInvariantRate};
}

const bool registered = [] {
    for (const auto& [format, name] :
         {std::pair{compression::FORMAT_DXT1, "DXT1/"}, {compression::FORMAT_DXT5, "DXT5/"}})
        for (const Encoder& encoder : encoders())
            benchmark::RegisterBenchmark((name + std::string(encoder.name)).c_str(), [&encoder,
                                                                                      format](benchmark::State& state) {
                encode_photograph(state, encoder, format);
            })->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
} // namespace mosaicer::bench
