#pragma once

#include "source/utility/xml/XMLNode.h"

#include <new>

namespace kst {

/// How the parser and the reader of the compiled form fill nodes in place: straight in the tree's arena, with lists of
/// exact size and no copy. Nobody else needs it.
struct XMLNodeAccess {
    static XMLArena& arena(XMLNode& node) { return node.arena(); }

    /// An empty node in the same tree as `tree`, not yet a child of anything.
    static XMLNode* make(XMLArena& arena) {
        XMLNode* const node = new (arena.allocate<XMLNode>(1)) XMLNode;
        node->arena_ = &arena;
        return node;
    }

    static void set_type(XMLNode& node, XMLNodeType type) { node.type_ = type; }
    static void set_name(XMLNode& node, idstring name) { node.name_ = name; }
    static void set_line(XMLNode& node, std::int32_t line) { node.line_ = line; }
    static void set_source_file(XMLNode& node, idstring path) { node.source_file_ = path; }
    /// The text must live in the node's arena.
    static void set_text(XMLNode& node, std::string_view text) { node.text_ = text; }
    static void set_macro(XMLNode& node, const XMLMacro* macro) { node.macro_ = macro; }
    static void set_parent(XMLNode& node, XMLNode* parent) { node.parent_ = parent; }

    /// Fills a fresh node with a deep copy.
    static void copy_into(XMLNode& fresh, const XMLNode& from) { fresh.copy_tree(from); }

    static void set_parameters(XMLNode& node, XMLParameter* parameters, std::size_t count) {
        node.parameters_ = parameters;
        node.parameter_count_ = node.parameter_capacity_ = static_cast<std::uint32_t>(count);
    }
    static void set_children(XMLNode& node, XMLNode** children, std::size_t count) {
        node.children_ = children;
        node.child_count_ = node.child_capacity_ = static_cast<std::uint32_t>(count);
    }

    /// Gives the node a new, empty arena, and only then frees the old one. Content becomes that of a fresh node; the
    /// read-only flag stays. Only for the root of a tree.
    static void clear_root(XMLNode& node);
};

} // namespace kst
