#include "driver/plan/survey_definition.h"

#include "driver/TextureIndex.h"
#include "driver/plan/LeftOutReading.h"
#include "driver/plan/OutputWriters.h"
#include "driver/plan/TextureMarks.h"
#include "driver/plan/set_fingerprint.h"
#include "driver/plan/set_outputs.h"
#include "driver/read_set_definition.h"
#include "driver/records/PathText.h"
#include "packing/AtlasSurface.h"
#include "packing/SetDrivers.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/xml/XMLDocument.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <numeric>
#include <set>
#include <stdexcept>

namespace mosaicer {
namespace {

using PathSet = std::set<std::string>;

enum class SetRoad { atlas, split_atlas, texture_set };

/// A definition or positions file with all that was included into it. A compiled form beside a source may be what is
/// read, so it counts as well.
void add_xml_files(const kst::XMLDocument& document, const std::string& path, PathSet& files) {
    const auto add = [&files](const std::string& file) {
        for (const char* const extension : {"", ".bin"})
            if (std::filesystem::is_regular_file(file + extension))
                files.insert(file + extension);
    };
    add(kst::find_host_path(path));
    for (const std::string& included : document.included_files())
        add(kst::VirtualFileSystem::instance()->system_path(included));
}

/// The directory, or where it would be made the nearest one that is there.
std::string standing_directory(std::string path) {
    while (!path.empty() && !std::filesystem::is_directory(path))
        path = std::filesystem::path(path).parent_path().string();
    return path.empty() ? "." : path;
}

/// Follows the reader over the definition and keeps what would be made.
class Recorder {
public:
    explicit Recorder(const PlanRoots& roots) : roots_(roots), index_(kst::find_host_path(roots.textures_root)) {}

    void read(const kst::XMLDocument& definition) {
        const auto keep = [this](SetRoad road) {
            return [this, road](const AtlasSetDefinition& set, const std::string&) { record(set, road); };
        };
        const SetMakers makers{keep(SetRoad::atlas), keep(SetRoad::split_atlas), keep(SetRoad::texture_set)};
        const std::string every_set;
        read_set_definition(AtlasSetDefinition{}, definition, {index_, roots_.output_root, every_set, makers});
    }

    std::vector<SurveyedSet> sets;
    std::vector<SetNaming> namings;
    PathSet directories;
    PathSet sources;

private:
    void record(const AtlasSetDefinition& set, SetRoad road) {
        const std::size_t number = sets.size();
        const IndexWalk& walk = index_.walk();
        if (walk.number != walk_number_)
            begin_walk(walk, number);
        SetNaming naming{set.name, {}};
        // The slots are back to these roots, but the textures are still those of an earlier set's.
        if (walk.roots != index_.unique_roots())
            naming.needs.push_back(walk_starter_);
        SurveyedSet surveyed = surveyed_set(set, road);
        const std::set<std::size_t> marked_by = marks_.exchange(number, set, index_);
        naming.needs.insert(naming.needs.end(), marked_by.begin(), marked_by.end());
        namings.push_back(std::move(naming));
        sets.push_back(std::move(surveyed));
    }

    void begin_walk(const IndexWalk& walk, std::size_t starter) {
        walk_number_ = walk.number;
        walk_starter_ = starter;
        marks_.forget();
        directories.insert(walk.directories.begin(), walk.directories.end());
        sources.insert(walk.files.begin(), walk.files.end());
        for (const std::string& root : walk.roots)
            if (!std::filesystem::is_directory(root))
                directories.insert(standing_directory(root));
    }

    SurveyedSet surveyed_set(const AtlasSetDefinition& set, SetRoad road) {
        SurveyedSet surveyed;
        surveyed.name = set.name;
        surveyed.is_split = road == SetRoad::split_atlas;
        PathSet inputs;
        for (const SetTextureEntry& entry : set.textures)
            inputs.insert(entry.texture->image.file_path);
        if (!set.autofill.empty())
            add_positions_files(set, inputs);
        surveyed.inputs.assign(inputs.begin(), inputs.end());
        if (road == SetRoad::texture_set)
            surveyed.outputs = texture_set_outputs(set, roots_.output_root);
        else if (road == SetRoad::atlas && !set.textures.empty())
            surveyed.outputs = atlas_outputs(roots_.output_root, set.name, set.file_format);
        else if (set.textures.empty() && surveyed.is_split)
            create_split_atlas(set, roots_.output_root, [](AtlasSurface&, const BakeRequest&) {}); // for what it throws
        surveyed.is_split = surveyed.is_split && !set.textures.empty();
        surveyed.fingerprint = combined_fingerprint(static_cast<std::uint64_t>(road), set_fingerprint(set));
        return surveyed;
    }

    /// A new positions file shows as a change of the directory it would lie in.
    void add_positions_files(const AtlasSetDefinition& set, PathSet& inputs) {
        for (const std::string& root : index_.unique_roots()) {
            directories.insert(standing_directory(kst::find_host_path(join_path(root, set.autofill))));
            const std::string path = join_path(root, join_path(set.autofill, "lightmap_positions.xml"));
            if (!kst::exists(path))
                continue;
            kst::XMLDocument positions;
            positions.load(path);
            add_xml_files(positions, path, inputs);
        }
    }

    const PlanRoots& roots_;
    TextureIndex index_;
    TextureMarks marks_;
    std::int32_t walk_number_ = 0;
    std::size_t walk_starter_ = 0;
};

/// Sets that write the same file need one another: the last one of a whole run must be the last one here.
void join_writers_of_same_files(const Recorder& recorder, const std::string& output_root, OutputWriters& writers,
                                std::vector<SetNaming>& namings) {
    for (std::size_t i = 0; i < recorder.sets.size(); ++i)
        for (const std::size_t other : writers.add(i, recorder.sets[i], output_root)) {
            namings[i].needs.push_back(other);
            namings[other].needs.push_back(i);
        }
}

void check_inputs_are_not_written(const std::vector<SurveyedSet>& sets, const OutputWriters& writers) {
    for (const SurveyedSet& set : sets)
        for (const std::string& input : set.inputs)
            if (const auto writer = writers.writer_of(input))
                throw std::runtime_error("Set " + sets[*writer].name + " writes " + input + ", which set " + set.name +
                                         " reads");
}

std::vector<EdgeGroup> all_in_one(std::size_t set_count) {
    if (set_count == 0)
        return {};
    EdgeGroup group{std::vector<std::size_t>(set_count), {""}};
    std::iota(group.sets.begin(), group.sets.end(), std::size_t{0});
    return {group};
}

std::vector<std::string> listed(const PathSet& paths) {
    return {paths.begin(), paths.end()};
}

} // namespace

DefinitionSurvey survey_definition(const PlanRoots& roots) {
    kst::XMLDocument definition;
    load_definition(definition, roots.definition_path);
    Recorder recorder(roots);
    recorder.read(definition);
    OutputWriters writers;
    std::vector<SetNaming> namings = recorder.namings;
    join_writers_of_same_files(recorder, roots.output_root, writers, namings);
    check_inputs_are_not_written(recorder.sets, writers);

    const LeftOutReading left_out(roots.textures_root, definition);
    PathSet definitions;
    add_xml_files(definition, roots.definition_path, definitions);
    DefinitionSurvey survey;
    survey.groups = left_out.is_harmless() ? group_sets(namings, left_out.nested()) : all_in_one(recorder.sets.size());
    survey.sets = std::move(recorder.sets);
    survey.definitions = listed(definitions);
    survey.directories = listed(recorder.directories);
    std::ranges::copy_if(recorder.sources, std::back_inserter(survey.sources),
                         [&](const std::string& file) { return !writers.writer_of(file); });
    return survey;
}

} // namespace mosaicer
