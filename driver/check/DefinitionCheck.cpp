#include "driver/check/DefinitionCheck.h"

#include "driver/check/AttributeCheck.h"
#include "driver/check/AutofillCheck.h"
#include "driver/check/Findings.h"
#include "driver/check/SetCheck.h"
#include "driver/check/TextureCheck.h"
#include "driver/check/spelling.h"
#include "driver/records/PathText.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/platform/PathInfo.h"
#include "source/utility/xml/XMLDocument.h"
#include "source/utility/xml/XmlParameters.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>

namespace mosaicer {
namespace {

/// The beginning of a text, in one line.
std::string first_words(std::string_view text) {
    constexpr std::size_t most_bytes = 40;
    constexpr std::string_view white_space = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(white_space), text.size()));
    std::string words(text.substr(0, std::min(text.find_first_of("\r\n"), most_bytes)));
    words.erase(words.find_last_not_of(white_space) + 1);
    return words;
}

/// A parse error is "FILE (LINE): MESSAGE"; any other text is told of the definition as a whole.
Finding parse_finding(const std::string& text, const std::string& definition_path, Findings& findings) {
    Finding finding{definition_path, 0, FindingKind::definition, text, {}, {}};
    const std::size_t close = text.find("): ");
    const std::size_t open = text.rfind(" (", close);
    if (close == std::string::npos || open == std::string::npos)
        return finding;
    const char* const number = text.data() + open + 2;
    std::int32_t line = 0;
    if (std::from_chars(number, text.data() + close, line).ptr != text.data() + close)
        return finding;
    // The parser's names have no separator ahead.
    const bool is_absolute = definition_path.starts_with('/') && !text.starts_with('/');
    finding.file = findings.host_path((is_absolute ? "/" : "") + text.substr(0, open));
    finding.line = line;
    finding.message = std::string(trim_blanks(std::string_view(text).substr(close + 3)));
    return finding;
}

void collect_macros(const kst::XMLNode& node, MacroNames& names) {
    for (const kst::XMLNode& child : node.children(kst::XML_ELEMENT | kst::XML_MACRO)) {
        if (child.type() == kst::XML_ELEMENT)
            collect_macros(child, names);
        else if (child.macro() != nullptr)
            names.push_back(std::string_view(child.macro()->name).substr(1));
    }
}

/// The first thing in a text that looks like an entity and was left standing: "&nosuch;".
std::optional<std::string> entity_in(std::string_view text) {
    for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
        const std::size_t end = text.find_first_of("&; \t\n<>", at + 1);
        if (end != std::string_view::npos && text[end] == ';' && end > at + 1)
            return std::string(text.substr(at, end + 1 - at));
    }
    return std::nullopt;
}

bool holds_set(const kst::XMLNode& node) {
    const auto children = node.children();
    return is_set_element(node) || std::any_of(children.begin(), children.end(), holds_set);
}

/// The walk over the elements, as the reader takes it.
class DefinitionWalkCheck {
public:
    DefinitionWalkCheck(const std::string& textures_root, const kst::XMLDocument& definition, Findings& findings)
        : findings_(findings),
          index_(kst::find_host_path(textures_root), make_source_texture_from_header),
          textures_(index_, findings),
          sets_(findings) {
        collect_macros(definition, macros_);
    }

    void check(const kst::XMLNode& root) {
        check_element(AtlasSetDefinition{}, root);
        if (holds_set(root))
            textures_.tell_unused();
    }

    void check_entities(const kst::XMLNode& node) {
        for (const kst::XMLParameter& parameter : node.parameters())
            tell_entity(node, parameter.value());
        for (const kst::XMLNode& child : node.children(kst::XML_ELEMENT | kst::XML_TEXT)) {
            if (child.type() == kst::XML_TEXT)
                tell_entity(child, child.text());
            else
                check_entities(child);
        }
    }

private:
    void check_element(const AtlasSetDefinition& parent, const kst::XMLNode& node);
    void check_name(const AtlasSetDefinition& parent, const kst::XMLNode& node, const std::string& set);
    void check_roots(const kst::XMLNode& node, const TextureIndex::Roots& before, const std::string& set);
    void check_texts(const kst::XMLNode& node, const std::string& set);
    void check_lone_element(const kst::XMLNode& node);
    bool tell_misspelt_sets(const kst::XMLNode& node);
    void check_set(AtlasSetDefinition& set, const kst::XMLNode& node);
    void check_entry(SetUnderCheck& checked, const kst::XMLNode& node);
    void tell_missing(const kst::XMLNode& node, const std::string& name, const std::string& set);
    void tell_entity(const kst::XMLNode& node, std::string_view text);

    Findings& findings_;
    TextureIndex index_;
    TextureCheck textures_;
    SetCheck sets_;
    MacroNames macros_;
};

void DefinitionWalkCheck::tell_entity(const kst::XMLNode& node, std::string_view text) {
    if (const auto entity = entity_in(text))
        findings_.at(node, {}, FindingKind::definition,
                     "unknown entity " + in_quotes(*entity) +
                         " stays as it is: there are &lt; &gt; &amp; &apos; and &quot;");
}

void DefinitionWalkCheck::check_element(const AtlasSetDefinition& parent, const kst::XMLNode& node) {
    if (!holds_set(node))
        return check_lone_element(node);
    const TextureIndex::Roots roots = index_.roots();
    // What cannot be read is an unknown keyword, which the look at the values tells.
    AtlasSetDefinition set =
        read_set_attributes(parent, node, index_, [](const SetAttribute&, const std::runtime_error&) {});
    check_set_attributes(node, set.name, macros_, findings_);
    check_roots(node, roots, set.name);
    check_name(parent, node, set.name);
    check_texts(node, set.name);
    if (is_set_element(node))
        check_set(set, node);
    else
        for (const kst::XMLNode& child : node.children())
            check_element(set, child);
    index_.restore_roots(roots);
}

void DefinitionWalkCheck::check_lone_element(const kst::XMLNode& node) {
    if (!tell_misspelt_sets(node))
        findings_.at(node, {}, FindingKind::element,
                     "there is no <atlas> and no <texture_set> in <" + node.name() + ">: it makes nothing");
}

/// True if there is one.
bool DefinitionWalkCheck::tell_misspelt_sets(const kst::XMLNode& node) {
    const std::string_view meant = nearest_word(node.name(), {"atlas", "texture_set"});
    if (!meant.empty()) {
        findings_.at(node, {}, FindingKind::element, "<" + node.name() + "> is no set: it makes nothing",
                     std::string(meant));
        return true;
    }
    bool told = false;
    for (const kst::XMLNode& child : node.children())
        told |= tell_misspelt_sets(child);
    return told;
}

void DefinitionWalkCheck::check_name(const AtlasSetDefinition& parent, const kst::XMLNode& node,
                                     const std::string& set) {
    if (!node.parameter("name").empty())
        return;
    if (!parent.name.empty())
        findings_.at(node, set, FindingKind::value,
                     "<" + node.name() + "> has no name: its full name is " + in_quotes(set));
    else if (is_set_element(node))
        findings_.at(node, set, FindingKind::value,
                     "<" + node.name() + "> has no name: it is written into the output root itself");
}

void DefinitionWalkCheck::check_roots(const kst::XMLNode& node, const TextureIndex::Roots& before,
                                      const std::string& set) {
    const TextureIndex::Roots& now = index_.roots();
    for (std::size_t slot = 0; slot < now.size(); ++slot)
        if (now[slot] != before[slot] && !kst::platform::is_directory(now[slot]))
            findings_.at(node, set, FindingKind::root, "textures root " + in_quotes(now[slot]) + " is no directory");
}

void DefinitionWalkCheck::check_texts(const kst::XMLNode& node, const std::string& set) {
    for (const kst::XMLNode& text : node.children(kst::XML_TEXT))
        if (!check_macro_calls(text, text.text(), set, macros_, findings_))
            findings_.at(text, set, FindingKind::text, "text is never read: " + in_quotes(first_words(text.text())));
}

void DefinitionWalkCheck::check_set(AtlasSetDefinition& set, const kst::XMLNode& node) {
    SetUnderCheck checked{.node = node, .set = std::move(set), .entry_nodes = {}};
    if (!checked.set.autofill.empty())
        fill_and_check(checked.set, index_, node, findings_);
    index_.ensure_built();
    textures_.look_at_walk();
    checked.entry_nodes.assign(checked.set.textures.size(), &node);
    for (const kst::XMLNode& child : node.children())
        check_entry(checked, child);
    for (const SetTextureEntry& entry : checked.set.textures)
        textures_.use(*entry.texture);
    sets_.check(checked);
}

void DefinitionWalkCheck::check_entry(SetUnderCheck& checked, const kst::XMLNode& node) {
    const std::string& set = checked.set.name;
    const std::size_t told = findings_.size();
    if (is_set_element(node))
        findings_.at(node, set, FindingKind::element,
                     "<" + node.name() + "> stands inside of a set, where it is read as one texture");
    check_entry_attributes(node, set, macros_, findings_);
    check_texts(node, set);
    const auto inner = node.children();
    if (inner.begin() != inner.end())
        findings_.at(node, set, FindingKind::element, "what stands inside of <" + node.name() + "> is never read");
    const std::string name = lower_name(node.parameter("name"));
    if (index_.find(name) == nullptr) {
        checked.is_complete = false;
        return tell_missing(node, name, set);
    }
    try {
        const SetTextureEntry entry = read_set_entry(node, checked.set, index_);
        add_groups(node, *entry.texture);
        checked.set.textures.push_back(entry);
        checked.entry_nodes.push_back(&node);
    } catch (const std::runtime_error& failure) {
        checked.is_complete = false;
        textures_.use(*index_.find(name));
        if (findings_.size() == told)
            findings_.at(node, set, FindingKind::value, std::string(failure.what()) + ": the run ends here");
    }
}

/// The name may hold a directory or an extension, which the index knows nothing of.
void DefinitionWalkCheck::tell_missing(const kst::XMLNode& node, const std::string& name, const std::string& set) {
    if (name.empty())
        return findings_.at(node, set, FindingKind::texture,
                            "<" + node.name() + "> names no texture: the run ends here");
    const std::size_t slash = name.find_last_of("/\\");
    const std::string file = slash == std::string::npos ? name : name.substr(slash + 1);
    for (const std::string& base : {file, file.substr(0, file.rfind('.'))})
        if (index_.find(base) != nullptr)
            return findings_.at(node, set, FindingKind::texture,
                                "there is no texture " + in_quotes(name) +
                                    ": names stand without directory and extension; the run ends here",
                                base);
    std::vector<std::string_view> names;
    names.reserve(index_.records().size());
    for (const auto& [key, texture] : index_.records())
        names.push_back(key);
    findings_.at(node, set, FindingKind::texture, "there is no texture " + in_quotes(name) + ": the run ends here",
                 std::string(nearest_word(name, names)));
}

std::string_view text_of(kst::XMLIncludeFault fault) {
    switch (fault) {
    case kst::XMLIncludeFault::missing:
        return "is not found or empty";
    case kst::XMLIncludeFault::unknown_entity:
        return "holds an unknown entity, which counts as not found";
    case kst::XMLIncludeFault::nothing_selected:
        return "has nothing that its pointer selects";
    case kst::XMLIncludeFault::not_parsed:
        break;
    }
    return "is not read, because of parse=\"text\"";
}

void check_includes(const kst::XMLDocument& definition, Findings& findings) {
    for (const kst::XMLPassedOverInclude& include : definition.passed_over_includes())
        findings.add({findings.host_path(include.source_file),
                      include.line,
                      FindingKind::include,
                      "included file " + in_quotes(include.href) + " " + std::string(text_of(include.fault)) +
                          ": it adds nothing",
                      {},
                      {}});
}

void check_document(const std::string& textures_root, const std::string& definition_path, Findings& findings) {
    kst::XMLDocument definition;
    const bool is_whole = definition.load(definition_path);
    if (!is_whole && definition.type() == kst::XML_NONE)
        return findings.add({definition_path,
                             0,
                             FindingKind::definition,
                             "the definition is not found or empty: a run makes nothing and says nothing",
                             {},
                             {}});
    check_includes(definition, findings);
    if (!kst::platform::is_directory(kst::find_host_path(textures_root)))
        findings.add({textures_root, 0, FindingKind::root, "the textures root is no directory", {}, {}});
    DefinitionWalkCheck walk(textures_root, definition, findings);
    if (!is_whole)
        walk.check_entities(definition);
    walk.check(definition);
}

} // namespace

std::vector<Finding> check_definition(const std::string& textures_root, const std::string& definition_path) {
    Findings findings;
    // The arguments as the tool takes them.
    const std::string path(trim_blanks(definition_path));
    try {
        check_document(join_path(trim_blanks(textures_root), {}), path, findings);
    } catch (const std::runtime_error& failure) {
        findings.add(parse_finding(failure.what(), path, findings));
    }
    return std::move(findings).sorted();
}

} // namespace mosaicer
