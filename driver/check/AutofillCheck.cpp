#include "driver/check/AutofillCheck.h"

#include "driver/TextureIndex.h"
#include "driver/autofill.h"
#include "driver/check/AttributeCheck.h"
#include "driver/check/Findings.h"
#include "driver/check/spelling.h"
#include "driver/records/AtlasSetDefinition.h"
#include "driver/records/PathText.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/platform/PathInfo.h"
#include "source/utility/xml/XMLDocument.h"
#include "source/utility/xml/XmlParameters.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace mosaicer {
namespace {

void check_directories(const AtlasSetDefinition& set, const std::vector<std::string>& directories,
                       const kst::XMLNode& node, Findings& findings) {
    const auto tell = [&](std::string message) {
        findings.at(node, set.name, FindingKind::autofill, std::move(message));
    };
    if (set.textures.empty())
        return tell("autofill " + in_quotes(set.autofill) +
                    (std::ranges::any_of(directories, kst::platform::is_directory)
                         ? " holds no texture"
                         : " is no directory of a textures root"));
    // The test is on the text of the path.
    std::set<std::string> others;
    for (const SetTextureEntry& entry : set.textures) {
        const std::string& path = entry.texture->image.file_path;
        const bool inside = std::ranges::any_of(
            directories, [&path](const std::string& directory) { return path.starts_with(directory + "/"); });
        if (!inside)
            others.insert(std::string(directory_of(path)));
    }
    for (const std::string& directory : others)
        tell("autofill " + in_quotes(set.autofill) + " also takes the textures of " + in_quotes(directory) +
             ", because its path begins alike");
}

/// Three numbers and nothing else.
bool is_position(std::string_view text) {
    const std::string single_blanks = [text] {
        std::string copy(text);
        std::ranges::replace_if(
            copy, [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
        return copy;
    }();
    const auto pieces = split_string(single_blanks, ' ');
    return pieces.size() == 3 && std::ranges::all_of(pieces, [](std::string_view piece) {
               return value_fault("position", AttributeForm::decimal, {}, piece).message.empty();
           });
}

void check_position(const kst::XMLNode& record, const std::string& set, const TextureIndex& index, Findings& findings) {
    const std::string name(record.parameter("name"));
    if (index.find(name) == nullptr) {
        const std::string plain = lower_name(name.substr(0, name.rfind('.')));
        findings.at(record, set, FindingKind::texture,
                    "there is no texture " + in_quotes(name) + ": the position is passed over",
                    index.find(plain) != nullptr ? plain : std::string());
    } else if (!is_position(record.parameter("position"))) {
        findings.at(record, set, FindingKind::value,
                    "position " + in_quotes(record.parameter("position")) +
                        " is not three numbers: what is missing counts as 0");
    }
}

void check_positions(const AtlasSetDefinition& set, const TextureIndex& index, Findings& findings) {
    for (const std::string& root : index.unique_roots()) {
        const std::string path = join_path(root, join_path(set.autofill, "lightmap_positions.xml"));
        if (!kst::exists(path))
            continue;
        kst::XMLDocument document;
        document.load(path);
        for (const kst::XMLNode& record : document.children())
            check_position(record, set.name, index, findings);
    }
}

} // namespace

void fill_and_check(AtlasSetDefinition& set, TextureIndex& index, const kst::XMLNode& node, Findings& findings) {
    std::vector<std::string> directories;
    for (const std::string& root : index.unique_roots())
        directories.push_back(kst::find_host_path(join_path(root, set.autofill)));
    try {
        fill_from_directory(set, index);
        check_positions(set, index, findings);
    } catch (const std::runtime_error& failure) {
        findings.at(node, set.name, FindingKind::autofill, std::string(failure.what()) + ": the run ends here");
    }
    check_directories(set, directories, node, findings);
}

} // namespace mosaicer
