#include "objects/stats/StatsBlockManager.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "objects/stats/StatsBlockValues.h"
#include "script/value/numbers.h"
#include "source/utility/ascii.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/xml/XMLDocument.h"

namespace kst {

namespace {

StatsBlockManager* current_manager = nullptr;

/// Deeper trees are links that lead in circles through names.
constexpr int depth_limit = 64;

void set_default(StatsBlock::Value& value, std::string_view text) {
    using Kind = StatsBlock::Value::Kind;
    switch (value.kind()) {
    case Kind::number:
        if (const auto number = script::scan_number(text))
            value.set_number(*number);
        break;
    case Kind::string:
        value.set_string(std::string(text));
        break;
    case Kind::boolean:
        value.set_bool(lowered(text) == "true");
        break;
    default:
        break;
    }
}

} // namespace

StatsBlockManager::StatsBlockManager() {
    empty_block_.finish();
    current_manager = this;
}

StatsBlockManager::StatsBlockManager(const std::string& directory) : StatsBlockManager() {
    scan(*VirtualFileSystem::instance(), directory, 0);
}

StatsBlockManager::~StatsBlockManager() {
    if (current_manager == this)
        current_manager = nullptr;
}

StatsBlockManager* StatsBlockManager::instance() {
    return current_manager;
}

void StatsBlockManager::scan(VirtualFileSystem& files, const std::string& directory, int depth) {
    platform::PathInfo info;
    if (platform::path_info(files.system_path(directory), info) == platform::PathResult::ok) {
        const auto place = std::lower_bound(scanned_.begin(), scanned_.end(), info.identity);
        if (place != scanned_.end() && *place == info.identity)
            return;
        scanned_.insert(place, info.identity);
    }
    const std::string inside = directory + "/";
    std::vector<std::string> names;
    files.list(names, directory, "sb_*.xml", /*want_directories=*/false);
    for (const std::string& name : names)
        read_file(inside + name);
    names.clear();
    files.list(names, directory, "*.*", /*want_directories=*/true);
    for (const std::string& name : names) {
        const std::string path = inside + name;
        if (depth < depth_limit)
            scan(files, path, depth + 1);
        else
            faults_.push_back(path + ": the directories are nested too deeply");
    }
}

void StatsBlockManager::read_file(const std::string& path) {
    XMLDocument document;
    try {
        if (document.load(path))
            return read_definitions(document, path);
        faults_.push_back(path + ": cannot be read");
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        faults_.push_back(path + ": " + error.what());
    }
}

void StatsBlockManager::read_definitions(const XMLNode& root, const std::string& file) {
    for (const XMLNode& child : root.children(XML_ELEMENT))
        if (child.name() == "block")
            read_block(child, file);
}

void StatsBlockManager::read_block(const XMLNode& node, const std::string& file) {
    const auto fault = [&](const std::string& what) {
        faults_.push_back(file + " (" + std::to_string(node.line()) + "): " + what);
    };
    if (!node.has_parameter("name"))
        return fault("a block without a name");
    const std::string name(node.parameter("name"));
    StatsBlock block;
    block.set_name(intern(name));
    for (const XMLNode& variable : node.children(XML_ELEMENT)) {
        if (variable.name() != "var")
            continue;
        if (!variable.has_parameter("name") || !variable.has_parameter("type")) {
            fault("a variable of block " + name + " without name or type");
            continue;
        }
        const auto kind = kind_of(lowered(variable.parameter("type")));
        if (!kind)
            return fault("block " + name + " has a variable of unknown type " +
                         std::string(variable.parameter("type")));
        auto value = make_stats_value(*kind, intern(variable.parameter("name")));
        if (variable.has_parameter("default"))
            set_default(*value, variable.parameter("default"));
        block.add_value(std::move(value));
    }
    block.finish();
    const auto [place, is_new] = prototypes_.try_emplace(block.name(), Prototype{block, file});
    if (!is_new)
        fault("block " + name + " is defined already, in " + place->second.file);
}

const StatsBlockManager::Prototype* StatsBlockManager::find(std::string_view name) const {
    const auto found = prototypes_.find(find_interned(name));
    return found == prototypes_.end() ? nullptr : &found->second;
}

const StatsBlock& StatsBlockManager::prototype(std::string_view name) const {
    const Prototype* const found = find(name);
    return found == nullptr ? empty_block_ : found->block;
}

std::vector<const StatsBlockManager::Prototype*> StatsBlockManager::prototypes() const {
    std::vector<const Prototype*> sorted;
    for (const auto& entry : prototypes_)
        sorted.push_back(&entry.second);
    std::sort(sorted.begin(), sorted.end(), [](const Prototype* a, const Prototype* b) {
        return idstring_text(a->block.name()) < idstring_text(b->block.name());
    });
    return sorted;
}

} // namespace kst
