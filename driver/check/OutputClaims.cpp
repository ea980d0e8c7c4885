#include "driver/check/OutputClaims.h"

#include "driver/check/AttributeCheck.h"
#include "driver/check/Findings.h"
#include "driver/records/PathText.h"
#include "source/utility/xml/XMLNode.h"

#include <filesystem>

namespace mosaicer {

void OutputClaims::claim(const std::string& path, const kst::XMLNode& node, const std::string& set) {
    // Names are joined to the output root by a slash, however they begin.
    const std::string relative = join_path({}, path).substr(1);
    const std::string normal = std::filesystem::path(relative).lexically_normal().generic_string();
    if (normal.starts_with(".."))
        return findings_.at(node, set, FindingKind::output, in_quotes(normal) + " lies outside of the output root");
    const auto [claim, is_new] = owners_.try_emplace(normal, Owner{&node, set});
    if (is_new)
        return;
    const Owner& owner = claim->second;
    findings_.at(node, set, FindingKind::output,
                 in_quotes(normal) + " is written over that of set " + in_quotes(owner.set) + " (" +
                     findings_.host_path(owner.node->source_file()) + ":" + std::to_string(owner.node->line()) + ")");
}

} // namespace mosaicer
