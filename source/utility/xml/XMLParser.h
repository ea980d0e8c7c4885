#pragma once

#include "source/utility/xml/XMLNode.h"
#include "source/utility/xml/XMLParseContext.h"

#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// Reads what stands ahead of the root element: byte-order mark, `<?xml ... ?>` with its encoding, one `<!...>`.
void read_xml_prologue(XMLReader& reader);

/// Parses one element, with everything in it, into the root of a tree.
///
/// Open elements stand on a stack of the parser's own, not on the program's. Wherever the bytes at hand stand for
/// themselves (XMLReader::direct) it runs over them by table; everything else goes through XMLReader::next, a character
/// at a time, which is what defines the result.
class XMLParser {
public:
    XMLParser(const XMLParseContext& context, XMLNode& root, idstring source_file);

    /// On an error the root keeps the children that were complete.
    void parse_root();

private:
    /// Where a run of text ends, and whether entities and macros in it are resolved.
    struct Run {
        /// Classes at which the fast lane stops; XML_BYTE_SLOW and the first stop character are implied.
        unsigned stop_classes;
        std::string_view stop_characters;
        bool expand;
    };
    struct OpenElement {
        XMLNode* node;
        std::size_t first_child;
    };

    void parse_tree();
    bool parse_start(XMLNode& node);
    bool close_start_tag();
    bool parse_content();
    bool content_is_only_blank();
    void read_content_text(std::string& text);
    void add_text_node(std::string_view text, std::int32_t line);
    bool at_plain_tag() const;
    void close_element();
    void read_close_tag(const XMLNode& node);
    void attach_children(const OpenElement& element, std::size_t end);
    void finish_child(XMLNode* child);
    void include(const XMLNode& element);

    void read_parameters(XMLNode& node);
    void read_parameter(const XMLNode& node);
    std::string_view read_value();
    std::string_view read_quoted_value(char quote, const Run& run);
    void store_parameter(idstring name, std::string_view value);
    XMLParameter* parameter_of_this_element(idstring name);

    idstring read_name();
    void read_name_slowly(std::string& name);

    void scan(std::string& text, const Run& run);
    void scan_once(std::string& text, const Run& run);
    void read_until(std::string& text, std::string_view terminator, bool expand);
    void append_entity(std::string& text);

    void define_macro(XMLNode& node, std::string body, bool is_expression);
    void define_from_parameters(XMLNode& node);
    void define_from_body(XMLNode& node);

    XMLParseContext context_;
    XMLReader& reader_;
    XMLNode& root_;
    XMLArena* arena_ = nullptr;
    idstring source_file_;

    std::vector<OpenElement> open_;
    /// Finished children of all open elements; those of the innermost one stand last.
    std::vector<XMLNode*> children_;

    /// Of the element being read.
    std::vector<XMLParameter> parameters_;
    /// For elements with many parameters: where in `parameters_` a name last stood, by its number.
    std::vector<std::size_t> places_;

    std::string text_;
    std::string name_;
};

} // namespace kst
