#pragma once

#include "source/utility/xml/XMLDocument.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace kst {

/// The tree in one line: `a{b="1"}[#text"x" @m($v)=body]`. Lines are shown as `a:3` on request.
inline std::string show(const XMLNode& node, bool lines = false) {
    std::string out = node.type() == XML_TEXT ? "" : node.name();
    if (node.type() == XML_TEXT)
        out += '"' + std::string(node.text()) + '"';
    if (node.type() == XML_MACRO) {
        out = node.macro()->name;
        for (const std::string& parameter : node.macro()->parameters)
            out += parameter;
        return out + (node.macro()->is_expression ? "~" : "=") + node.macro()->body;
    }
    if (lines)
        out += std::string(":").append(std::to_string(node.line()));
    for (const XMLParameter& parameter : node.parameters())
        out.append(" ").append(idstring_text(parameter.name)).append("='").append(parameter.value()).append("'");
    if (node.child_count() == 0)
        return out;
    std::string separator = " [";
    for (const XMLNode& child : node.children(XML_ANY))
        out += std::exchange(separator, " ") + show(child, lines);
    return out + "]";
}

/// The tree of the text, or the error that parsing it throws; behind an unknown entity stands a "?".
inline std::string parsed(std::string_view text, bool lines = false) {
    XMLDocument document;
    try {
        const bool whole = document.parse_string(text);
        return show(document, lines) + (whole ? "" : "?");
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

} // namespace kst
