#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace mosaicer {

/// What a finding is about, in the order in which findings of one line stand.
enum class FindingKind : std::uint8_t {
    definition,
    include,
    macro,
    text,
    element,
    attribute,
    value,
    ignored,
    root,
    autofill,
    texture,
    size,
    packing,
    usage,
    format,
    filter,
    output,
    header,
    pixels,
    collision,
    name_case,
    unused,
};

/// The word of each kind in reports, by its number.
constexpr std::array<std::string_view, 22> finding_words{
    "definition", "include",  "macro",   "text",      "element", "attribute", "value",  "ignored",
    "root",       "autofill", "texture", "size",      "packing", "usage",     "format", "filter",
    "output",     "header",   "pixels",  "collision", "case",    "unused"};

constexpr std::string_view word_of(FindingKind kind) {
    return finding_words[static_cast<std::size_t>(kind)];
}
static_assert(word_of(FindingKind::unused) == "unused");

/// Something that a run would pass over, or fail on late.
struct Finding {
    std::string file;      ///< a host path: of the definition, of a file that it includes, or of a texture
    std::int32_t line = 0; ///< 0 where the file has no lines
    FindingKind kind = FindingKind::definition;
    std::string message;
    std::string suggestion; ///< what to write instead; empty if there is nothing near
    std::string set;        ///< full name of the set concerned, or empty

    bool operator==(const Finding&) const = default;
};

/// "FILE:LINE: KIND: MESSAGE", and the suggestion as a question: always one line, with control characters as \xNN.
std::string finding_text(const Finding& finding);

} // namespace mosaicer
