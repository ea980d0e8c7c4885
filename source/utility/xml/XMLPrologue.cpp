#include "source/utility/xml/XMLParser.h"

#include <algorithm>
#include <array>

namespace kst {
namespace {

bool is_blank(char32_t c) {
    return c == U' ' || c == U'\t' || c == U'\n';
}

bool is_name_start(char32_t c) {
    return c < 0x80 && xml_byte_is(static_cast<char>(c), XML_BYTE_NAME_START);
}

bool is_name(char32_t c) {
    return c < 0x80 && xml_byte_is(static_cast<char>(c), XML_BYTE_NAME);
}

std::string read_attribute_name(XMLReader& reader, char32_t first) {
    if (!is_name_start(first))
        reader.fail("Expected > or identifier");
    std::string name;
    char32_t c = first;
    for (; is_name(c); c = reader.next())
        append_utf8(name, c);
    reader.push_back(c);
    return name;
}

std::string read_quoted(XMLReader& reader, char32_t quote) {
    std::string value;
    for (char32_t c = reader.next(); c != quote; c = reader.next()) {
        if (c == 0)
            reader.fail(quote == U'"' ? " Unmatched \"" : " Unmatched '");
        append_utf8(value, c);
    }
    return value;
}

std::string read_attribute_value(XMLReader& reader) {
    reader.skip_blanks();
    char32_t c = reader.next();
    if (c == U'"' || c == U'\'')
        return read_quoted(reader, c);
    std::string value;
    for (; c != 0 && !is_blank(c) && c != U'>' && c != U'/'; c = reader.next())
        append_utf8(value, c);
    reader.push_back(c);
    return value;
}

/// A declared encoding only counts while the first bytes have not told another.
void apply_encoding(XMLReader& reader, const std::string& value) {
    if (reader.encoding() != XMLEncoding::eight_bit)
        return;
    constexpr std::array utf8{"UTF-8", "utf-8", "Utf-8"};
    constexpr std::array eight_bit{"ISO-8859-1", "Iso-8859-1", "iso-8859-1"};
    if (std::ranges::find(utf8, value) != utf8.end())
        reader.set_encoding(XMLEncoding::utf8);
    else if (std::ranges::find(eight_bit, value) == eight_bit.end())
        reader.fail("Encoding " + value + " not valid");
}

/// Behind `<?xml`, up to and with `?>`.
void read_declaration(XMLReader& reader) {
    reader.skip_blanks();
    char32_t c = reader.next();
    while (c != U'?') {
        const std::string name = read_attribute_name(reader, c);
        std::string value;
        reader.skip_blanks();
        if (reader.peek() == U'=') {
            reader.expect('=');
            value = read_attribute_value(reader);
        }
        if (name == "encoding")
            apply_encoding(reader, value);
        reader.skip_blanks();
        c = reader.next();
    }
    while ((c = reader.next()) != U'>') {
        while (c != U'?') {
            if (c == 0)
                reader.fail("Unexpected end of file");
            c = reader.next();
        }
    }
}

/// True behind `<?xml`, in any case of the letters. Otherwise nothing was read.
bool at_declaration(XMLReader& reader) {
    if (!reader.looking_at("<?"))
        return false;
    reader.expect_text("<?");
    // All three are read ahead, whatever they are: a line that ends among them counts.
    std::array<char32_t, 3> read{};
    for (char32_t& c : read)
        c = reader.next();
    const auto is = [&](std::size_t i, char32_t lower) { return read[i] == lower || read[i] + 32 == lower; };
    if (is(0, U'x') && is(1, U'm') && is(2, U'l'))
        return true;
    for (std::size_t i = read.size(); i > 0; --i)
        reader.push_back(read[i - 1]);
    reader.push_back(U'?');
    reader.push_back(U'<');
    return false;
}

void skip_doctype(XMLReader& reader) {
    if (!reader.looking_at("<!"))
        return;
    for (char32_t c = reader.next(); c != U'>'; c = reader.next())
        if (c == 0)
            reader.fail("Unexpected end of file");
}

} // namespace

void read_xml_prologue(XMLReader& reader) {
    constexpr char32_t byte_order_mark = 0xFEFF;
    const char32_t first = reader.next();
    if (first != byte_order_mark)
        reader.push_back(first);
    if (at_declaration(reader))
        read_declaration(reader);
    reader.skip_blanks();
    skip_doctype(reader);
    reader.skip_blanks();
    const char32_t c = reader.next();
    if (c == 0)
        reader.fail("Unexpected end of file");
    if (c != U'<')
        reader.fail("Expected <");
    reader.push_back(c);
}

} // namespace kst
