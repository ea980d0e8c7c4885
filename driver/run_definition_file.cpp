#include "driver/run_definition_file.h"

#include "driver/TextureIndex.h"
#include "driver/read_set_definition.h"
#include "packing/SetDrivers.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/xml/XMLDocument.h"
#include "texture/AtlasBaker.h"
#include "texture/TextureSet.h"

namespace mosaicer {
namespace {

/// Keeps the disk in the process's name space for as long as it lives.
class DiskMount {
public:
    DiskMount() : id_(kst::VirtualFileSystem::instance()->mount("/", &disk_, /*owned=*/false)) {}
    DiskMount(const DiskMount&) = delete;
    DiskMount& operator=(const DiskMount&) = delete;
    ~DiskMount() { kst::VirtualFileSystem::instance()->unmount(id_); }

private:
    kst::DiskFileSystem disk_;
    std::int32_t id_;
};

SetMakers makers() {
    return {
        [](AtlasSetDefinition& set, const std::string& root) { create_atlas(set, root, bake_atlas); },
        [](const AtlasSetDefinition& set, const std::string& root) { create_split_atlas(set, root, bake_atlas); },
        [](const AtlasSetDefinition& set, const std::string& root) { create_texture_set(set, root); },
    };
}

} // namespace

void run_definition_file(const std::string& textures_root, const std::string& definition_path,
                         const std::string& output_root, const std::string& pattern) {
    const DiskMount disk;
    kst::XMLDocument definition;
    definition.load(definition_path);
    // Definitions are written where case does not matter; a root is found in whatever case it has here.
    TextureIndex index(kst::find_host_path(textures_root));
    const SetMakers set_makers = makers();
    read_set_definition(AtlasSetDefinition{}, definition, {index, output_root, pattern, set_makers});
}

} // namespace mosaicer
