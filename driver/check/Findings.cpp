#include "driver/check/Findings.h"

#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/xml/XMLNode.h"

#include <algorithm>
#include <string_view>
#include <tuple>

namespace mosaicer {
namespace {

/// Names of files and what a definition says may hold line breaks, and orders to a terminal.
std::string without_control_characters(std::string_view text) {
    constexpr std::string_view hex_digits = "0123456789ABCDEF";
    std::string plain;
    plain.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F)
            plain += c;
        else
            plain.append("\\x").append(1, hex_digits[byte >> 4U]).append(1, hex_digits[byte & 0xFU]);
    }
    return plain;
}

} // namespace

std::string finding_text(const Finding& finding) {
    std::string text = finding.file + ":" + std::to_string(finding.line) + ": " + std::string(word_of(finding.kind)) +
                       ": " + finding.message;
    if (!finding.suggestion.empty())
        text += "; did you mean \"" + finding.suggestion + "\"?";
    return without_control_characters(text);
}

void Findings::at(const kst::XMLNode& node, const std::string& set, FindingKind kind, std::string message,
                  std::string suggestion) {
    list_.push_back({host_path(node.source_file()), node.line(), kind, std::move(message), std::move(suggestion), set});
}

const std::string& Findings::host_path(const std::string& file) {
    const auto [known, is_new] = host_paths_.try_emplace(file);
    if (is_new)
        known->second = kst::find_host_path(file);
    return known->second;
}

std::vector<Finding> Findings::sorted() && {
    std::ranges::stable_sort(list_, [](const Finding& a, const Finding& b) {
        return std::tie(a.file, a.line, a.kind) < std::tie(b.file, b.line, b.kind);
    });
    std::vector<Finding> unique;
    for (Finding& finding : list_) {
        // Equal ones have equal keys, so they are not far apart.
        const auto is_same = [&finding](const Finding& other) { return other == finding; };
        const auto same_place = std::find_if(unique.rbegin(), unique.rend(), [&finding](const Finding& other) {
            return std::tie(other.file, other.line, other.kind) != std::tie(finding.file, finding.line, finding.kind);
        });
        if (std::none_of(unique.rbegin(), same_place, is_same))
            unique.push_back(std::move(finding));
    }
    return unique;
}

} // namespace mosaicer
