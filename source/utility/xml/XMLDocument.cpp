#include "source/utility/xml/XMLDocument.h"

#include "source/utility/Errors.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/normalize_path.h"
#include "source/utility/xml/XMLCompiledForm.h"
#include "source/utility/xml/XMLNodeAccess.h"
#include "source/utility/xml/XMLParser.h"

#include <array>
#include <optional>

namespace kst {
namespace {

/// The name of the compiled form: beside the file as its own file system calls it, if there is one there. An absolute
/// path of the host has no other name that leads back to it.
std::string compiled_path_of(const std::string& path) {
    if (!has_leading_separator(path)) {
        std::string beside = full_path(path) + ".bin";
        if (exists(beside))
            return beside;
    }
    return path + ".bin";
}

void add_predefined_entities(std::map<idstring, std::string>& entities) {
    struct Entity {
        std::string_view name, text;
    };
    constexpr std::array<Entity, 5> predefined{{{"lt", "<"}, {"gt", ">"}, {"apos", "'"}, {"quot", "\""}, {"amp", "&"}}};
    for (const Entity& entity : predefined)
        entities[intern(entity.name)] = entity.text;
}

} // namespace

XMLSwitches& xml_switches() {
    static XMLSwitches switches;
    return switches;
}

XMLDocument::XMLDocument() : own_macros_(std::make_unique<XMLMacroTable>()), macros_(own_macros_.get()) {}

XMLDocument::~XMLDocument() = default;

void XMLDocument::clear() {
    assign(XMLNode());
    included_files_.clear();
    passed_over_includes_.clear();
}

void XMLDocument::set_path(const std::string& path) {
    full_path_ = path;
    const std::string normalized = normalize_path(path, /*trailing_separator=*/false, /*keep_leading_separator=*/true);
    const std::size_t separator = normalized.rfind('\\');
    const bool has_directory = separator != std::string::npos;
    directory_ = has_directory ? normalized.substr(0, separator + 1) : std::string();
    file_name_ = has_directory ? normalized.substr(separator + 1) : path;
}

bool XMLDocument::load(const std::string& path) {
    set_path(path);
    if (skip_compiled_form_)
        return load_source(path);
    const std::string compiled_path = compiled_path_of(path);
    if (!exists(compiled_path))
        return load_source(path);
    if (!exists(path))
        return load_compiled(path, compiled_path) || load_source(path);
    if (last_modified(compiled_path) < last_modified(path))
        return load_source(path);
    // A damaged compiled form must not hide a source that can be read.
    try {
        if (load_compiled(path, compiled_path))
            return true;
    } catch (const std::runtime_error&) {
        clear();
        if (!open(path, "r"))
            throw;
    }
    return load_source(path);
}

/// False: it is no compiled form, or an included file is newer than it.
bool XMLDocument::load_compiled(const std::string& path, const std::string& compiled_path) {
    const Archive archive = open(compiled_path, "r");
    if (!archive || !is_compiled_xml(archive))
        return false;
    read_compiled(archive);
    if (!xml_switches().check_included_file_times)
        return true;
    const std::uint64_t compiled_time = last_modified(compiled_path);
    for (const std::string& file : included_files_) {
        if (exists(file) && last_modified(file) > compiled_time) {
            clear();
            return false;
        }
    }
    full_path_ = path;
    return true;
}

bool XMLDocument::load_source(const std::string& path) {
    const Archive source = open(path, "r");
    if (!source)
        return false;
    const bool parsed = parse_archive(source);
    if (parsed && xml_switches().write_compiled_form && !skip_compiled_form_) {
        const bool absolute = has_leading_separator(path);
        Archive compiled = open((absolute ? path : kst::full_path(path)) + ".bin", "w");
        if (compiled)
            write_compiled(compiled);
    }
    return parsed;
}

bool XMLDocument::parse_archive(const Archive& archive) {
    if (archive.size() == 0)
        return false;
    try {
        if (state_)
            return parse_with(archive, *state_);
        XMLLoadState state;
        macros_->clear();
        return parse_with(archive, state);
    } catch (const std::runtime_error&) {
        if (xml_switches().rethrow_errors)
            throw;
        clear();
        return false;
    }
}

bool XMLDocument::parse_with(const Archive& archive, XMLLoadState& state) {
    passed_over_includes_.clear();
    XMLReader reader(archive, detect_xml_encoding(archive));
    const auto bytes = static_cast<std::uint64_t>(archive.size() - archive.position());
    state.source_bytes += bytes;
    state.included_bytes += state.include_depth > 0 ? bytes : 0;
    read_xml_prologue(reader);
    add_predefined_entities(entities_);
    bool had_unknown_entity = false;
    const XMLParseContext context{reader, entities_, had_unknown_entity, *macros_, *this, state};
    XMLParser(context, *this, intern(full_path_)).parse_root();
    return !had_unknown_entity;
}

bool XMLDocument::parse_string(std::string_view text) {
    constexpr const char* name = "#internal_file";
    full_path_ = name;
    const auto size = static_cast<std::int64_t>(text.size());
    return parse_archive(
        Archive(name, std::make_unique<ConstMemoryDataStore>(text.data(), text.size()), 0, size, false));
}

} // namespace kst
