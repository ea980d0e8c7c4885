#pragma once

#include "driver/SetAttributes.h"

#include <string>
#include <string_view>
#include <vector>

namespace kst {
class XMLNode;
}

namespace mosaicer {

class Findings;

/// The macros of a definition, by name without its "@".
using MacroNames = std::vector<std::string_view>;

/// Looks over names and values of an element's attributes: what is unknown, and values that are passed over, read as
/// something else than they say, out of range, or the end of the run. `set` is the full name to tell.
void check_set_attributes(const kst::XMLNode& node, const std::string& set, const MacroNames& macros,
                          Findings& findings);

/// The same for a child element of a set.
void check_entry_attributes(const kst::XMLNode& node, const std::string& set, const MacroNames& macros,
                            Findings& findings);

/// Tells the first macro call that was left standing in a text. True if there is one.
bool check_macro_calls(const kst::XMLNode& node, std::string_view text, const std::string& set,
                       const MacroNames& macros, Findings& findings);

/// What is wrong with the value of an attribute.
struct ValueFault {
    std::string message; ///< empty if nothing is
    std::string suggestion;
};

ValueFault value_fault(std::string_view name, AttributeForm form, const AttributeValues& values,
                       std::string_view value);

/// `"WORD"`, as values stand in messages.
std::string in_quotes(std::string_view word);

} // namespace mosaicer
