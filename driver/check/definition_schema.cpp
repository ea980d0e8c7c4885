#include "driver/check/definition_schema.h"

#include "driver/SetAttributes.h"
#include "source/utility/xml/XMLNode.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>

namespace mosaicer {
namespace {

constexpr std::string_view head = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- The definition file of mosaicer. Made by "kst atlas schema"; do not edit. -->
<grammar xmlns="http://relaxng.org/ns/structure/1.0"
  xmlns:a="http://relaxng.org/ns/compatibility/annotations/1.0"
  datatypeLibrary="http://www.w3.org/2001/XMLSchema-datatypes">

  <start>
    <choice>
      <ref name="group"/>
      <ref name="set"/>
    </choice>
  </start>

  <define name="group">
    <element>
      <a:documentation>A group: its attributes hold for all sets below it.</a:documentation>
      <anyName>
        <except>
          <name>atlas</name>
          <name>texture_set</name>
          <name>xdefine</name>
          <nsName ns="http://www.w3.org/2001/XInclude"/>
        </except>
      </anyName>
      <ref name="set-attributes"/>
      <mixed>
        <zeroOrMore>
          <choice>
            <ref name="group"/>
            <ref name="set"/>
            <ref name="directive"/>
          </choice>
        </zeroOrMore>
      </mixed>
    </element>
  </define>

  <define name="set">
    <choice>
      <element name="atlas">
        <a:documentation>Packs its textures together into one or more images.</a:documentation>
        <ref name="set-content"/>
      </element>
      <element name="texture_set">
        <a:documentation>Makes an image of each of its textures.</a:documentation>
        <ref name="set-content"/>
      </element>
    </choice>
  </define>

  <define name="set-content">
    <ref name="set-attributes"/>
    <mixed>
      <zeroOrMore>
        <choice>
          <ref name="entry"/>
          <ref name="directive"/>
        </choice>
      </zeroOrMore>
    </mixed>
  </define>

  <define name="entry">
    <element>
      <a:documentation>One texture of the set.</a:documentation>
      <anyName>
        <except>
          <name>atlas</name>
          <name>texture_set</name>
          <name>xdefine</name>
          <nsName ns="http://www.w3.org/2001/XInclude"/>
        </except>
      </anyName>
      <ref name="entry-attributes"/>
      <text/>
    </element>
  </define>

  <define name="directive">
    <choice>
      <element name="include" ns="http://www.w3.org/2001/XInclude">
        <a:documentation>Replaced by the elements below the root of another file.</a:documentation>
        <attribute name="href">
          <a:documentation>The file, counted from the directory of this one, and an xpointer behind a #.</a:documentation>
        </attribute>
        <ref name="foreign-attributes"/>
      </element>
      <element name="xdefine">
        <a:documentation>A macro: @name stands for the value, the value of the expression, or the content.</a:documentation>
        <attribute name="name">
          <a:documentation>The name, and its parameters in parentheses: half(v).</a:documentation>
        </attribute>
        <optional>
          <attribute name="value">
            <a:documentation>The text, with $v for a parameter v.</a:documentation>
          </attribute>
        </optional>
        <optional>
          <attribute name="expression">
            <a:documentation>An expression whose value is the text.</a:documentation>
          </attribute>
        </optional>
        <ref name="anything"/>
      </element>
    </choice>
  </define>

  <define name="anything">
    <mixed>
      <zeroOrMore>
        <element>
          <anyName/>
          <zeroOrMore>
            <attribute>
              <anyName/>
            </attribute>
          </zeroOrMore>
          <ref name="anything"/>
        </element>
      </zeroOrMore>
    </mixed>
  </define>

  <define name="foreign-attributes">
    <zeroOrMore>
      <attribute>
        <anyName>
          <except>
            <nsName ns=""/>
          </except>
        </anyName>
      </attribute>
    </zeroOrMore>
  </define>

  <define name="macro-call">
    <data type="string">
      <param name="pattern">[^@]*@[A-Za-z0-9_].*</param>
    </data>
  </define>
)";

constexpr std::string_view indent = "          ";

std::string line(std::string_view text) {
    return std::string(indent) + std::string(text) + "\n";
}

std::string parameter(std::string_view name, std::int64_t value) {
    return line("  <param name=\"" + std::string(name) + "\">" + std::to_string(value) + "</param>");
}

std::string value(std::string_view word) {
    return line("<value type=\"string\">" + kst::escape_xml(word) + "</value>");
}

/// A number of the type within the attribute's range, which is one of whole numbers, cut to what 32 bits hold.
std::string number(std::string_view type, const AttributeValues& values) {
    using Limits = std::numeric_limits<std::int32_t>;
    const auto bound = [](float wanted) {
        if (wanted >= static_cast<float>(Limits::max()))
            return Limits::max();
        return wanted <= static_cast<float>(Limits::min()) ? Limits::min() : static_cast<std::int32_t>(wanted);
    };
    return line("<data type=\"" + std::string(type) + "\">") + parameter("minInclusive", bound(values.least)) +
           parameter("maxInclusive", bound(values.most)) + line("</data>");
}

/// The noughts behind the point are what an expression leaves of a whole number.
std::string integer(const AttributeValues& values) {
    return number("integer", values) + line("<data type=\"string\">") +
           line(R"(  <param name="pattern">\s*[+\-]?[0-9]+\.0*\s*</param>)") + line("</data>");
}

std::string words(const AttributeValues& values, bool may_be_empty) {
    std::string text;
    for (const std::string_view word : values.words())
        text += value(word);
    return may_be_empty ? text + value("") : text;
}

/// The choices of a value, or nothing if any text will do.
std::string choices(AttributeForm form, const AttributeValues& values) {
    switch (form) {
    case AttributeForm::integer:
        return values.words ? words(values, /*may_be_empty=*/false) : integer(values);
    case AttributeForm::integers:
        return line("<list>") + line("  <zeroOrMore>") + line("    <data type=\"int\"/>") + line("  </zeroOrMore>") +
               line("</list>");
    case AttributeForm::decimal:
        return number("double", values);
    case AttributeForm::boolean:
        return words(values, /*may_be_empty=*/false);
    case AttributeForm::keyword:
    case AttributeForm::word:
        return words(values, /*may_be_empty=*/true);
    case AttributeForm::text:
    case AttributeForm::directory:
        break;
    }
    return {};
}

template <class Attribute>
std::string attribute_pattern(const Attribute& attribute, bool required) {
    std::string text = required ? "" : "    <optional>\n";
    text += "      <attribute name=\"" + std::string(attribute.name) + "\">\n";
    text += "        <a:documentation>" + kst::escape_xml(attribute.values.help) + "</a:documentation>\n";
    if (const std::string choice = choices(attribute.form, attribute.values); !choice.empty())
        text += "        <choice>\n" + choice + line("<ref name=\"macro-call\"/>") + "        </choice>\n";
    text += "      </attribute>\n";
    return required ? text : text + "    </optional>\n";
}

} // namespace

std::string definition_schema() {
    std::string text(head);
    text += "\n  <define name=\"set-attributes\">\n";
    for (const SetAttribute& attribute : set_attributes())
        text += attribute_pattern(attribute, /*required=*/false);
    text += "    <ref name=\"foreign-attributes\"/>\n  </define>\n\n  <define name=\"entry-attributes\">\n";
    for (const EntryAttribute& attribute : resolved_entry_attributes())
        text += attribute_pattern(attribute, /*required=*/attribute.name == "name");
    for (const EntryAttribute& attribute : entry_attributes())
        text += attribute_pattern(attribute, /*required=*/false);
    text += "    <ref name=\"foreign-attributes\"/>\n  </define>\n\n</grammar>\n";
    return text;
}

} // namespace mosaicer
