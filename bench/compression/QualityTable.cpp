// Prints Markdown tables of the encoders' quality and speed over the pictures of a folder:
//   compression_tables FOLDER

#include "bench/compression/Encoders.h"
#include "compression/CompressionOptions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <exception>

namespace mosaicer::bench {
namespace {

struct Score {
    double colour = 0; // sum of squared byte differences
    double alpha = 0;
    double weighted = 0; // the same under the default colour weights
    double pixels = 0;
    double seconds = 0;
};

double squared(double value) {
    return value * value;
}

void add(Score& score, const Picture& picture, const std::vector<std::uint8_t>& decoded) {
    const compression::CompressionOptions defaults;
    for (std::size_t i = 0; i < decoded.size(); i += 4) {
        for (std::size_t c = 0; c < 3; ++c) {
            const double difference = decoded[i + c] - picture.bytes.pixels[i + c];
            score.colour += squared(difference);
            score.weighted += squared(static_cast<double>(defaults.colour_weights[c]) * difference);
        }
        score.alpha += squared(decoded[i + 3] - picture.bytes.pixels[i + 3]);
    }
    score.pixels += static_cast<double>(decoded.size()) / 4;
}

// Processor time, the least of several runs where one is short: the first ones meet cold memory.
double seconds_to_encode(const Encoder& encoder, const Picture& picture, std::int32_t format) {
    constexpr double enough = 0.003;
    double least = 0;
    for (double spent = 0; spent < enough;) {
        const std::clock_t start = std::clock();
        encoder.encode(picture, format);
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        least = spent > 0 ? std::min(least, seconds) : seconds;
        spent += seconds;
    }
    return least;
}

Score measure(const Encoder& encoder, std::int32_t format, const std::vector<Picture>& pictures) {
    Score score;
    for (const Picture& picture : pictures) {
        score.seconds += seconds_to_encode(encoder, picture, format);
        const auto blocks = encoder.encode(picture, format);
        add(score, picture, decode_blocks(blocks, format, picture.bytes.width, picture.bytes.height));
    }
    return score;
}

double decibels(double sum, double values) {
    return sum == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * values / sum);
}

struct Format {
    std::int32_t value;
    const char* name;
};
constexpr std::array formats{Format{compression::FORMAT_DXT1, "DXT1"}, Format{compression::FORMAT_DXT3, "DXT3"},
                             Format{compression::FORMAT_DXT5, "DXT5"}};

void print_table(const Format& format, const std::vector<Picture>& pictures) {
    std::printf("\n### %s\n\n", format.name);
    std::printf("| Encoder | Colour PSNR, dB | Alpha PSNR, dB | Weighted error per pixel | Mpixel/s |\n");
    std::printf("|---|---|---|---|---|\n");
    for (const Encoder& encoder : encoders()) {
        if (format.value == compression::FORMAT_DXT3 && !encoder.knows_dxt3)
            continue;
        const Score score = measure(encoder, format.value, pictures);
        std::printf("| %.*s | %.3f | ", static_cast<int>(encoder.name.size()), encoder.name.data(),
                    decibels(score.colour, 3 * score.pixels));
        if (format.value == compression::FORMAT_DXT1)
            std::printf("- | ");
        else
            std::printf("%.3f | ", decibels(score.alpha, score.pixels));
        std::printf("%.3f | %.2f |\n", score.weighted / score.pixels, score.pixels / 1e6 / score.seconds);
        std::fflush(stdout);
    }
}

} // namespace
} // namespace mosaicer::bench

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::fprintf(stderr, "usage: compression_tables FOLDER\n");
        return 2;
    }
    const auto pictures = mosaicer::bench::load_pictures(argv[1]);
    double pixels = 0;
    for (const auto& picture : pictures)
        pixels += static_cast<double>(picture.bytes.pixels.size()) / 4;
    std::printf("%zu pictures, %.2f Mpixel, one thread.\n", pictures.size(), pixels / 1e6);
    for (const auto& format : mosaicer::bench::formats)
        mosaicer::bench::print_table(format, pictures);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "compression_tables: %s\n", error.what());
    return 1;
}
