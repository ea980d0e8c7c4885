#include "tests/compression/TestBlocks.h"

#include "compression/CompressionOptions.h"

#include <algorithm>
#include <random>

namespace compression {
namespace {

using Random = std::mt19937;
using Pixel = std::array<std::uint8_t, 3>;

int below(Random& random, int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

std::uint8_t held(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

Pixel any_pixel(Random& random) {
    return {held(below(random, 256)), held(below(random, 256)), held(below(random, 256))};
}

// The pixel at place `i` of a block whose two ends are given.
using Kind = Pixel (*)(Random& random, int i, const Pixel& a, const Pixel& b);

Pixel mix(const Pixel& a, const Pixel& b, int part, int whole) {
    Pixel mixed{};
    for (std::size_t c = 0; c < 3; ++c)
        mixed[c] = held((a[c] * (whole - part) + b[c] * part) / whole);
    return mixed;
}

Pixel jitter(Random& random, Pixel pixel, int reach) {
    for (std::uint8_t& channel : pixel)
        channel = held(channel + below(random, 2 * reach + 1) - reach);
    return pixel;
}

struct NamedKind {
    const char* name;
    Kind kind;
};
constexpr NamedKind kinds[] = {
    {"noise", [](Random& r, int, const Pixel&, const Pixel&) { return any_pixel(r); }},
    {"soft noise", [](Random& r, int, const Pixel& a, const Pixel&) { return jitter(r, a, 12); }},
    {"faint noise", [](Random& r, int, const Pixel& a, const Pixel&) { return jitter(r, a, 1); }},
    {"gradient", [](Random&, int i, const Pixel& a, const Pixel& b) { return mix(a, b, i % 4 + i / 4, 6); }},
    {"grainy gradient",
     [](Random& r, int i, const Pixel& a, const Pixel& b) { return jitter(r, mix(a, b, i, 15), 9); }},
    {"edge", [](Random& r, int i, const Pixel& a, const Pixel& b) { return jitter(r, i % 4 < 2 ? a : b, 6); }},
    {"two colours", [](Random& r, int, const Pixel& a, const Pixel& b) { return below(r, 3) == 0 ? a : b; }},
    {"three colours", [](Random& r, int, const Pixel& a, const Pixel& b) { return mix(a, b, below(r, 3), 2); }},
    {"four levels", [](Random& r, int, const Pixel& a, const Pixel& b) { return mix(a, b, below(r, 4), 3); }},
    {"ties",
     [](Random& r, int, const Pixel&, const Pixel&) {
         return Pixel{held(below(r, 2) * 80), held(below(r, 2) * 80), held(below(r, 2) * 80)};
     }},
    {"extremes",
     [](Random& r, int, const Pixel&, const Pixel&) {
         return Pixel{held(below(r, 2) * 255), held(below(r, 2) * 255), held(below(r, 2) * 255)};
     }},
    {"flat channel",
     [](Random& r, int, const Pixel& a, const Pixel&) {
         return Pixel{held(below(r, 256)), a[1], held(below(r, 256))};
     }},
    {"one channel",
     [](Random& r, int, const Pixel& a, const Pixel&) {
         return Pixel{a[0], held(below(r, 256)), a[2]};
     }},
    {"saturated channel",
     [](Random& r, int, const Pixel& a, const Pixel&) {
         return Pixel{255, jitter(r, a, 40)[1], held(below(r, 60))};
     }},
    {"beyond the box",
     [](Random& r, int i, const Pixel& a, const Pixel&) {
         return Pixel{held(below(r, 9) * 40 - 40), held(i * 25 - 60), jitter(r, a, 90)[2]};
     }},
    {"near grey",
     [](Random& r, int i, const Pixel& a, const Pixel&) {
         return jitter(r, Pixel{held(a[0] + i * 3), held(a[0] + i * 3), held(a[0] + i * 3)}, 2);
     }},
    {"grey",
     [](Random& r, int, const Pixel&, const Pixel&) {
         const auto v = held(below(r, 256));
         return Pixel{v, v, v};
     }},
    {"one colour", [](Random&, int, const Pixel& a, const Pixel&) { return a; }},
    {"black and a colour",
     [](Random& r, int, const Pixel& a, const Pixel&) {
         return below(r, 3) == 0 ? Pixel{0, 0, 0} : jitter(r, a, 10);
     }},
};

} // namespace

std::vector<TestBlock> test_blocks(int each) {
    Random random(20);
    std::vector<TestBlock> blocks;
    for (const NamedKind& kind : kinds)
        for (int n = 0; n < each; ++n) {
            const Pixel a = any_pixel(random);
            const Pixel b = any_pixel(random);
            TestBlock block{kind.name, {}};
            // Every fourth block stands at an edge.
            const int count = n % 4 == 3 ? 1 + below(random, 15) : 16;
            for (int i = 0; i < count; ++i)
                block.pixels.push_back(kind.kind(random, i, a, b));
            blocks.push_back(block);
        }
    return blocks;
}

BlockContext make_context(const TestBlock& block) {
    BlockContext context;
    const CompressionOptions defaults;
    std::copy(defaults.colour_weights.begin(), defaults.colour_weights.end(), context.weights.begin());
    context.rms_error_threshold = defaults.rms_error_threshold;
    for (const auto& pixel : block.pixels) {
        auto& colour = context.colours[static_cast<std::size_t>(context.count++)];
        for (std::size_t c = 0; c < 3; ++c)
            colour[c] = static_cast<double>(static_cast<float>(pixel[c]) / 255.0f);
    }
    return context;
}

} // namespace compression
