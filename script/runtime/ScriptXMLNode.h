#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "script/binding/bind.h"
#include "source/utility/xml/XMLDocument.h"

namespace kst::script {

/// A node of an XML tree as scripts see it. Nodes that a script reaches from one root are each one object, as long as a
/// value of it lives; the root stays as long as any of them.
///
/// Where the tree belongs to the host, so does the ScriptXMLNode of its root, and it must go before the tree does: the
/// nodes reached from it are dead from then on.
class ScriptXMLNode : public Bound<ScriptXMLNode> {
public:
    static constexpr std::string_view script_name = "XMLNode";
    static void bind(StaticMemberSet<ScriptXMLNode>& members);

    /// The root of what scripts may reach. Not owned.
    explicit ScriptXMLNode(const XMLNode& node) : node_(&node) {}
    /// A node below a root.
    ScriptXMLNode(const XMLNode& node, ScriptXMLNode& root) : node_(&node), root_(root.value()) {}
    ScriptXMLNode(const ScriptXMLNode&) = delete;
    ScriptXMLNode& operator=(const ScriptXMLNode&) = delete;
    ~ScriptXMLNode() override;

    /// Throws DSError "Object already destroyed" when the root has gone.
    const XMLNode& node() const;

    const std::string& name() const { return node().name(); }
    std::string_view text() const { return node().text(); }
    int line() const { return node().line(); }
    bool has_parameter(const std::string& name) const { return node().has_parameter(name); }
    std::string_view parameter(const std::string& name, const std::string& otherwise) const {
        return node().parameter(intern(name), otherwise);
    }
    /// A new ScriptMap from names to texts.
    ScriptValue parameter_map() const;
    /// Of every type.
    std::size_t num_children() const { return node().child_count(); }
    ScriptValue child(int index);
    /// A new ScriptVector of the child elements.
    ScriptValue children();
    /// Calls a function with each child element of that name.
    void for_each(const std::string& name, const ScriptValue& function);
    ScriptValue iterator();
    /// The object of a node of this tree.
    ScriptValue value_of(const XMLNode& node);

private:
    ScriptXMLNode& root();

    const XMLNode* node_;
    ScriptValue root_; ///< Void in a root.
    /// In a root: the objects that live below it.
    std::unordered_map<const XMLNode*, ScriptXMLNode*> below_;
};

/// Walks the child elements of a node, which it keeps.
class ScriptXMLNodeIterator : public Bound<ScriptXMLNodeIterator> {
public:
    static constexpr std::string_view script_name = "XMLNodeIterator";
    static void bind(StaticMemberSet<ScriptXMLNodeIterator>& members) {
        members.method<&ScriptXMLNodeIterator::next>("next");
    }

    explicit ScriptXMLNodeIterator(ScriptXMLNode& parent);

    /// The next element; void at the end.
    ScriptValue next();

private:
    ScriptXMLNode& parent_;
    ScriptValue keeps_parent_;
    XMLChildCursor cursor_;
    bool first_ = true;
};

/// A document that belongs to scripts, through its root.
class ScriptXMLDocument final : public ScriptXMLNode {
public:
    /// Empty; to be loaded.
    ScriptXMLDocument() : ScriptXMLNode(document_) {}
    XMLDocument& document() { return document_; }
    void on_unreferenced() override { delete this; }

private:
    XMLDocument document_;
};

} // namespace kst::script
