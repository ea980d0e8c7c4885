#include "driver/check/AttributeCheck.h"

#include "driver/check/Findings.h"
#include "driver/check/spelling.h"
#include "driver/records/PathText.h"
#include "source/utility/xml/XMLNode.h"
#include "source/utility/xml/XmlParameters.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace mosaicer {
namespace {

constexpr std::string_view blanks = " \t\n\v\f\r";
constexpr std::string_view digits = "0123456789";

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

std::string_view without_blanks(std::string_view text) {
    const std::size_t begin = std::min(text.find_first_not_of(blanks), text.size());
    const std::size_t end = text.find_last_not_of(blanks);
    return begin == text.size() ? std::string_view() : text.substr(begin, end + 1 - begin);
}

std::string number_text(float value) {
    char buffer[64];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return {buffer, error == std::errc() ? end : buffer};
}

std::string list_of(const std::vector<std::string_view>& words) {
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0)
            list += i + 1 == words.size() ? " or " : ", ";
        list += words[i];
    }
    return list;
}

std::string quoted_pair(std::string_view name, std::string_view value) {
    return std::string(name) + " " + in_quotes(value);
}

ValueFault range_fault(std::string_view name, const AttributeValues& values, float value, const std::string& shown) {
    if (value < values.least)
        return {quoted_pair(name, shown) + " is below " + number_text(values.least), {}};
    if (value > values.most)
        return {quoted_pair(name, shown) + " is above " + number_text(values.most), {}};
    return {};
}

/// Numbers are read as far as they go. A fraction of noughts is what an expression leaves behind a whole number.
ValueFault integer_fault(std::string_view name, const AttributeValues& values, std::string_view value) {
    std::string_view rest = without_blanks(value);
    const std::string shown(rest);
    const std::int32_t number = kst::leading_integer(value);
    const std::string counted = std::to_string(number);
    if (rest.starts_with('-') || rest.starts_with('+'))
        rest.remove_prefix(1);
    const std::size_t length = std::min(rest.find_first_not_of(digits), rest.size());
    if (length == 0)
        return {quoted_pair(name, shown) + " is no number and counts as 0", {}};
    std::int64_t whole = 0;
    const bool fits = std::from_chars(rest.data(), rest.data() + length, whole).ec == std::errc();
    rest.remove_prefix(length);
    if (rest.starts_with('.'))
        rest.remove_prefix(std::min(rest.find_first_not_of('0', 1), rest.size()));
    if (!rest.empty() || !fits || whole != std::abs(std::int64_t{number}))
        return {quoted_pair(name, shown) + " counts as " + counted, counted};
    if (values.words) {
        const auto words = values.words();
        if (std::ranges::find(words, std::string_view(counted)) == words.end())
            return {quoted_pair(name, shown) + " is none of " + list_of(words), {}};
    }
    return range_fault(name, values, static_cast<float>(number), shown);
}

ValueFault decimal_fault(std::string_view name, const AttributeValues& values, std::string_view value) {
    const std::string_view text = without_blanks(value);
    std::string_view number = text;
    if (number.starts_with('-') || number.starts_with('+'))
        number.remove_prefix(1);
    const float counted = kst::leading_float(value);
    const std::size_t first_digit = number.starts_with('.') ? 1 : 0;
    if (number.size() <= first_digit || digits.find(number[first_digit]) == std::string_view::npos)
        return {quoted_pair(name, text) + " is no number and counts as 0", {}};
    float parsed = 0;
    const auto end = std::from_chars(number.data(), number.data() + number.size(), parsed).ptr;
    if (end != number.data() + number.size())
        return {quoted_pair(name, text) + " counts as " + number_text(counted), number_text(counted)};
    return range_fault(name, values, counted, std::string(text));
}

ValueFault integers_fault(std::string_view name, std::string_view value) {
    for (const std::string_view piece : split_string(value, ' ')) {
        std::int32_t number = 0;
        std::string_view plain = piece;
        if (plain.starts_with('+'))
            plain.remove_prefix(1);
        const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), number);
        if (error != std::errc())
            return {quoted_pair(name, value) + ": " + in_quotes(piece) + " is no number and counts as -1", {}};
        if (end != plain.data() + plain.size())
            return {quoted_pair(name, value) + ": " + in_quotes(piece) + " counts as " + std::to_string(number) +
                        "; the numbers are separated by single blanks",
                    {}};
    }
    return {};
}

ValueFault word_fault(std::string_view name, const AttributeValues& values, std::string_view value,
                      std::string_view effect) {
    const auto words = values.words();
    if (std::ranges::find(words, value) != words.end())
        return {};
    return {quoted_pair(name, value) + " " + std::string(effect) + ": it must be " + list_of(words),
            std::string(nearest_word(without_blanks(value), words))};
}

/// Names with a colon belong to other tools that read the file, such as editors.
bool is_foreign(std::string_view name) {
    return name == "xmlns" || name.find(':') != std::string_view::npos;
}

template <class Attribute>
const Attribute* find_row(std::span<const Attribute> table, std::string_view name) {
    const auto row = std::ranges::find(table, name, &Attribute::name);
    return row == table.end() ? nullptr : &*row;
}

template <class Attribute>
void add_names(std::span<const Attribute> table, std::vector<std::string_view>& names) {
    for (const Attribute& attribute : table)
        names.push_back(attribute.name);
}

const std::vector<std::string_view>& set_names() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> list;
        add_names(set_attributes(), list);
        return list;
    }();
    return names;
}

const std::vector<std::string_view>& entry_names() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> list;
        add_names(resolved_entry_attributes(), list);
        add_names(entry_attributes(), list);
        return list;
    }();
    return names;
}

template <class Attribute>
void check_value(const kst::XMLNode& node, const Attribute& attribute, std::string_view value, const std::string& set,
                 const MacroNames& macros, Findings& findings) {
    if (check_macro_calls(node, value, set, macros, findings))
        return;
    ValueFault fault = value_fault(attribute.name, attribute.form, attribute.values, value);
    if (!fault.message.empty())
        findings.at(node, set, FindingKind::value, std::move(fault.message), std::move(fault.suggestion));
}

} // namespace

std::string in_quotes(std::string_view word) {
    return '"' + std::string(word) + '"';
}

ValueFault value_fault(std::string_view name, AttributeForm form, const AttributeValues& values,
                       std::string_view value) {
    switch (form) {
    case AttributeForm::integer:
        return integer_fault(name, values, value);
    case AttributeForm::integers:
        return integers_fault(name, value);
    case AttributeForm::decimal:
        return decimal_fault(name, values, value);
    case AttributeForm::boolean:
        return word_fault(name, values, value, "counts as false");
    case AttributeForm::keyword:
        return value.empty() ? ValueFault{} : word_fault(name, values, value, "ends the run");
    case AttributeForm::word:
        return value.empty() ? ValueFault{} : word_fault(name, values, value, "is passed over");
    case AttributeForm::text:
    case AttributeForm::directory:
        break;
    }
    return {};
}

bool check_macro_calls(const kst::XMLNode& node, std::string_view text, const std::string& set,
                       const MacroNames& macros, Findings& findings) {
    for (std::size_t at = text.find('@'); at != std::string_view::npos; at = text.find('@', at + 1)) {
        std::size_t end = at + 1;
        while (end < text.size() && (is_letter(text[end]) || digits.find(text[end]) != std::string_view::npos))
            ++end;
        const std::string_view name = text.substr(at + 1, end - at - 1);
        // A texture may be called icon@2x.
        if (name.empty() || !is_letter(name.front()))
            continue;
        const std::string call = "@" + std::string(name);
        if (std::ranges::find(macros, name) != macros.end()) {
            findings.at(node, set, FindingKind::macro,
                        in_quotes(call) +
                            " stays as it is: macros hold from their definition to the end of the element "
                            "around it, in text and in double-quoted values");
            return true;
        }
        const std::string_view nearest = nearest_word(name, macros);
        findings.at(node, set, FindingKind::macro, in_quotes(call) + " is no macro here and stays as it is",
                    nearest.empty() ? std::string() : "@" + std::string(nearest));
        return true;
    }
    return false;
}

void check_set_attributes(const kst::XMLNode& node, const std::string& set, const MacroNames& macros,
                          Findings& findings) {
    for (const kst::XMLParameter& parameter : node.parameters()) {
        const std::string& name = kst::idstring_text(parameter.name);
        if (is_foreign(name))
            continue;
        if (const SetAttribute* const attribute = find_row(set_attributes(), name)) {
            check_value(node, *attribute, parameter.value(), set, macros, findings);
            continue;
        }
        std::string message = "unknown attribute " + in_quotes(name) + " on <" + node.name() + ">";
        if (find_row(entry_attributes(), name) || find_row(resolved_entry_attributes(), name))
            message += ": it belongs on the textures of a set";
        findings.at(node, set, FindingKind::attribute, std::move(message),
                    std::string(nearest_word(name, set_names())));
    }
}

void check_entry_attributes(const kst::XMLNode& node, const std::string& set, const MacroNames& macros,
                            Findings& findings) {
    for (const kst::XMLParameter& parameter : node.parameters()) {
        const std::string& name = kst::idstring_text(parameter.name);
        if (is_foreign(name))
            continue;
        const EntryAttribute* attribute = find_row(entry_attributes(), name);
        if (!attribute)
            attribute = find_row(resolved_entry_attributes(), name);
        if (attribute) {
            check_value(node, *attribute, parameter.value(), set, macros, findings);
            continue;
        }
        std::string message = "unknown attribute " + in_quotes(name) + " on <" + node.name() + ">";
        if (find_row(set_attributes(), name))
            message += ": it holds for sets and groups, not for one texture";
        findings.at(node, set, FindingKind::attribute, std::move(message),
                    std::string(nearest_word(name, entry_names())));
    }
}

} // namespace mosaicer
