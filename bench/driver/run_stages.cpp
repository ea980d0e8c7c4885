// Runs the tool's work over a definition with a clock at each stage, and tells the peak memory:
//
//     bench_run_stages [TEXTURES DEFINITION]      (default: the examples)
//
// Sets are made as the tool makes them, but the stages of a bake stand apart: pixels are decoded once without mips, to
// tell decoding from filtering. Images go to a folder that is removed at the end.

#include "driver/TextureIndex.h"
#include "driver/read_set_definition.h"
#include "driver/records/PathText.h"
#include "packing/AtlasSurface.h"
#include "packing/SetDrivers.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/xml/XMLDocument.h"
#include "texture/AtlasBaker.h"
#include "texture/AtlasBlit.h"
#include "texture/ImageOutput.h"
#include "texture/TextureLoader.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace {

using namespace mosaicer;
using Clock = std::chrono::steady_clock;

struct Stages {
    double index = 0;
    double pack = 0;
    double load = 0;
    double filter = 0;
    double blit = 0;
    double save = 0;
    double megapixels = 0;
    int atlases = 0;
};

/// Adds the time from its making to its end to one stage.
class Lap {
public:
    explicit Lap(double& stage) : stage_(stage) {}
    Lap(const Lap&) = delete;
    Lap& operator=(const Lap&) = delete;
    ~Lap() { stage_ += std::chrono::duration<double, std::milli>(Clock::now() - start_).count(); }

private:
    double& stage_;
    Clock::time_point start_ = Clock::now();
};

std::int32_t level_count(const AtlasSurface& surface, std::int32_t wanted) {
    std::int32_t full = 0;
    for (std::int32_t side = std::max(surface.width(), surface.height()); side > 0; side >>= 1)
        ++full;
    return wanted == 0 || wanted > full ? full : wanted;
}

void bake_in_stages(AtlasSurface& surface, const BakeRequest& request, Stages& stages) {
    if (surface.entries().empty())
        return;
    surface.adjust_tiling();
    surface.shrink();
    const std::int32_t levels = level_count(surface, request.nr_mips);
    AtlasTextures loaded;
    double decode = 0;
    double decode_and_filter = 0;
    {
        const Lap lap(decode);
        loaded = load_textures(surface.entries(), {.with_mips = false});
    }
    {
        const Lap lap(decode_and_filter);
        loaded = load_textures(surface.entries(), {.with_mips = levels != 1});
    }
    stages.load += decode;
    stages.filter += std::max(0.0, decode_and_filter - decode);
    MipChain chain;
    {
        const Lap lap(stages.blit);
        chain = filled_chain(surface.width(), surface.height(), levels, loaded.mean_colour);
        for (std::size_t i = 0; i < surface.entries().size(); ++i)
            blit_entry(chain, surface.entries()[i], loaded.textures[i], CornerTags::none);
        dilate(chain, surface.entries());
    }
    const std::string folder = join_path(request.output_root, request.atlas_name);
    create_directories(folder);
    const Lap lap(stages.save);
    save_image(chain, request.texel_format, request.file_format,
               join_path(folder, "atlas." + std::string(file_extension(request.file_format))));
    stages.megapixels += static_cast<double>(surface.width()) * surface.height() / 1e6;
    ++stages.atlases;
}

SetMakers timed_makers(Stages& stages) {
    // Packing is what a driver does outside of the bake that it calls.
    const auto packed = [&stages](auto make) {
        double inside = 0;
        double whole = 0;
        {
            const Lap lap(whole);
            make([&](AtlasSurface& surface, const BakeRequest& request) {
                const Lap bake_lap(inside);
                bake_in_stages(surface, request, stages);
            });
        }
        stages.pack += whole - inside;
    };
    return {
        [packed](AtlasSetDefinition& set, const std::string& root) {
            packed([&](const BakeAtlas& bake) { create_atlas(set, root, bake); });
        },
        [packed](const AtlasSetDefinition& set, const std::string& root) {
            packed([&](const BakeAtlas& bake) { create_split_atlas(set, root, bake); });
        },
        [](const AtlasSetDefinition&, const std::string&) {},
    };
}

void run(const std::string& textures, const std::string& definition_path, const std::string& output) {
    kst::VirtualFileSystem files;
    kst::DiskFileSystem disk;
    files.mount("/", &disk, false);
    kst::XMLDocument definition;
    if (!definition.load(definition_path))
        throw std::runtime_error("cannot load " + definition_path);
    Stages stages;
    TextureIndex index(kst::find_host_path(join_path(textures, "")));
    {
        const Lap lap(stages.index);
        index.ensure_built();
    }
    const SetMakers makers = timed_makers(stages);
    const std::string pattern;
    double whole = 0;
    {
        const Lap lap(whole);
        read_set_definition({}, definition, {index, output, pattern, makers});
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%d atlases, %.2f Mpix; milliseconds by stage:\n", stages.atlases, stages.megapixels);
    std::printf("index %.1f  pack %.1f  load %.1f  filter %.1f  blit %.1f  save %.1f\n", stages.index, stages.pack,
                stages.load, stages.filter, stages.blit, stages.save);
    std::printf("peak memory %.1f MB\n", static_cast<double>(usage.ru_maxrss) / 1024);
}

} // namespace

int main(int argc, char** argv) {
    const std::string examples = MOSAICER_SOURCE_DIR "/examples/";
    const std::string textures = argc > 2 ? argv[1] : examples + "textures";
    const std::string definition = argc > 2 ? argv[2] : examples + "atlas_set.xml";
    const std::filesystem::path output = std::filesystem::temp_directory_path() / "mosaicer_run_stages";
    int code = 0;
    try {
        run(textures, definition, output.string() + "/");
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        code = 1;
    }
    std::filesystem::remove_all(output);
    return code;
}
