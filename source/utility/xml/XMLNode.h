#pragma once

#include "source/utility/xml/XMLArena.h"
#include "source/utility/xml/idstring.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kst {

/// What a node is. Single bits, because children are walked by mask. A node that was never filled has type 0.
enum XMLNodeType : std::int32_t {
    XML_NONE = 0,
    XML_ELEMENT = 1,
    XML_TEXT = 2,
    XML_MACRO = 4,
    XML_ANY = XML_ELEMENT | XML_TEXT | XML_MACRO,
};

/// One attribute of an element.
struct XMLParameter {
    idstring name = 0;
    std::uint32_t value_size = 0;
    const char* value_data = nullptr;

    std::string_view value() const { return {value_data, value_size}; }
    bool operator==(const XMLParameter& other) const { return name == other.name && value() == other.value(); }
};

class XMLChildren;

/// A node of a parsed file: an element with its parameters and children, a run of text, or a macro definition.
///
/// A node that stands on its own (a local, a document) owns the tree below it, with all its memory. Children belong to
/// the tree and are never deleted alone; pointers and references to them, and texts and values handed out, stay good
/// until the root of the tree goes, is assigned to or parsed into. Text is UTF-8.
///
/// Copy, comparison and destruction use no stack in proportion to the depth of a tree.
class XMLNode {
public:
    XMLNode() = default;
    /// A node of type XML_ELEMENT.
    static XMLNode element(std::string_view name);
    /// A node of type XML_TEXT.
    static XMLNode text_node(std::string_view text);
    /// Deep: the copies of the children get the new nodes as parents. The copy itself has none.
    XMLNode(const XMLNode& other);
    XMLNode& operator=(const XMLNode& other);
    ~XMLNode();

    /// Replaces content and children by a deep copy of another node's; this node's parent stays. `other` may stand in
    /// the same tree.
    void assign(const XMLNode& other);

    XMLNodeType type() const { return type_; }
    /// The line on which the element's `<` stood or the text began; 0 for a node that came from no source text.
    std::int32_t line() const { return line_; }
    /// The element's name; "#text" for a text node, "xdefine" for a macro.
    const std::string& name() const { return idstring_text(type_ == XML_TEXT ? text_name() : name_); }
    /// The element's name as a number; 0 for a text node.
    idstring name_id() const { return name_; }
    /// The characters of a text node, else empty.
    std::string_view text() const { return text_; }
    /// Null unless this is a macro node.
    const XMLMacro* macro() const { return macro_; }
    /// The path of the file that the node came from, as that file was asked for.
    const std::string& source_file() const { return idstring_text(source_file_); }
    /// Filled where a child was made by copying (also by an include); null for a node that the parser made.
    const XMLNode* parent() const { return parent_; }

    /// While set, no parameter of this node is added, changed or removed. Set for the whole tree below.
    bool read_only() const { return read_only_; }
    void set_read_only(bool read_only);

    /// In order of first appearance; names are unique.
    std::span<const XMLParameter> parameters() const { return {parameters_, parameter_count_}; }
    /// The value, or `default_value` if there is no such parameter.
    std::string_view parameter(idstring name, std::string_view default_value) const {
        const XMLParameter* const found = find_parameter(name);
        return found ? found->value() : default_value;
    }
    /// The value, or the empty text.
    std::string_view parameter(std::string_view name) const { return parameter(intern(name), {}); }
    bool has_parameter(std::string_view name) const { return find_parameter(intern(name)) != nullptr; }
    /// Null if there is no such parameter.
    const XMLParameter* find_parameter(idstring name) const {
        for (std::uint32_t i = 0; i < parameter_count_; ++i)
            if (parameters_[i].name == name)
                return parameters_ + i;
        return nullptr;
    }
    /// Overwrites the value of the name where it stands, or adds the pair at the end. Nothing if read-only.
    void set_parameter(idstring name, std::string_view value);
    /// Nothing if read-only or not there.
    void remove_parameter(idstring name);

    /// Children of every type.
    std::size_t child_count() const { return child_count_; }
    /// Null for an index that is negative or not below the count.
    const XMLNode* child(std::ptrdiff_t index) const {
        return index >= 0 && index < static_cast<std::ptrdiff_t>(child_count_) ? children_[index] : nullptr;
    }
    XMLNode* child(std::ptrdiff_t index) {
        return index >= 0 && index < static_cast<std::ptrdiff_t>(child_count_) ? children_[index] : nullptr;
    }
    /// The children with a type in the mask, in document order: `for (const XMLNode& child : node.children())`.
    XMLChildren children(std::int32_t mask = XML_ELEMENT) const;

    /// Puts a deep copy at the end, with this node as parent and this node's read-only flag. `node` may stand in the
    /// same tree.
    XMLNode& append_child_copy(const XMLNode& node) { return insert_child_copy(child_count_, node); }
    /// The same, ahead of the child at `position` among children of every type; at the end from the count on.
    XMLNode& insert_child_copy(std::size_t position, const XMLNode& node);

    /// Deep. Compares type, then the text of text nodes, the macro of macro nodes, and of elements name, parameters in
    /// order and children in order.
    friend bool operator==(const XMLNode& a, const XMLNode& b);

private:
    friend struct XMLNodeAccess;

    static idstring text_name();
    XMLArena& arena();
    void copy_fields(const XMLNode& other);
    void copy_tree(const XMLNode& other);
    void take_content(const XMLNode& other);
    void link_child(std::size_t position, XMLNode* node);
    bool equals_without_children(const XMLNode& other) const;

    XMLNodeType type_ = XML_NONE;
    std::int32_t line_ = 0;
    idstring name_ = 0;
    idstring source_file_ = 0;
    std::string_view text_;
    XMLParameter* parameters_ = nullptr;
    std::uint32_t parameter_count_ = 0;
    std::uint32_t parameter_capacity_ = 0;
    XMLNode** children_ = nullptr;
    std::uint32_t child_count_ = 0;
    std::uint32_t child_capacity_ = 0;
    XMLNode* parent_ = nullptr;
    const XMLMacro* macro_ = nullptr;
    /// Where the tree lives. Null for a node on its own that never needed any.
    XMLArena* arena_ = nullptr;
    bool owns_arena_ = false;
    bool read_only_ = false;
};

/// A place among the children of a node, which passes over children whose type has no bit in the mask.
class XMLChildCursor {
public:
    using value_type = XMLNode;
    using reference = const XMLNode&;
    using pointer = const XMLNode*;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::forward_iterator_tag;

    XMLChildCursor() = default;
    /// The first child from `position` on that is in the mask. With mask 0 the position is taken as it is.
    XMLChildCursor(std::size_t position, std::int32_t mask, const XMLNode& node)
        : position_(position), mask_(mask), node_(&node) {
        skip();
    }

    reference operator*() const { return *node_->child(static_cast<std::ptrdiff_t>(position_)); }
    pointer operator->() const { return &**this; }
    XMLChildCursor& operator++() {
        ++position_;
        skip();
        return *this;
    }
    XMLChildCursor operator++(int) {
        const XMLChildCursor before = *this;
        ++*this;
        return before;
    }
    /// Index among the children of every type.
    std::size_t position() const { return position_; }
    bool operator==(const XMLChildCursor& other) const { return position_ == other.position_ && node_ == other.node_; }

private:
    void skip() {
        while (mask_ != 0 && position_ < node_->child_count() && ((**this).type() & mask_) == 0)
            ++position_;
    }

    std::size_t position_ = 0;
    std::int32_t mask_ = 0;
    const XMLNode* node_ = nullptr;
};

/// The range behind XMLNode::children. The node must outlive it.
class XMLChildren {
public:
    XMLChildren(const XMLNode& node, std::int32_t mask) : node_(&node), mask_(mask) {}
    XMLChildCursor begin() const { return {0, mask_, *node_}; }
    XMLChildCursor end() const { return {node_->child_count(), 0, *node_}; }

private:
    const XMLNode* node_;
    std::int32_t mask_;
};

inline XMLChildren XMLNode::children(std::int32_t mask) const {
    return {*this, mask};
}

/// Text as it stands in an XML file: `<`, `>`, `&`, `'` and `"` become "&lt;", "&gt;", "&amp;", "&apos;" and "&quot;".
std::string escape_xml(std::string_view text);

} // namespace kst
