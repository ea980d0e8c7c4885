#include "source/utility/xml/XMLNode.h"

#include "source/utility/xml/XMLNodeAccess.h"

#include <algorithm>
#include <type_traits>
#include <utility>
#include <vector>

namespace kst {
namespace {

std::uint32_t grown(std::uint32_t capacity) {
    return std::max<std::uint32_t>(4, capacity * 2);
}

} // namespace

XMLNode XMLNode::element(std::string_view name) {
    XMLNode node;
    node.type_ = XML_ELEMENT;
    node.name_ = intern(name);
    return node;
}

XMLNode XMLNode::text_node(std::string_view text) {
    XMLNode node;
    node.type_ = XML_TEXT;
    node.text_ = node.arena().keep(text);
    return node;
}

XMLNode::XMLNode(const XMLNode& other) {
    copy_tree(other);
}

XMLNode& XMLNode::operator=(const XMLNode& other) {
    if (this != &other)
        assign(other);
    return *this;
}

XMLNode::~XMLNode() {
    if (owns_arena_)
        delete arena_;
}

idstring XMLNode::text_name() {
    static const idstring name = intern("#text");
    return name;
}

XMLArena& XMLNode::arena() {
    if (!arena_) {
        arena_ = new XMLArena;
        owns_arena_ = true;
    }
    return *arena_;
}

void XMLNode::assign(const XMLNode& other) {
    if (&other == this)
        return;
    // The copy is made aside and first, as `other` may stand below this node.
    if (owns_arena_ || !arena_) {
        XMLNode copy(other);
        std::swap(arena_, copy.arena_);
        std::swap(owns_arena_, copy.owns_arena_);
        take_content(copy);
    } else {
        XMLNode* const copy = XMLNodeAccess::make(*arena_);
        copy->copy_tree(other);
        take_content(*copy);
    }
}

/// All but parent and arena, with the children themselves. Both nodes must live in one arena.
void XMLNode::take_content(const XMLNode& other) {
    type_ = other.type_;
    line_ = other.line_;
    name_ = other.name_;
    source_file_ = other.source_file_;
    text_ = other.text_;
    parameters_ = other.parameters_;
    parameter_count_ = other.parameter_count_;
    parameter_capacity_ = other.parameter_capacity_;
    children_ = other.children_;
    child_count_ = other.child_count_;
    child_capacity_ = other.child_capacity_;
    macro_ = other.macro_;
    read_only_ = other.read_only_;
    for (std::uint32_t i = 0; i < child_count_; ++i)
        children_[i]->parent_ = this;
}

/// Everything of a node but its place and its children.
void XMLNode::copy_fields(const XMLNode& other) {
    type_ = other.type_;
    line_ = other.line_;
    name_ = other.name_;
    source_file_ = other.source_file_;
    read_only_ = other.read_only_;
    if (!other.text_.empty())
        text_ = arena().keep(other.text_);
    if (other.macro_)
        macro_ = arena().keep(*other.macro_);
    if (other.parameter_count_ == 0)
        return;
    parameter_count_ = parameter_capacity_ = other.parameter_count_;
    parameters_ = arena().allocate<XMLParameter>(parameter_count_);
    for (std::uint32_t i = 0; i < parameter_count_; ++i) {
        const XMLParameter& from = other.parameters_[i];
        new (parameters_ + i) XMLParameter{from.name, from.value_size, arena_->keep(from.value()).data()};
    }
}

/// Into a fresh node. Keeps its own stack of nodes whose children are still to be copied.
void XMLNode::copy_tree(const XMLNode& other) {
    std::vector<std::pair<const XMLNode*, XMLNode*>> open{{&other, this}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        to->copy_fields(*from);
        if (from->child_count_ == 0)
            continue;
        XMLArena& arena = to->arena();
        const std::uint32_t count = from->child_count_;
        XMLNode** const children = arena.allocate<XMLNode*>(count);
        for (std::uint32_t i = 0; i < count; ++i) {
            children[i] = XMLNodeAccess::make(arena);
            children[i]->parent_ = to;
        }
        // Last child first, so that the copies are made in document order.
        for (std::uint32_t i = count; i > 0; --i)
            open.emplace_back(from->children_[i - 1], children[i - 1]);
        XMLNodeAccess::set_children(*to, children, count);
    }
}

void XMLNode::set_read_only(bool read_only) {
    std::vector<XMLNode*> open{this};
    while (!open.empty()) {
        XMLNode* const node = open.back();
        open.pop_back();
        node->read_only_ = read_only;
        open.insert(open.end(), node->children_, node->children_ + node->child_count_);
    }
}

void XMLNode::set_parameter(idstring name, std::string_view value) {
    if (read_only_)
        return;
    auto* parameter = const_cast<XMLParameter*>(find_parameter(name));
    // A value is never overwritten in place: a caller may still hold it, or hand it in.
    const std::string_view kept = arena().keep(value);
    if (!parameter) {
        if (parameter_count_ == parameter_capacity_) {
            parameter_capacity_ = grown(parameter_capacity_);
            auto* const more = arena_->allocate<XMLParameter>(parameter_capacity_);
            std::copy_n(parameters_, parameter_count_, more);
            parameters_ = more;
        }
        parameter = new (parameters_ + parameter_count_++) XMLParameter{.name = name};
    }
    parameter->value_data = kept.data();
    parameter->value_size = static_cast<std::uint32_t>(kept.size());
}

void XMLNode::remove_parameter(idstring name) {
    const XMLParameter* const found = find_parameter(name);
    if (read_only_ || !found)
        return;
    XMLParameter* const place = parameters_ + (found - parameters_);
    std::copy(place + 1, parameters_ + parameter_count_, place);
    --parameter_count_;
}

XMLNode& XMLNode::insert_child_copy(std::size_t position, const XMLNode& node) {
    XMLNode* const copy = XMLNodeAccess::make(arena());
    copy->copy_tree(node);
    copy->parent_ = this;
    copy->set_read_only(read_only_);
    link_child(std::min<std::size_t>(position, child_count_), copy);
    return *copy;
}

void XMLNode::link_child(std::size_t position, XMLNode* node) {
    if (child_count_ == child_capacity_) {
        child_capacity_ = grown(child_capacity_);
        XMLNode** const more = arena().allocate<XMLNode*>(child_capacity_);
        std::copy_n(children_, child_count_, more);
        children_ = more;
    }
    std::copy_backward(children_ + position, children_ + child_count_, children_ + child_count_ + 1);
    children_[position] = node;
    ++child_count_;
}

bool XMLNode::equals_without_children(const XMLNode& other) const {
    if (type_ != other.type_)
        return false;
    if (type_ == XML_TEXT)
        return text_ == other.text_;
    if (type_ == XML_MACRO)
        return macro_ && other.macro_ && *macro_ == *other.macro_;
    return name_ == other.name_ && std::ranges::equal(parameters(), other.parameters());
}

bool operator==(const XMLNode& a, const XMLNode& b) {
    std::vector<std::pair<const XMLNode*, const XMLNode*>> open{{&a, &b}};
    while (!open.empty()) {
        const auto [left, right] = open.back();
        open.pop_back();
        if (!left->equals_without_children(*right))
            return false;
        if (left->type_ == XML_TEXT || left->type_ == XML_MACRO)
            continue;
        if (left->child_count_ != right->child_count_)
            return false;
        for (std::uint32_t i = left->child_count_; i > 0; --i)
            open.emplace_back(left->children_[i - 1], right->children_[i - 1]);
    }
    return true;
}

void XMLNodeAccess::clear_root(XMLNode& node) {
    const bool read_only = node.read_only_;
    node.assign(XMLNode());
    node.read_only_ = read_only;
}

std::string escape_xml(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        switch (c) {
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '&':
            out += "&amp;";
            break;
        case '\'':
            out += "&apos;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

} // namespace kst
