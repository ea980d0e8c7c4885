#include "driver/plan/survey_definition.h"

#include "driver/SetAttributes.h"
#include "driver/TextureIndex.h"
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
#include <array>
#include <filesystem>
#include <iterator>
#include <map>
#include <numeric>
#include <optional>
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

/// One spelling for each file, for comparison alone.
std::string one_spelling(const std::string& path) {
    return std::filesystem::absolute(path).lexically_normal().string();
}

/// What earlier sets have left on the textures of one walk of the index.
class TextureMarks {
public:
    /// For a new walk, whose textures are new.
    void forget() { marks_.clear(); }

    /// Notes what this set put on textures and takes it off again, so that each set shows what it puts on by itself.
    /// Gives the earlier sets whose marks would have changed this one.
    std::set<std::size_t> exchange(std::size_t set_number, const AtlasSetDefinition& set, const TextureIndex& index) {
        std::set<std::size_t> needed;
        for (const SetTextureEntry& entry : set.textures)
            add_needed(*entry.texture, set.has_positions, needed);
        for (const SetTextureEntry& entry : set.textures)
            if (!entry.texture->used_by.empty())
                take_mark(set_number, *entry.texture);
        if (set.has_positions)
            for (const auto& [key, texture] : index.records())
                if (texture->position != unset)
                    take_mark(set_number, *texture);
        return needed;
    }

private:
    struct Mark {
        std::size_t set_number;
        std::set<std::int32_t> used_by;
        std::array<float, 3> position;
    };
    static constexpr std::array<float, 3> unset{};

    void add_needed(const SourceTexture& texture, bool has_positions, std::set<std::size_t>& needed) const {
        const auto found = marks_.find(&texture);
        if (found == marks_.end())
            return;
        for (const Mark& mark : found->second) {
            const bool adds_groups = !std::ranges::includes(texture.used_by, mark.used_by);
            // A position of 0 may be the set's own word, but a texture that it does not place has the same.
            const bool places = has_positions && texture.position == unset && mark.position != unset;
            if (adds_groups || places)
                needed.insert(mark.set_number);
        }
    }

    void take_mark(std::size_t set_number, SourceTexture& texture) {
        marks_[&texture].push_back({set_number, std::move(texture.used_by), texture.position});
        texture.used_by.clear();
        texture.position = unset;
    }

    std::map<const SourceTexture*, std::vector<Mark>> marks_;
};

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

/// What the elements of a definition are where a pattern leaves out the set that they stand in: its texture entries are
/// then read as elements, with set attributes.
class LeftOutReading {
public:
    LeftOutReading(const std::string& textures_root, const kst::XMLNode& definition) : index_(textures_root) {
        try {
            read(AtlasSetDefinition{}, definition);
        } catch (const std::runtime_error&) {
            is_harmless_ = false; // an entry that only fails as an element fails every run with a pattern
        }
    }

    /// False: leaving out a set changes or fails the sets behind it, so that only a run of all sets is good.
    bool is_harmless() const { return is_harmless_; }
    const std::vector<NestedSet>& nested() const { return nested_; }

private:
    void read(const AtlasSetDefinition& parent, const kst::XMLNode& node) {
        const TextureIndex::Roots roots = index_.roots();
        const AtlasSetDefinition element = read_set_attributes(parent, node, index_);
        const bool is_set = node.name() == "atlas" || node.name() == "texture_set";
        const bool is_inside = owner_.has_value();
        if (is_inside && index_.roots() != roots)
            is_harmless_ = false;
        if (is_set && is_inside)
            nested_.push_back({element.name, *owner_});
        else if (is_set)
            owner_ = set_count_++;
        for (const kst::XMLNode& child : node.children())
            read(element, child);
        if (is_set && !is_inside)
            owner_.reset();
        index_.restore_roots(roots);
    }

    TextureIndex index_;
    std::vector<NestedSet> nested_;
    std::optional<std::size_t> owner_; ///< the set that is being read
    std::size_t set_count_ = 0;
    bool is_harmless_ = true;
};

/// The number behind "atlas" in the name of a directory of a split set.
bool is_numbered_atlas(const std::string& name) {
    constexpr std::string_view prefix = "atlas";
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           name.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
}

/// Which set writes a file. The folders of a split set's atlases are all its own, as their number is not known.
class Writers {
public:
    /// The sets that write the same files as this one, so far.
    std::set<std::size_t> add(std::size_t number, const SurveyedSet& set, const std::string& output_root) {
        std::set<std::size_t> others;
        for (const std::string& output : set.outputs) {
            const std::string file = one_spelling(output);
            if (const auto writer = writer_of(file); writer && *writer != number)
                others.insert(*writer);
            files_.emplace(file, number);
            folders_.emplace(std::filesystem::path(file).parent_path().string(), number);
        }
        if (set.is_split)
            add_split(number, one_spelling(join_path(output_root, set.name)), others);
        return others;
    }

    std::optional<std::size_t> writer_of(const std::string& file) const {
        if (const auto found = files_.find(file); found != files_.end())
            return found->second;
        const std::filesystem::path folder = std::filesystem::path(file).parent_path();
        const auto split = split_folders_.find(folder.parent_path().string());
        if (split == split_folders_.end() || !is_numbered_atlas(folder.filename().string()))
            return std::nullopt;
        return split->second;
    }

private:
    void add_split(std::size_t number, const std::string& folder, std::set<std::size_t>& others) {
        const auto [split, is_new] = split_folders_.emplace(folder, number);
        if (!is_new)
            others.insert(split->second);
        const std::string prefix = folder + "/";
        for (auto at = folders_.lower_bound(prefix); at != folders_.end() && at->first.starts_with(prefix); ++at)
            if (is_numbered_atlas(at->first.substr(prefix.size())))
                others.insert(at->second);
    }

    std::map<std::string, std::size_t> files_;
    std::multimap<std::string, std::size_t> folders_;
    std::map<std::string, std::size_t> split_folders_;
};

/// Sets that write the same file need one another: the last one of a whole run must be the last one here.
void join_writers_of_same_files(const Recorder& recorder, const std::string& output_root, Writers& writers,
                                std::vector<SetNaming>& namings) {
    for (std::size_t i = 0; i < recorder.sets.size(); ++i)
        for (const std::size_t other : writers.add(i, recorder.sets[i], output_root)) {
            namings[i].needs.push_back(other);
            namings[other].needs.push_back(i);
        }
}

void check_inputs_are_not_written(const std::vector<SurveyedSet>& sets, const Writers& writers) {
    for (const SurveyedSet& set : sets)
        for (const std::string& input : set.inputs)
            if (const auto writer = writers.writer_of(one_spelling(input)))
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

/// An absent definition makes nothing and is no failure of a run, but nobody wants a plan of it.
void load_definition(kst::XMLDocument& definition, const std::string& path) {
    definition.load(path);
    if (definition.type() == kst::XML_NONE)
        throw std::runtime_error("cannot load " + path);
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
    Writers writers;
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
                         [&](const std::string& file) { return !writers.writer_of(one_spelling(file)); });
    return survey;
}

std::vector<std::string> split_set_outputs(const PlanRoots& roots, const std::vector<std::string>& patterns) {
    kst::XMLDocument definition;
    load_definition(definition, roots.definition_path);
    std::vector<std::string> files;
    PathSet seen;
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
