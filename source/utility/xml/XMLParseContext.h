#pragma once

#include "source/utility/xml/XMLLimits.h"
#include "source/utility/xml/XMLMacro.h"
#include "source/utility/xml/XMLReader.h"
#include "source/utility/xml/idstring.h"

#include <map>
#include <string>
#include <string_view>

namespace kst {

class XMLDocument;

/// What one outermost load has used, shared by the files that it includes. See xml_limits.
struct XMLLoadState {
    std::size_t include_depth = 0;
    std::size_t includes = 0;
    std::uint64_t included_bytes = 0;
    std::uint64_t source_bytes = 0;
    std::uint64_t expanded_bytes = 0;
    /// Where `rnd` goes on, so that each document has the same row of numbers from its start.
    std::uint32_t random_state = 1;
    /// Elements that are open in the including files.
    std::size_t open_elements = 0;
};

/// What is passed along within one parse. Owns nothing.
struct XMLParseContext {
    XMLReader& reader;
    std::map<idstring, std::string>& entities;
    bool& had_unknown_entity;
    XMLMacroTable& macros;
    XMLDocument& document;
    XMLLoadState& state;

    /// Counts a replacement that made so many bytes; fails with a parse error past the limit.
    void charge_expansion(std::size_t bytes) const;
};

/// The text with every macro applied, as a run of the file's text is: each `@name` whose macro is in the table is
/// replaced by its body until none is left of that name, then the next `@` is looked at. A name that starts no known
/// macro stays. Fails with a parse error at a call with the wrong number of arguments, and where macros that hold
/// themselves would go on for ever.
std::string expand_macros(const XMLMacroTable& table, std::string_view text, const XMLParseContext& context);

} // namespace kst
