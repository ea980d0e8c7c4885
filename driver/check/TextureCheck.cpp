#include "driver/check/TextureCheck.h"

#include "driver/check/AttributeCheck.h"
#include "driver/check/Findings.h"
#include "driver/records/PathText.h"

namespace mosaicer {

void TextureCheck::look_at_walk() {
    if (seen_walks_ == index_.walk().number)
        return;
    seen_walks_ = index_.walk().number;
    for (const auto& [key, texture] : index_.records())
        found_.insert(texture->image.file_path);
    for (const IndexFinding& finding : index_.walk().findings)
        tell(finding);
}

void TextureCheck::tell(const IndexFinding& finding) {
    const std::string name = finding.path.substr(finding.path.find_last_of('/') + 1);
    const auto add = [&](FindingKind kind, std::string message, std::string suggestion = {}) {
        findings_.add({finding.path, 0, kind, std::move(message), std::move(suggestion), {}});
    };
    switch (finding.fault) {
    case IndexFault::unreadable:
        // Most readers begin with the path, which stands ahead of the finding anyway.
        return add(FindingKind::header, "the texture is left out: its header cannot be read (" + finding.text + ")");
    case IndexFault::collision:
        return add(FindingKind::collision,
                   "the texture is left out: " + in_quotes(finding.other) + " has the same name");
    case IndexFault::twin:
        return add(FindingKind::collision, "the texture is left out: beside it stands " + in_quotes(finding.other));
    case IndexFault::extension_case:
        return add(FindingKind::name_case, "the file is no texture: its extension must be in lower case",
                   name.substr(0, name.rfind('.')) + lower_name(name.substr(name.rfind('.'))));
    case IndexFault::directory_circle:
        return add(FindingKind::root, "the directory leads back to one above it and is passed over");
    }
}

void TextureCheck::tell_unused() {
    for (const std::string& path : found_)
        if (!used_.contains(path))
            findings_.add({path, 0, FindingKind::unused, "the texture is used by no set", {}, {}});
}

} // namespace mosaicer
