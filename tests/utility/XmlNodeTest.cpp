#include "tests/utility/XmlSupport.h"

#include "source/utility/Errors.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/xml/XMLCompiledForm.h"
#include "source/utility/xml/XmlParameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

TEST(Idstring, is_the_same_number_for_the_same_text) {
    EXPECT_EQ(intern(""), 0);
    std::vector<idstring> numbers;
    for (int i = 0; i < 25'000; ++i)
        numbers.push_back(intern("idstring test " + std::to_string(i)));
    const std::string* const first = &idstring_text(numbers[0]);
    for (int i = 0; i < 25'000; ++i)
        EXPECT_EQ(intern(idstring_text(numbers[static_cast<std::size_t>(i)])), numbers[static_cast<std::size_t>(i)]);
    EXPECT_EQ(first, &idstring_text(numbers[0]));
    EXPECT_EQ(find_interned("idstring test never seen"), -1);
}

TEST(XmlNode, keeps_parameters_in_order) {
    XMLNode node = XMLNode::element("a");
    for (const char* const name : {"p", "q", "r", "s", "t", "q"})
        node.set_parameter(intern(name), std::string("value of ").append(name));
    node.remove_parameter(intern("s"));
    node.remove_parameter(intern("absent"));
    node.set_parameter(intern("p"), "");
    EXPECT_EQ(show(node), "a p='' q='value of q' r='value of r' t='value of t'");
    EXPECT_TRUE(node.has_parameter("t"));
    EXPECT_FALSE(node.has_parameter("s"));
    EXPECT_EQ(node.parameter(intern("s"), "default"), "default");
    node.set_read_only(true);
    node.set_parameter(intern("p"), "2");
    node.remove_parameter(intern("p"));
    EXPECT_EQ(node.parameter("p"), "");
}

TEST(XmlNode, copies_deeply_also_within_one_tree) {
    XMLDocument document;
    document.parse_string("<a><b c='1'>t</b><xdefine name='m' value='v'/><d/></a>");
    XMLNode copy(document);
    EXPECT_EQ(copy, document);
    EXPECT_EQ(document.child(0)->parent(), nullptr);
    EXPECT_EQ(copy.child(0)->parent(), &copy);
    copy.append_child_copy(copy);
    copy.insert_child_copy(0, *copy.child(2));
    EXPECT_EQ(show(copy), "a [d b c='1' [\"t\"] @m=v d a [b c='1' [\"t\"] @m=v d]]");
    EXPECT_FALSE(copy == document);
    copy.child(0)->assign(copy);
    EXPECT_EQ(copy.child(0)->parent(), &copy);
    copy.assign(*copy.child(0)->child(1));
    EXPECT_EQ(show(copy), "b c='1' [\"t\"]");
    copy = XMLNode();
    EXPECT_EQ(copy, XMLNode());
}

TEST(XmlNode, shows_children_by_mask) {
    XMLDocument document;
    document.parse_string("<a>t<b/><xdefine name='m' value='v'/>u<c/></a>");
    const auto names = [&](std::int32_t mask) {
        std::vector<std::string> out;
        for (const XMLNode& child : document.children(mask))
            out.push_back(child.name());
        return out;
    };
    EXPECT_THAT(names(XML_ELEMENT), testing::ElementsAre("b", "c"));
    EXPECT_THAT(names(5), testing::ElementsAre("b", "xdefine", "c"));
    EXPECT_THAT(names(XML_TEXT), testing::ElementsAre("#text", "#text"));
    EXPECT_EQ(document.child(-1), nullptr);
    EXPECT_EQ(document.child(5), nullptr);
    EXPECT_EQ(escape_xml("<a b='\"&'>"), "&lt;a b=&apos;&quot;&amp;&apos;&gt;");
}

TEST(XmlNode, of_any_depth_is_copied_compared_and_freed) {
    XMLNode root = XMLNode::element("a");
    XMLNode* innermost = &root;
    for (int i = 0; i < 300'000; ++i)
        innermost = &innermost->append_child_copy(XMLNode::element("b"));
    root.set_read_only(true);
    const XMLNode copy(root);
    EXPECT_EQ(copy, root);
}

TEST(XmlParameters, are_read_as_values) {
    XMLDocument document;
    document.parse_string(
        "<a i='  -12px' big='99999999999' low='-99999999999' none='x' f='\t1.5e1z' p='.5' e='1e' h='1e99' "
        "s='1e-99' t='true' u='True' v='1 2.5\n-3' w='7 x 9'/>");
    const auto integer = [&](const char* name) {
        std::int32_t value = 77;
        return std::pair(read_parameter(document, name, value), value);
    };
    EXPECT_EQ(integer("i"), std::pair(true, -12));
    EXPECT_EQ(integer("big"), std::pair(true, 2147483647));
    EXPECT_EQ(integer("low"), std::pair(true, -2147483647 - 1));
    EXPECT_EQ(integer("none"), std::pair(true, 0));
    EXPECT_EQ(integer("absent"), std::pair(false, 77));
    EXPECT_EQ(leading_float(document.parameter("f")), 15.0f);
    EXPECT_EQ(leading_float(document.parameter("p")), 0.5f);
    EXPECT_EQ(leading_float(document.parameter("e")), 1.0f);
    EXPECT_EQ(leading_float(document.parameter("h")), std::numeric_limits<float>::infinity());
    EXPECT_EQ(leading_float(document.parameter("s")), 0.0f);
    EXPECT_EQ(leading_float("inf"), 0.0f);
    bool flag = false;
    EXPECT_TRUE(read_parameter(document, "t", flag) && flag);
    EXPECT_TRUE(read_parameter(document, "u", flag) && !flag);
    std::array<float, 3> three{4, 5, 6};
    EXPECT_FALSE(read_parameter(document, "absent", three));
    EXPECT_TRUE(read_parameter(document, "w", three));
    EXPECT_THAT(three, testing::ElementsAre(7, 5, 6));
    EXPECT_TRUE(read_parameter(document, "v", three));
    EXPECT_THAT(three, testing::ElementsAre(1, 2.5f, -3));
}

/// Of a heap block of exactly that size, so that a sanitizer sees one byte too many.
std::string loaded_form(std::string_view bytes) {
    const std::vector<char> exact(bytes.begin(), bytes.end());
    XMLDocument document;
    try {
        document.read_compiled(Archive("form.bin", std::make_unique<ConstMemoryDataStore>(exact.data(), exact.size()),
                                       0, static_cast<std::int64_t>(exact.size()), false));
        return show(document);
    } catch (const ErrorWithCStack& error) {
        EXPECT_EQ(document, XMLNode());
        EXPECT_THAT(error.what(), testing::StartsWith("form.bin: "));
        return error.what();
    }
}

/// The tree <a b="a">t<m/></a> with a macro in it, byte for byte.
const std::string golden_form = std::string("XML\1\4\0\0\0a\0b\0t\0c\0"
                                            "\1\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\0\0\0\0\3\0\0\0"
                                            "\2\0\0\0\2\0\0\0"
                                            "\4\0\0\0@m\0\1\0\0\0$v\0\1\0\0\0\0\0\0\0x$v\0\0"
                                            "\1\0\0\0\3\0\0\0\0\0\0\0\0\0\0\0"
                                            "\1\0\0\0i.xml\0",
                                            8 + 8 + 24 + 8 + 27 + 16 + 10);

TEST(XmlCompiledForm, is_as_drawn) {
    XMLDocument document;
    document.parse_string("<a b='a'>t<xdefine name='m(v)' value='x$v'/><c/></a>");
    EXPECT_EQ(compile_xml(document, {"i.xml"}), golden_form);
    EXPECT_EQ(loaded_form(golden_form), show(document));
}

TEST(XmlCompiledForm, with_any_fault_names_its_file) {
    for (std::size_t i = 0; i < golden_form.size(); ++i) {
        EXPECT_THAT(loaded_form(golden_form.substr(0, i)), testing::StartsWith("form.bin: ")) << i;
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = golden_form;
            flipped[i] = static_cast<char>(flipped[i] ^ (1 << bit));
            loaded_form(flipped);
        }
    }
    EXPECT_THAT(loaded_form(golden_form + "x"), testing::HasSubstr("bytes behind the end at byte 101"));
}

TEST(XmlCompiledForm, takes_no_more_memory_than_its_bytes_can_fill) {
    // Elements inside one another, each of which promises as many children as are left to read at all.
    std::string form("XML\1\1\0\0\0a\0", 10);
    for (int i = 0; i < 1000; ++i)
        form += std::string("\1\0\0\0\0\0\0\0\0\0\0\0\xD0\x07\0\0", 16);
    EXPECT_THAT(loaded_form(form), testing::HasSubstr("too many children"));
    form.resize(10);
    for (int i = 0; i < 2000; ++i)
        form += std::string("\1\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0", 16);
    EXPECT_THAT(loaded_form(form), testing::HasSubstr("elements nested deeper than 1024"));
}

} // namespace
} // namespace kst
