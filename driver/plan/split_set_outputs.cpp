#include "driver/plan/split_set_outputs.h"

#include "driver/TextureIndex.h"
#include "driver/plan/set_outputs.h"
#include "driver/read_set_definition.h"
#include "packing/AtlasSurface.h"
#include "packing/SetDrivers.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/xml/XMLDocument.h"

#include <set>
#include <utility>

namespace mosaicer {

std::vector<std::string> split_set_outputs(const PlanRoots& roots, const std::vector<std::string>& patterns) {
    kst::XMLDocument definition;
    load_definition(definition, roots.definition_path);
    std::vector<std::string> files;
    std::set<std::string> seen;
    const auto keep_files = [&](const AtlasSurface& surface, const BakeRequest& request) {
        if (!surface.entries().empty())
            for (std::string& file : atlas_outputs(request.output_root, request.atlas_name, request.file_format))
                if (seen.insert(file).second)
                    files.push_back(std::move(file));
    };
    const SetMakers makers{
        [](AtlasSetDefinition&, const std::string&) {},
        [&](const AtlasSetDefinition& set, const std::string& root) { create_split_atlas(set, root, keep_files); },
        [](const AtlasSetDefinition&, const std::string&) {},
    };
    for (const std::string& pattern : patterns) {
        TextureIndex index(kst::find_host_path(roots.textures_root));
        read_set_definition(AtlasSetDefinition{}, definition, {index, roots.output_root, pattern, makers});
    }
    return files;
}

} // namespace mosaicer
