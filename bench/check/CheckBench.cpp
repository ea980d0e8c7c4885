// A definition of 100 sets over a tree of 5,000 small files, half TARGA and half PNG, on the disk.

#include "driver/check/DefinitionCheck.h"
#include "driver/check/spelling.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"
#include "texture/Bitmap.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace mosaicer {
namespace {

constexpr int set_count = 100;
constexpr int textures_of_set = 50;

/// Sides from 8 to 64, a third of the sets split with a usage to reach.
class Tree {
public:
    Tree() {
        std::string definition = "<g name='g' width='2048' height='2048' texel_format='AF_DXT5'>\n";
        for (int set = 0; set < set_count; ++set) {
            definition += "<atlas name='s" + std::to_string(set) + "'" +
                          (set % 3 == 0 ? " autosplit='true' min_usage='0.5'" : "") + ">\n";
            for (int i = 0; i < textures_of_set; ++i)
                definition += "<t name='" + add_texture(set * textures_of_set + i) + "'/>\n";
            definition += "</atlas>\n";
        }
        folder.write("sets.xml", definition + "</g>\n");
    }

    test_support::TemporaryDirectory folder;

private:
    std::string add_texture(int number) const {
        const std::string name = "t" + std::to_string(number);
        const std::string path = "tex/d" + std::to_string(number % 40) + "/" + name;
        const int width = 8 << number % 4;
        const int height = 8 << number / 4 % 4;
        folder.write(path + ".tga", test_support::tga_bytes(width, height));
        if (number % 2 == 0)
            return name;
        Bitmap(width, height).save(folder / (path + ".png"), BitmapFormat::png);
        std::filesystem::remove(folder / (path + ".tga"));
        return name;
    }
};

void check_5000_textures(benchmark::State& state) {
    static const Tree tree;
    kst::VirtualFileSystem files;
    kst::DiskFileSystem disk;
    files.mount("/", &disk, false);
    const std::string root = tree.folder / "tex";
    const std::string definition = tree.folder / "sets.xml";
    for (const Finding& finding : check_definition(root, definition))
        throw std::runtime_error(finding_text(finding));
    for (auto _ : state)
        benchmark::DoNotOptimize(check_definition(root, definition));
    state.SetItemsProcessed(state.iterations() * set_count * textures_of_set);
}
BENCHMARK(check_5000_textures)->Unit(benchmark::kMillisecond);

void nearest_of_5000_names(benchmark::State& state) {
    std::vector<std::string> names;
    for (int i = 0; i < set_count * textures_of_set; ++i)
        names.push_back("wall_brick_" + std::to_string(i));
    const std::vector<std::string_view> candidates(names.begin(), names.end());
    if (nearest_word("wal_brick_4711", candidates) != "wall_brick_4711")
        throw std::runtime_error("the nearest name is not found");
    for (auto _ : state)
        benchmark::DoNotOptimize(nearest_word("wal_brick_4711", candidates));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}
BENCHMARK(nearest_of_5000_names)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace mosaicer
