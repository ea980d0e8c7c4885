#pragma once

// The dialect by its letter: a character at a time, recursive, strings everywhere, text replaced from the front again
// after every change. Slow and plain; what it says about a document, the product must say too. Knows no includes.

#include "source/utility/expression/ExpressionEvaluator.h"
#include "source/utility/xml/XMLMacro.h"
#include "source/utility/xml/XMLReader.h"

#include <array>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kst::literal {

/// Where a macro would go on for ever.
struct Endless : std::runtime_error {
    Endless() : std::runtime_error("endless") {}
};

class Reader {
public:
    Reader(std::string_view bytes, int code) : bytes_(bytes), encoding(code) {}

    char32_t next() {
        char32_t c = raw();
        while (c == '<') {
            std::vector<char32_t> read;
            for (const char expected : {'!', '-', '-'}) {
                read.push_back(raw());
                if (read.back() != static_cast<char32_t>(expected))
                    return push(read), U'<';
            }
            for (int dashes = 0;;) {
                c = raw();
                if (c == 0)
                    fail("XML parser: expected -->");
                if (c == '>' && dashes > 1)
                    break;
                dashes = c == '-' ? dashes + 1 : 0;
            }
            c = raw();
        }
        return c;
    }
    void push(const std::vector<char32_t>& read) { pushback_.insert(pushback_.end(), read.rbegin(), read.rend()); }
    char32_t peek() {
        const char32_t c = next();
        if (c)
            push({c});
        return c;
    }
    bool looking_at(std::string_view text) {
        std::vector<char32_t> read;
        bool all = true;
        for (std::size_t i = 0; all && i < text.size(); ++i) {
            read.push_back(next());
            all = read.back() == static_cast<char32_t>(text[i]);
        }
        push(read);
        return all;
    }
    void expect(char c) {
        if (next() != static_cast<char32_t>(c))
            fail(std::string("Expected ") + c);
    }
    void expect_text(std::string_view text) {
        for (const char c : text)
            expect(c);
    }
    static bool blank(char32_t c) { return c == 9 || c == 10 || c == 32; }
    void skip_blanks() {
        char32_t c = next();
        while (blank(c))
            c = next();
        push({c});
    }
    [[noreturn]] void fail(const std::string& message) const {
        throw std::runtime_error("#internal_file (" + std::to_string(line) + "): " + message);
    }

private:
    unsigned byte() {
        if (place_ == bytes_.size())
            throw std::runtime_error("Archive::checked_read() Attempt to read past end of archive '#internal_file'");
        return static_cast<unsigned char>(bytes_[place_++]);
    }
    char32_t unit(unsigned width, bool big) {
        char32_t value = 0;
        for (unsigned i = 0; i < width; ++i)
            value |= static_cast<char32_t>(byte()) << (8 * (big ? width - 1 - i : i));
        return value;
    }
    char32_t decoded() {
        if (encoding == 1)
            return byte();
        if (encoding >= 4)
            return unit(4, encoding == 5);
        if (encoding >= 2) {
            const char32_t high = unit(2, encoding == 3);
            if (high < 0xD800 || high > 0xDBFF)
                return high;
            return ((high & 0x3FF) << 10 | (unit(2, encoding == 3) & 0x3FF)) + 0x10000;
        }
        const unsigned lead = byte();
        if (lead < 0x80)
            return lead;
        const int more = lead >= 0xC0 && lead < 0xE0   ? 1
                         : lead >= 0xE0 && lead < 0xF0 ? 2
                         : lead >= 0xF0 && lead < 0xF8 ? 3
                                                       : 0;
        if (more == 0)
            return 0;
        char32_t c = lead & (0x3Fu >> more);
        for (int i = 0; i < more; ++i)
            c = c << 6 | (byte() & 0x3F);
        return c;
    }
    char32_t raw() {
        if (!pushback_.empty()) {
            const char32_t c = pushback_.back();
            pushback_.pop_back();
            return c;
        }
        const char32_t c = decoded();
        if (encoding >= 4 || (c != 13 && c != 10))
            return c;
        if (c == 13) {
            const std::size_t place = place_;
            if ((encoding < 2 ? byte() : unit(2, encoding == 3)) != 10)
                place_ = place;
        }
        ++line;
        return 10;
    }

    std::string_view bytes_;
    std::size_t place_ = 0;
    std::vector<char32_t> pushback_;

public:
    int encoding;
    int line = 1;
};

class Parser {
public:
    /// The tree as `show(document, true)` writes it, with a "?" behind an unknown entity.
    static std::string parse(std::string_view bytes, int encoding) {
        Parser parser(bytes, encoding);
        parser.prologue();
        const std::string tree = parser.element();
        return tree + (parser.unknown_ ? "?" : "");
    }

private:
    Parser(std::string_view bytes, int encoding) : in_(bytes, encoding) {}

    static bool letter(char32_t c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
    static bool word(char32_t c) { return letter(c) || (c >= '0' && c <= '9'); }

    std::string identifier(const char* error) {
        char32_t c = in_.next();
        if (!letter(c))
            in_.fail(error);
        std::string name;
        for (; word(c) || c == ':'; c = in_.next())
            name += static_cast<char>(c);
        in_.push({c});
        return name;
    }

    void prologue() {
        const char32_t mark = in_.next();
        if (mark != 0xFEFF)
            in_.push({mark});
        if (in_.looking_at("<?")) {
            std::vector<char32_t> read;
            for (int i = 0; i < 5; ++i)
                read.push_back(in_.next());
            const auto is = [&](std::size_t i, char32_t c) { return read[i] == c || read[i] == c - 32; };
            if (is(2, 'x') && is(3, 'm') && is(4, 'l'))
                declaration();
            else
                in_.push(read);
        }
        in_.skip_blanks();
        if (in_.looking_at("<!"))
            for (char32_t c = in_.next(); c != '>'; c = in_.next())
                if (c == 0)
                    in_.fail("Unexpected end of file");
        in_.skip_blanks();
        const char32_t c = in_.next();
        if (c == 0)
            in_.fail("Unexpected end of file");
        if (c != '<')
            in_.fail("Expected <");
        in_.push({c});
    }

    void declaration() {
        for (in_.skip_blanks(); !in_.looking_at("?"); in_.skip_blanks()) {
            const std::string name = identifier("Expected > or identifier");
            std::string value;
            in_.skip_blanks();
            if (in_.peek() == '=') {
                in_.next();
                in_.skip_blanks();
                char32_t c = in_.next();
                if (c == '"' || c == '\'') {
                    const char32_t quote = c;
                    while ((c = in_.next()) != quote) {
                        if (c == 0)
                            in_.fail(std::string(" Unmatched ") + static_cast<char>(quote));
                        append_utf8(value, c);
                    }
                } else {
                    for (; c && !Reader::blank(c) && c != '>' && c != '/'; c = in_.next())
                        append_utf8(value, c);
                    in_.push({c});
                }
            }
            if (name != "encoding" || in_.encoding != 1)
                continue;
            if (value == "UTF-8" || value == "utf-8" || value == "Utf-8")
                in_.encoding = 0;
            else if (value != "ISO-8859-1" && value != "Iso-8859-1" && value != "iso-8859-1")
                in_.fail("Encoding " + value + " not valid");
        }
        in_.next();
        for (char32_t c = in_.next(); c != '>'; c = in_.next())
            for (; c != '?'; c = in_.next())
                if (c == 0)
                    in_.fail("Unexpected end of file");
    }

    std::string element() {
        in_.expect('<');
        const std::string line = std::string(":").append(std::to_string(in_.line));
        const std::string name = identifier("Expected identifier");
        const auto parameters = this->parameters();
        const char32_t c = in_.next();
        if (c == 0)
            in_.fail("Unexpected end of file");
        in_.push({c});
        const bool is_macro = name == "xdefine";
        if (in_.peek() == '/') {
            in_.expect_text("/>");
            if (is_macro)
                return macro(parameters, value(parameters, "value"), value(parameters, "expression"));
        } else {
            in_.expect('>');
            if (is_macro) {
                const std::string body = until("</xdefine>", true);
                in_.expect_text("</xdefine>");
                return macro(parameters, body, "");
            }
            const std::string inside = content(name);
            return name + line + shown(parameters) + inside;
        }
        return name + line + shown(parameters);
    }

    using Parameters = std::vector<std::pair<std::string, std::string>>;

    static std::string value(const Parameters& parameters, std::string_view name) {
        for (const auto& [key, text] : parameters)
            if (key == name)
                return text;
        return {};
    }
    static std::string shown(const Parameters& parameters) {
        std::string out;
        for (const auto& [key, text] : parameters)
            out.append(" ").append(key).append("='").append(text).append("'");
        return out;
    }

    Parameters parameters() {
        Parameters list;
        for (;;) {
            in_.skip_blanks();
            const char32_t c = in_.peek();
            if (c == 0 || c == '>' || c == '/')
                return list;
            const std::string name = identifier("Expected identifier");
            std::string text;
            in_.skip_blanks();
            if (in_.peek() == '=') {
                in_.expect('=');
                in_.skip_blanks();
                const char32_t quote = in_.peek();
                if (quote == '"' || quote == '\'') {
                    in_.expect(static_cast<char>(quote));
                    text = scan({static_cast<char>(quote)}, quote == '"');
                    in_.expect(static_cast<char>(quote));
                } else {
                    text = scan(" \n\t\r>/", false);
                }
            }
            bool found = false;
            for (auto& [key, old] : list)
                if (key == name) {
                    old = text;
                    found = true;
                }
            if (!found)
                list.emplace_back(name, text);
        }
    }

    std::string content(const std::string& name) {
        macros_.push_back({});
        std::vector<std::string> children;
        for (;;) {
            const int line = in_.line;
            std::string text = scan("<", true);
            while (in_.looking_at("<![CDATA[")) {
                in_.expect_text("<![CDATA[");
                text += until("]]>", false);
                in_.expect_text("]]>");
                text += scan("<", true);
            }
            if (text.find_first_not_of(" \t\n\r\f") != std::string::npos)
                children.push_back(std::string(1, '"').append(text).append("\":").append(std::to_string(line)));
            if (in_.looking_at("</"))
                break;
            children.push_back(element());
        }
        in_.expect_text("</");
        if (identifier("Expected identifier") != name)
            in_.fail("Identifiers must match");
        in_.skip_blanks();
        in_.expect('>');
        macros_.pop_back();
        std::string out;
        for (const std::string& child : children)
            out.append(out.empty() ? " [" : " ").append(child);
        return out.append(children.empty() ? 0 : 1, ']');
    }

    std::string scan(const std::string& stops, bool expand) {
        for (;;) {
            std::string text;
            char32_t c = 0;
            while ((c = in_.next()) >= 0x80 || stops.find(static_cast<char>(c)) == std::string::npos) {
                if (c == 0)
                    in_.fail("Unexpected end of file");
                if (c == '&' && expand) {
                    const std::string name = scan(";", false);
                    in_.expect(';');
                    const auto found = entities_.find(name);
                    unknown_ = unknown_ || found == entities_.end();
                    text += found == entities_.end() ? std::string(1, '&').append(name).append(1, ';') : found->second;
                } else {
                    append_utf8(text, c);
                }
            }
            in_.push({c});
            if (!expand || text.find('@') == std::string::npos)
                return text;
            const std::string expanded = this->expanded(text);
            if (expanded == text)
                return text;
            if (++changes_ > 3000)
                throw Endless();
            in_.push(code_points(expanded));
        }
    }

    std::string until(const std::string& terminator, bool expand) {
        std::string text;
        for (;;) {
            text += scan(terminator.substr(0, 1), expand);
            if (in_.looking_at(terminator))
                return text;
            append_utf8(text, in_.next());
        }
    }

    static std::vector<char32_t> code_points(std::string_view text) {
        std::vector<char32_t> out;
        for (std::size_t i = 0; i < text.size(); ++i)
            if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
                const auto lead = static_cast<unsigned char>(text[i]);
                const std::size_t more = lead < 0xC0 ? 0u : lead < 0xE0 ? 1u : lead < 0xF0 ? 2u : 3u;
                char32_t c = more ? lead & (0x3Fu >> more) : lead;
                for (std::size_t k = 1; k <= more; ++k)
                    c = c << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3F);
                out.push_back(c);
            }
        return out;
    }

    std::string macro(const Parameters& parameters, const std::string& body, const std::string& expression) {
        XMLMacro macro = parse_macro_signature(value(parameters, "name"));
        macro.is_expression = !expression.empty();
        macro.body = expanded(macro.is_expression ? expression : body);
        (macros_.empty() ? (macros_.emplace_back(), macros_.back()) : macros_.back()).push_back(macro);
        std::string out = macro.name;
        for (const std::string& parameter : macro.parameters)
            out += parameter;
        return out + (macro.is_expression ? "~" : "=") + macro.body;
    }

    std::string expanded(std::string text) {
        for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + 1)) {
            std::string name = "@";
            for (std::size_t i = at + 1; i < text.size() && word(static_cast<unsigned char>(text[i])); ++i)
                name += text[i];
            const XMLMacro* newest = nullptr;
            for (const auto& scope : macros_)
                for (const XMLMacro& macro : scope)
                    newest = macro.name == name ? &macro : newest;
            if (newest)
                while (apply(*newest, text)) {
                }
        }
        return text;
    }

    bool apply(const XMLMacro& macro, std::string& text) {
        const std::size_t begin = text.find(macro.name);
        if (begin == std::string::npos)
            return false;
        std::size_t end = begin + macro.name.size();
        if (end < text.size() && word(static_cast<unsigned char>(text[end])))
            return false;
        if (++changes_ > 3000 || text.size() > 100'000)
            throw Endless();
        std::string body = macro.body;
        if (!macro.parameters.empty()) {
            std::vector<std::string> arguments;
            const std::size_t open = text.find('(', end);
            const std::size_t close = text.find(')', end);
            if (open != std::string::npos && close != std::string::npos && open < close) {
                std::string piece;
                for (std::size_t i = open + 1; i <= close; ++i)
                    if (i == close || text[i] == ',') {
                        const std::size_t first = piece.find_first_not_of(" \t\r\n");
                        arguments.push_back(first == std::string::npos
                                                ? ""
                                                : piece.substr(first, piece.find_last_not_of(" \t\r\n") + 1 - first));
                        piece.clear();
                    } else {
                        piece += text[i];
                    }
                end = close + 1;
            }
            while (arguments.size() > macro.parameters.size() && arguments.back().empty())
                arguments.pop_back();
            if (arguments.size() != macro.parameters.size())
                in_.fail("Wrong number of macro parameters to " + macro.name);
            for (const std::uint32_t i : macro.replacement_order)
                for (std::size_t at; (at = body.find(macro.parameters[i])) != std::string::npos;) {
                    if (++changes_ > 3000 || body.size() > 100'000)
                        throw Endless();
                    body.replace(at, macro.parameters[i].size(), arguments[i]);
                }
        }
        text.replace(begin, end - begin, macro.is_expression ? evaluated(body) : body);
        return true;
    }

    std::string evaluated(const std::string& body) {
        ExpressionEvaluator evaluator;
        ExpressionProgram program;
        evaluator.compile(body, program);
        if (!program.unknown_identifiers.empty())
            in_.fail("Unknown identifier " + program.unknown_identifiers.front());
        std::array<char, 64> out{};
        std::snprintf(out.data(), out.size(), "%f", static_cast<double>(evaluator.evaluate(program)));
        return out.data();
    }

    Reader in_;
    std::vector<std::vector<XMLMacro>> macros_;
    std::map<std::string, std::string> entities_{{"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"apos", "'"}, {"quot", "\""}};
    bool unknown_ = false;
    int changes_ = 0;
};

} // namespace kst::literal
