#include "source/utility/xml/XMLParser.h"

#include "source/utility/xml/XMLIncluder.h"
#include "source/utility/xml/XMLNodeAccess.h"
#include "source/utility/xml/XMLWords.h"

#include <algorithm>

namespace kst {
namespace {

constexpr std::string_view text_blanks = " \t\n\r\f";
constexpr std::string_view cdata_open = "<![CDATA[";
constexpr std::string_view cdata_close = "]]>";
constexpr std::string_view macro_close = "</xdefine>";

/// From here on a repeated parameter is found by table and not by looking through the list.
constexpr std::size_t many_parameters = 16;
constexpr std::size_t no_place = static_cast<std::size_t>(-1);

} // namespace

XMLParser::XMLParser(const XMLParseContext& context, XMLNode& root, idstring source_file)
    : context_(context), reader_(context.reader), root_(root), source_file_(source_file) {}

void XMLParser::parse_root() {
    XMLNodeAccess::clear_root(root_);
    arena_ = &XMLNodeAccess::arena(root_);
    try {
        parse_tree();
    } catch (...) {
        if (!open_.empty())
            attach_children(open_.front(), open_.size() > 1 ? open_[1].first_child : children_.size());
        throw;
    }
}

void XMLParser::parse_tree() {
    if (!parse_start(root_))
        return;
    while (!open_.empty()) {
        if (parse_content()) {
            close_element();
            continue;
        }
        XMLNode* const child = XMLNodeAccess::make(*arena_);
        if (!parse_start(*child))
            finish_child(child);
    }
}

/// Reads a start tag. True: the element is open and its content comes next. False: it is complete.
bool XMLParser::parse_start(XMLNode& node) {
    XMLNodeAccess::set_source_file(node, source_file_);
    if (at_plain_tag())
        reader_.advance_to(reader_.cursor() + 1);
    else
        reader_.expect('<');
    if (open_.size() + context_.state.open_elements >= xml_limits::most_nesting)
        reader_.fail("Elements nested deeper than " + std::to_string(xml_limits::most_nesting));
    XMLNodeAccess::set_line(node, reader_.line());
    XMLNodeAccess::set_type(node, XML_ELEMENT);
    XMLNodeAccess::set_name(node, read_name());
    read_parameters(node);
    const bool is_macro = node.name_id() == xml_words().xdefine;
    if (!close_start_tag()) {
        if (is_macro)
            define_from_parameters(node);
        return false;
    }
    if (is_macro) {
        define_from_body(node);
        return false;
    }
    context_.macros.open_scope();
    open_.push_back({&node, children_.size()});
    return true;
}

/// Behind the parameters. False: the element is empty.
bool XMLParser::close_start_tag() {
    if (reader_.skip_direct(">"))
        return true;
    if (reader_.skip_direct("/>"))
        return false;
    const char32_t c = reader_.next();
    if (c == 0)
        reader_.fail("Unexpected end of file");
    reader_.push_back(c);
    if (reader_.peek() == U'/') {
        reader_.expect_text("/>");
        return false;
    }
    reader_.expect('>');
    return true;
}

/// Reads up to the next tag. True: it closes the innermost element. False: it starts a child.
bool XMLParser::parse_content() {
    if (content_is_only_blank())
        return reader_.cursor()[1] == '/';
    const std::int32_t line = reader_.line();
    text_.clear();
    read_content_text(text_);
    while (!at_plain_tag() && reader_.looking_at(cdata_open)) {
        reader_.expect_text(cdata_open);
        std::string part;
        read_until(part, cdata_close, /*expand=*/false);
        reader_.expect_text(cdata_close);
        text_ += part;
        read_content_text(part);
        text_ += part;
    }
    add_text_node(text_, line);
    return reader_.looking_at("</");
}

/// The common case, a line end and some blanks up to a tag, in one go. False: nothing was read.
bool XMLParser::content_is_only_blank() {
    if (!reader_.direct())
        return false;
    const char* place = reader_.cursor();
    const char* const limit = reader_.limit();
    std::int32_t lines = 0;
    for (;; ++place) {
        // One byte behind a CR or a `<` is looked at.
        if (limit - place < 2)
            return false;
        if (*place == '<')
            break;
        if (!xml_byte_is(*place, XML_BYTE_BLANK) && *place != '\n' && *place != '\r' && *place != '\f')
            return false;
        lines += *place == '\n' || (*place == '\r' && place[1] != '\n') ? 1 : 0;
    }
    if (place[1] != '/' && !xml_byte_is(place[1], XML_BYTE_NAME_START))
        return false;
    reader_.add_lines(lines);
    reader_.advance_to(place);
    return true;
}

/// At a `<` that begins neither a comment nor CDATA, and that can be told without reading ahead.
bool XMLParser::at_plain_tag() const {
    if (!reader_.direct() || reader_.limit() - reader_.cursor() < 2 || *reader_.cursor() != '<')
        return false;
    const char next = reader_.cursor()[1];
    return next == '/' || xml_byte_is(next, XML_BYTE_NAME_START);
}

void XMLParser::read_content_text(std::string& text) {
    scan(text, {.stop_classes = XML_BYTE_EXPANDS, .stop_characters = "<", .expand = true});
}

void XMLParser::add_text_node(std::string_view text, std::int32_t line) {
    if (text.find_first_not_of(text_blanks) == std::string_view::npos)
        return;
    XMLNode* const node = XMLNodeAccess::make(*arena_);
    XMLNodeAccess::set_type(*node, XML_TEXT);
    XMLNodeAccess::set_line(*node, line);
    XMLNodeAccess::set_source_file(*node, source_file_);
    XMLNodeAccess::set_text(*node, arena_->keep(text));
    children_.push_back(node);
}

void XMLParser::close_element() {
    const OpenElement element = open_.back();
    read_close_tag(*element.node);
    context_.macros.close_scope();
    attach_children(element, children_.size());
    children_.resize(element.first_child);
    open_.pop_back();
    if (!open_.empty())
        finish_child(element.node);
}

void XMLParser::read_close_tag(const XMLNode& node) {
    const std::string& name = node.name();
    const std::size_t tag_bytes = name.size() + 3;
    if (reader_.direct() && static_cast<std::size_t>(reader_.limit() - reader_.cursor()) >= tag_bytes) {
        const std::string_view tag(reader_.cursor(), tag_bytes);
        if (tag.starts_with("</") && tag.back() == '>' && tag.substr(2, name.size()) == name) {
            reader_.advance_to(reader_.cursor() + tag_bytes);
            return;
        }
    }
    reader_.expect_text("</");
    read_name_slowly(name_);
    if (name_ != name)
        reader_.fail("Identifiers must match");
    reader_.skip_blanks();
    reader_.expect('>');
}

/// Gives the element the finished children from its first one to `end`.
void XMLParser::attach_children(const OpenElement& element, std::size_t end) {
    const std::size_t count = end - element.first_child;
    if (count == 0)
        return;
    XMLNode** const list = arena_->allocate<XMLNode*>(count);
    std::copy_n(children_.begin() + static_cast<std::ptrdiff_t>(element.first_child), count, list);
    XMLNodeAccess::set_children(*element.node, list, count);
}

void XMLParser::finish_child(XMLNode* child) {
    const idstring name = child->name_id();
    const bool is_include = name == xml_words().xi_include || name == xml_words().xinclude_include;
    if (is_include && xml_switches().process_includes)
        include(*child);
    else
        children_.push_back(child);
}

void XMLParser::include(const XMLNode& element) {
    // The included elements hang below all that are open here.
    const std::size_t outer_elements = context_.state.open_elements;
    context_.state.open_elements += open_.size();
    XMLIncluder(context_).include(element, *open_.back().node, children_);
    context_.state.open_elements = outer_elements;
}

void XMLParser::read_parameters(XMLNode& node) {
    parameters_.clear();
    for (;;) {
        reader_.skip_blanks();
        if (!reader_.direct() || reader_.cursor() == reader_.limit() ||
            !xml_byte_is(*reader_.cursor(), XML_BYTE_NAME_START)) {
            const char32_t c = reader_.peek();
            if (c == 0 || c == U'>' || c == U'/')
                break;
        }
        read_parameter(node);
    }
    if (parameters_.size() > many_parameters)
        for (const XMLParameter& parameter : parameters_)
            places_[static_cast<std::size_t>(parameter.name)] = no_place;
    if (parameters_.empty())
        return;
    XMLParameter* const list = arena_->allocate<XMLParameter>(parameters_.size());
    std::ranges::copy(parameters_, list);
    XMLNodeAccess::set_parameters(node, list, parameters_.size());
}

void XMLParser::read_parameter(const XMLNode& node) {
    const idstring name = read_name();
    bool has_value = reader_.skip_direct("=");
    if (!has_value) {
        reader_.skip_blanks();
        has_value = reader_.peek() == U'=';
        if (has_value)
            reader_.expect('=');
    }
    const std::string_view value = has_value ? read_value() : std::string_view();
    if (!node.read_only())
        store_parameter(name, value);
}

std::string_view XMLParser::read_value() {
    constexpr Run double_quoted{
        .stop_classes = XML_BYTE_DOUBLE_QUOTE | XML_BYTE_EXPANDS, .stop_characters = "\"", .expand = true};
    constexpr Run single_quoted{.stop_classes = XML_BYTE_SINGLE_QUOTE, .stop_characters = "'", .expand = false};
    constexpr Run bare{.stop_classes = XML_BYTE_ENDS_BARE_VALUE, .stop_characters = " \n\t\r>/", .expand = false};
    if (reader_.skip_direct("\""))
        return read_quoted_value('"', double_quoted);
    reader_.skip_blanks();
    const char32_t c = reader_.peek();
    if (c == U'"' || c == U'\'') {
        reader_.expect(static_cast<char>(c));
        return read_quoted_value(static_cast<char>(c), c == U'"' ? double_quoted : single_quoted);
    }
    scan(text_, bare);
    return arena_->keep(text_);
}

/// Behind the opening quote, up to and with the closing one.
std::string_view XMLParser::read_quoted_value(char quote, const Run& run) {
    if (reader_.direct()) {
        const unsigned stops = run.stop_classes | XML_BYTE_SLOW;
        const char* const begin = reader_.cursor();
        const char* end = begin;
        while (end != reader_.limit() && !xml_byte_is(*end, stops))
            ++end;
        if (end != reader_.limit() && *end == quote) {
            reader_.advance_to(end + 1);
            return arena_->keep({begin, static_cast<std::size_t>(end - begin)});
        }
    }
    scan(text_, run);
    reader_.expect(quote);
    return arena_->keep(text_);
}

void XMLParser::store_parameter(idstring name, std::string_view value) {
    XMLParameter* const earlier = parameter_of_this_element(name);
    if (earlier) {
        earlier->value_data = value.data();
        earlier->value_size = static_cast<std::uint32_t>(value.size());
        return;
    }
    parameters_.push_back({name, static_cast<std::uint32_t>(value.size()), value.data()});
    if (parameters_.size() <= many_parameters)
        return;
    // The first time, the table learns all that the list holds.
    const std::size_t first_new = parameters_.size() == many_parameters + 1 ? 0 : parameters_.size() - 1;
    for (std::size_t i = first_new; i < parameters_.size(); ++i) {
        const auto number = static_cast<std::size_t>(parameters_[i].name);
        if (number >= places_.size())
            places_.resize(std::max(number + 1, places_.size() * 2), no_place);
        places_[number] = i;
    }
}

XMLParameter* XMLParser::parameter_of_this_element(idstring name) {
    if (parameters_.size() > many_parameters) {
        const auto number = static_cast<std::size_t>(name);
        return number < places_.size() && places_[number] != no_place ? &parameters_[places_[number]] : nullptr;
    }
    for (XMLParameter& parameter : parameters_)
        if (parameter.name == name)
            return &parameter;
    return nullptr;
}

idstring XMLParser::read_name() {
    if (reader_.direct()) {
        const char* const begin = reader_.cursor();
        const char* end = begin;
        if (end != reader_.limit() && xml_byte_is(*end, XML_BYTE_NAME_START))
            while (end != reader_.limit() && xml_byte_is(*end, XML_BYTE_NAME))
                ++end;
        // Behind a slow byte the name may go on: a comment may stand in the middle of it.
        if (end != begin && end != reader_.limit() && !xml_byte_is(*end, XML_BYTE_SLOW)) {
            reader_.advance_to(end);
            return intern({begin, static_cast<std::size_t>(end - begin)});
        }
    }
    read_name_slowly(name_);
    return intern(name_);
}

void XMLParser::read_name_slowly(std::string& name) {
    name.clear();
    char32_t c = reader_.next();
    if (c >= 0x80 || !xml_byte_is(static_cast<char>(c), XML_BYTE_NAME_START))
        reader_.fail("Expected identifier");
    for (; c < 0x80 && xml_byte_is(static_cast<char>(c), XML_BYTE_NAME); c = reader_.next())
        name += static_cast<char>(c);
    reader_.push_back(c);
}

/// Replaces `text` by the run up to a stop character, which stays unread. What macros made of the run is read again as
/// if it had stood in the file, until nothing changes.
void XMLParser::scan(std::string& text, const Run& run) {
    for (;;) {
        text.clear();
        scan_once(text, run);
        if (!run.expand || context_.macros.empty() || text.find('@') == std::string::npos)
            return;
        const std::string expanded = expand_macros(context_.macros, text, context_);
        if (expanded == text)
            return;
        context_.charge_expansion(expanded.size());
        reader_.push_back_text(expanded);
    }
}

void XMLParser::scan_once(std::string& text, const Run& run) {
    const unsigned stops = run.stop_classes | XML_BYTE_SLOW;
    const char first_stop = run.stop_characters.front();
    for (;;) {
        if (reader_.direct()) {
            const char* const begin = reader_.cursor();
            const char* end = begin;
            while (end != reader_.limit() && !xml_byte_is(*end, stops) && *end != first_stop)
                ++end;
            text.append(begin, end);
            reader_.advance_to(end);
            if (first_stop == '<' && at_plain_tag())
                return;
        }
        const char32_t c = reader_.next();
        if (c == 0)
            reader_.fail("Unexpected end of file");
        const bool stop = c < 0x80 && run.stop_characters.find(static_cast<char>(c)) != std::string_view::npos;
        if (stop || (c == U'&' && run.expand)) {
            reader_.push_back(c);
            if (stop)
                return;
            append_entity(text);
            continue;
        }
        append_utf8(text, c);
    }
}

/// Everything up to the terminator, which stays unread.
void XMLParser::read_until(std::string& text, std::string_view terminator, bool expand) {
    const Run run{.stop_classes = expand ? unsigned{XML_BYTE_EXPANDS} : 0u,
                  .stop_characters = terminator.substr(0, 1),
                  .expand = expand};
    std::string part;
    text.clear();
    for (;;) {
        scan(part, run);
        text += part;
        if (reader_.looking_at(terminator))
            return;
        append_utf8(text, reader_.next());
    }
}

void XMLParser::append_entity(std::string& text) {
    reader_.expect('&');
    std::string name;
    scan(name, {.stop_classes = 0, .stop_characters = ";", .expand = false});
    reader_.expect(';');
    const auto entity = context_.entities.find(intern(name));
    if (entity != context_.entities.end()) {
        text += entity->second;
        return;
    }
    context_.had_unknown_entity = true;
    text += '&';
    text += name;
    text += ';';
}

void XMLParser::define_from_parameters(XMLNode& node) {
    const std::string_view expression = node.parameter(xml_words().expression, {});
    const bool is_expression = !expression.empty();
    define_macro(node, std::string(is_expression ? expression : node.parameter(xml_words().value, {})), is_expression);
}

void XMLParser::define_from_body(XMLNode& node) {
    std::string body;
    read_until(body, macro_close, /*expand=*/true);
    reader_.expect_text(macro_close);
    define_macro(node, std::move(body), /*is_expression=*/false);
}

/// The element becomes a macro node.
void XMLParser::define_macro(XMLNode& node, std::string body, bool is_expression) {
    XMLMacro macro = parse_macro_signature(node.parameter(xml_words().name, {}));
    macro.body = body.find('@') == std::string::npos ? std::move(body) : expand_macros(context_.macros, body, context_);
    macro.is_expression = is_expression;
    XMLNodeAccess::set_type(node, XML_MACRO);
    XMLNodeAccess::set_macro(node, arena_->keep(macro));
    context_.macros.add(std::move(macro));
}

} // namespace kst
