#include "script/runtime/ScriptXMLNode.h"

#include "script/runtime/ScriptMap.h"
#include "script/runtime/ScriptVector.h"
#include "script/runtime/callbacks.h"

namespace kst::script {

void ScriptXMLNode::bind(StaticMemberSet<ScriptXMLNode>& members) {
    members.method<&ScriptXMLNode::name>("name");
    members.method<&ScriptXMLNode::text>("text");
    members.method<&ScriptXMLNode::line>("line");
    members.method<&ScriptXMLNode::has_parameter>("has_parameter");
    members.method<&ScriptXMLNode::parameter>("parameter", "");
    members.method<&ScriptXMLNode::parameter_map>("parameter_map");
    members.method<&ScriptXMLNode::num_children>("num_children");
    members.method<&ScriptXMLNode::child>("child");
    members.method<&ScriptXMLNode::children>("children");
    members.method<&ScriptXMLNode::for_each>("for_each");
    members.method<&ScriptXMLNode::iterator>("iterator");
}

ScriptXMLNode::~ScriptXMLNode() {
    if (root_.to_boolean())
        root().below_.erase(node_);
}

const XMLNode& ScriptXMLNode::node() const {
    if (!root_.is_void() && !root_.to_boolean())
        throw_already_destroyed();
    return *node_;
}

ScriptXMLNode& ScriptXMLNode::root() {
    return root_.is_void() ? *this : static_cast<ScriptXMLNode&>(*LibraryHelper::CppClass::object_of(root_));
}

ScriptValue ScriptXMLNode::value_of(const XMLNode& node) {
    ScriptXMLNode& top = root();
    if (&node == top.node_)
        return top.value();
    const auto known = top.below_.find(&node);
    if (known != top.below_.end())
        return known->second->value();
    ScriptValue made = make_script_owned<ScriptXMLNode>(node, top);
    top.below_[&node] = static_cast<ScriptXMLNode*>(LibraryHelper::CppClass::object_of(made));
    return made;
}

ScriptValue ScriptXMLNode::child(int index) {
    const XMLNode* const found = node().child(index);
    return found == nullptr ? ScriptValue() : value_of(*found);
}

ScriptValue ScriptXMLNode::parameter_map() const {
    ScriptMap map;
    for (const XMLParameter& parameter : node().parameters())
        map.insert(id_value(parameter.name), string_value(std::string(parameter.value())));
    return make_script_owned<ScriptMap>(map);
}

ScriptValue ScriptXMLNode::children() {
    ScriptVector vector;
    for (const XMLNode& child : node().children())
        vector.push_back(value_of(child));
    return make_script_owned<ScriptVector>(vector);
}

void ScriptXMLNode::for_each(const std::string& name, const ScriptValue& function) {
    // By position: the function may see the tree's root go, which `node` then tells.
    for (std::size_t i = 0; i < node().child_count(); ++i) {
        const XMLNode& child = *node().child(static_cast<std::ptrdiff_t>(i));
        if (child.type() != XML_ELEMENT || child.name() != name)
            continue;
        const ScriptValue argument = value_of(child);
        call_back(function, {&argument, 1});
    }
}

ScriptValue ScriptXMLNode::iterator() {
    node();
    return make_script_owned<ScriptXMLNodeIterator>(*this);
}

ScriptXMLNodeIterator::ScriptXMLNodeIterator(ScriptXMLNode& parent)
    : parent_(parent), keeps_parent_(parent.value()), cursor_(0, XML_ELEMENT, parent.node()) {}

ScriptValue ScriptXMLNodeIterator::next() {
    if (!keeps_parent_.to_boolean())
        throw_already_destroyed();
    const XMLNode& node = parent_.node();
    if (!first_ && cursor_.position() < node.child_count())
        ++cursor_;
    first_ = false;
    return cursor_.position() < node.child_count() ? parent_.value_of(*cursor_) : ScriptValue();
}

} // namespace kst::script
