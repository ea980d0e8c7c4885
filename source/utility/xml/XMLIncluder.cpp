#include "source/utility/xml/XMLIncluder.h"

#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/normalize_path.h"
#include "source/utility/xml/XMLDocument.h"
#include "source/utility/xml/XMLNodeAccess.h"
#include "source/utility/xml/XMLWords.h"

#include <algorithm>
#include <iterator>

namespace kst {
namespace {

/// Cuts the last component off a directory with a separator at its end. The only one there is stays.
std::string parent_directory(const std::string& directory) {
    if (directory.size() < 2)
        return directory;
    const std::size_t separator = directory.rfind('\\', directory.size() - 2);
    return separator == std::string::npos ? directory : directory.substr(0, separator + 1);
}

std::string normalized_in(const std::string& base, std::string_view relative) {
    const std::string path = base + std::string(relative);
    // A leading separator is what tells an absolute path of the host from one below the current directory.
    return normalize_path(path, /*trailing_separator=*/false, /*keep_leading_separator=*/true);
}

/// The pointer of an include as a path: bare, without its "xpointer(" and ")", or for an empty one all children of
/// the root.
std::string plain_pointer(std::string pointer, const std::string& root_name) {
    constexpr std::string_view wrapper = "xpointer";
    std::erase_if(pointer, [](char c) { return c == ' ' || c == '\t' || c == '\n'; });
    if (pointer.empty())
        return "/" + root_name + "/*";
    if (!pointer.starts_with(wrapper))
        return pointer;
    const std::size_t inner = wrapper.size() + 1;
    return pointer.size() > inner ? pointer.substr(inner, pointer.size() - inner - 1) : std::string();
}

void select_below(const XMLNode& node, std::string_view path, std::vector<const XMLNode*>& out_nodes) {
    if (path.empty() || path == "/") {
        out_nodes.push_back(&node);
        return;
    }
    path.remove_prefix(path.starts_with('/') ? 1 : 0);
    const std::size_t end = path.find('/');
    const std::string_view step = path.substr(0, end);
    const std::string_view rest = end == std::string_view::npos ? std::string_view() : path.substr(end);
    for (const XMLNode& child : node.children(XML_ELEMENT | XML_MACRO))
        if (step == "*" || step == child.name())
            select_below(child, rest, out_nodes);
}

} // namespace

std::string resolve_include_path(const XMLDocument& document, std::string_view href) {
    std::string base = document.directory();
    std::string_view relative = href;
    if (has_leading_separator(relative)) {
        base.clear();
    } else {
        while (relative.starts_with("..")) {
            relative.remove_prefix(std::min<std::size_t>(3, relative.size()));
            base = parent_directory(base);
        }
    }
    const std::size_t hash = relative.find('#');
    if (hash == std::string_view::npos)
        return normalized_in(base, relative);
    return normalized_in(base, relative.substr(0, hash)) + std::string(relative.substr(hash));
}

void select_xpointer(const XMLDocument& document, std::string_view pointer, std::vector<const XMLNode*>& out_nodes) {
    if (!pointer.starts_with('/'))
        return;
    pointer.remove_prefix(1);
    const std::size_t end = pointer.find('/');
    if (pointer.substr(0, end) != document.name())
        return;
    select_below(document, end == std::string_view::npos ? std::string_view() : pointer.substr(end), out_nodes);
}

/// Where the rule of resolve_include_path finds no file because ".." left the last directory that the path has, the
/// href is taken as the disk would take it.
std::string XMLIncluder::find_file(std::string_view href) const {
    std::string path = resolve_include_path(context_.document, href);
    if (!href.starts_with("..") || VirtualFileSystem::instance() == nullptr)
        return path;
    const std::size_t hash = href.find('#');
    if (exists(path.substr(0, path.find('#'))))
        return path;
    std::string base = context_.document.directory();
    std::string_view relative = href.substr(0, hash);
    while (relative.starts_with("..") && !base.empty()) {
        relative.remove_prefix(std::min<std::size_t>(3, relative.size()));
        const std::string parent = parent_directory(base);
        base = parent == base ? std::string() : parent;
    }
    const std::string on_disk = normalized_in(base, relative);
    if (!exists(on_disk))
        return path;
    return hash == std::string_view::npos ? on_disk : on_disk + std::string(href.substr(hash));
}

void XMLIncluder::include(const XMLNode& element, XMLNode& parent, std::vector<XMLNode*>& children) {
    if (element.parameter(xml_words().parse, {}) == "text")
        return pass_over(element, {}, XMLIncludeFault::not_parsed);
    const std::string reference = find_file(element.parameter(xml_words().href, {}));
    const std::size_t hash = reference.find('#');
    const std::string path = reference.substr(0, hash);
    XMLDocument included;
    std::set<std::string>& files = context_.document.included_files_;
    if (!load(included, path)) {
        files.insert(path);
        // A tree without a root is no tree; with one, an entity was unknown.
        const bool missing = included.type() == XML_NONE;
        return pass_over(element, path, missing ? XMLIncludeFault::missing : XMLIncludeFault::unknown_entity);
    }
    auto& passed_over = context_.document.passed_over_includes_;
    std::ranges::move(included.passed_over_includes_, std::back_inserter(passed_over));
    files.insert(included.included_files_.begin(), included.included_files_.end());
    files.insert(path);
    const std::string pointer = hash == std::string::npos ? std::string() : reference.substr(hash + 1);
    std::vector<const XMLNode*> selected;
    select_xpointer(included, plain_pointer(pointer, included.name()), selected);
    // An included root without children is empty on purpose; a pointer is written to select something.
    if (selected.empty() && !pointer.empty())
        pass_over(element, path, XMLIncludeFault::nothing_selected);
    for (const XMLNode* const node : selected)
        insert(*node, parent, children);
}

void XMLIncluder::pass_over(const XMLNode& element, const std::string& path, XMLIncludeFault fault) {
    context_.document.passed_over_includes_.push_back(
        {element.source_file(), element.line(), std::string(element.parameter(xml_words().href, {})), path, fault});
}

bool XMLIncluder::load(XMLDocument& included, const std::string& path) {
    XMLLoadState& state = context_.state;
    if (state.include_depth >= xml_limits::most_include_depth)
        context_.reader.fail("Includes nested deeper than " + std::to_string(xml_limits::most_include_depth));
    if (++state.includes > xml_limits::most_includes)
        context_.reader.fail("More than " + std::to_string(xml_limits::most_includes) + " files included");
    if (state.included_bytes > xml_limits::most_included_bytes)
        context_.reader.fail("More than " + std::to_string(xml_limits::most_included_bytes) + " bytes included");
    included.skip_compiled_form_ = true;
    included.entities_ = context_.entities;
    included.own_macros_.reset();
    included.macros_ = &context_.macros;
    included.state_ = &state;
    ++state.include_depth;
    const bool loaded = included.load(path);
    --state.include_depth;
    return loaded;
}

void XMLIncluder::insert(const XMLNode& node, XMLNode& parent, std::vector<XMLNode*>& children) {
    if (node.type() == XML_MACRO) {
        context_.macros.add(*node.macro());
        return;
    }
    XMLNode* const copy = XMLNodeAccess::make(XMLNodeAccess::arena(parent));
    XMLNodeAccess::copy_into(*copy, node);
    XMLNodeAccess::set_parent(*copy, &parent);
    children.push_back(copy);
}

} // namespace kst
