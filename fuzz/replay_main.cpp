// A plain main for fuzz targets: replays every file of a seed folder, with its prefixes and single flipped bytes, in
// buffers of exactly their size, so that a sanitizer sees one byte too many. Keeps the targets building and passing
// where libFuzzer is not to be had.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

/// Long seeds are cut and flipped at a stride, so that a replay stays within a second or two.
constexpr std::size_t most_variants = 400;

void replay(const std::vector<std::uint8_t>& bytes, std::size_t size) {
    const auto exact = std::make_unique<std::uint8_t[]>(std::max<std::size_t>(size, 1));
    std::copy_n(bytes.begin(), size, exact.get());
    LLVMFuzzerTestOneInput(exact.get(), size);
}

void replay_with_variants(std::vector<std::uint8_t> bytes) {
    replay(bytes, bytes.size());
    const std::size_t stride = std::max<std::size_t>(1, bytes.size() / most_variants);
    for (std::size_t i = 0; i < bytes.size(); i += stride) {
        replay(bytes, i);
        bytes[i] ^= 0xFF;
        replay(bytes, bytes.size());
        bytes[i] ^= 0xFF;
    }
}

} // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> seeds;
        for (const auto& item : std::filesystem::directory_iterator(argv[i]))
            seeds.push_back(item.path());
        std::sort(seeds.begin(), seeds.end());
        for (const auto& seed : seeds) {
            std::ifstream file(seed, std::ios::binary);
            replay_with_variants({std::istreambuf_iterator<char>(file), {}});
            ++count;
        }
    }
    std::printf("%zu seeds replayed\n", count);
    return count > 0 ? 0 : 1;
}
