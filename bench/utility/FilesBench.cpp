// Reading a large file front to back through the three kinds of store, and finding paths in the wrong case.

#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/find_host_path.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr std::size_t file_size = std::size_t{32} << 20;

std::string numbered_bytes() {
    std::string bytes(file_size, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>((i * 7 + i / 251) & 0xFFu);
    return bytes;
}

/// Sums the bytes as a stand-in for a client's work on them.
std::uint64_t read_all(kst::FileSystem& files, const char* mode, std::size_t step) {
    kst::Archive archive = files.open("file", mode);
    std::vector<unsigned char> block(step);
    std::uint64_t sum = 0;
    while (archive.position() < archive.size()) {
        const auto left = static_cast<std::size_t>(archive.size() - archive.position());
        const std::size_t bytes = archive.read(block.data(), std::min(step, left));
        for (std::size_t i = 0; i < bytes; ++i)
            sum += block[i];
    }
    return sum;
}

void read_front_to_back(benchmark::State& state, const char* mode) {
    const test_support::TemporaryDirectory disk;
    const std::string bytes = numbered_bytes();
    disk.write("file", bytes);
    std::uint64_t expected = 0;
    for (const char c : bytes)
        expected += static_cast<unsigned char>(c);
    kst::DiskFileSystem files(disk.path().string());
    const auto step = static_cast<std::size_t>(state.range(0));
    if (read_all(files, mode, step) != expected)
        return state.SkipWithError("wrong bytes");
    for (auto _ : state)
        benchmark::DoNotOptimize(read_all(files, mode, step));
    state.SetBytesProcessed(static_cast<std::int64_t>(file_size) * state.iterations());
}
BENCHMARK_CAPTURE(read_front_to_back, plain, "r")->Arg(512)->Arg(65'536);
BENCHMARK_CAPTURE(read_front_to_back, cached, "rc")->Arg(512)->Arg(65'536);

/// A file three directories deep, each among `state.range(0)` others.
void find_path(benchmark::State& state, bool exact) {
    const test_support::TemporaryDirectory disk;
    std::string directory = "Textures";
    for (int level = 0; level < 3; ++level) {
        for (int i = 0; i < state.range(0); ++i)
            disk.write(directory + "/Other" + std::to_string(i), "");
        directory += "/Level";
    }
    const std::string path = disk.write(directory + "/Rock.dds", "");
    const std::string asked = exact ? path : disk / "textures\\level\\level\\level\\rock.dds";
    if (kst::find_host_path(asked) != path)
        return state.SkipWithError("wrong path");
    for (auto _ : state)
        benchmark::DoNotOptimize(kst::find_host_path(asked));
}
BENCHMARK_CAPTURE(find_path, exact, true)->Arg(100);
BENCHMARK_CAPTURE(find_path, other_case, false)->Arg(10)->Arg(100)->Arg(1000);

} // namespace
