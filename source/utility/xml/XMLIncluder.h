#pragma once

#include "source/utility/xml/XMLNode.h"
#include "source/utility/xml/XMLParseContext.h"

#include <string>
#include <vector>

namespace kst {

class XMLDocument;
enum class XMLIncludeFault;

/// Puts the content of another file in the place of an include element.
class XMLIncluder {
public:
    explicit XMLIncluder(const XMLParseContext& context) : context_(context) {}

    /// Appends what the element includes to `children`, as copies in the tree of `parent`; macros go to the macro
    /// table. A file that cannot be loaded adds nothing but its name to the included files.
    /// What adds nothing is kept in the document's list of includes that were passed over.
    void include(const XMLNode& element, XMLNode& parent, std::vector<XMLNode*>& children);

private:
    std::string find_file(std::string_view href) const;
    bool load(XMLDocument& included, const std::string& path);
    void pass_over(const XMLNode& element, const std::string& path, XMLIncludeFault fault);
    void insert(const XMLNode& node, XMLNode& parent, std::vector<XMLNode*>& children);

    const XMLParseContext& context_;
};

} // namespace kst
