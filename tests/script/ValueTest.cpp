#include "script/value/ScriptValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "script/value/BasicClasses.h"
#include "script/value/ClassIdMethod.h"
#include "script/value/ClassString.h"
#include "script/value/DSError.h"
#include "script/value/WrappingClass.h"
#include "script/value/numbers.h"
#include "script/value/utf16.h"

namespace kst::script {
namespace {

ScriptValue text(std::string content) {
    return string_value(std::move(content));
}

template <typename Action>
std::string error_of(Action&& action) {
    try {
        action();
    } catch (const DSBaseError& error) {
        return error.what();
    }
    return "no error";
}

struct MethodCase {
    std::string self;
    const char* method;
    std::vector<ScriptValue> arguments;
    std::string result;
};

TEST(StringValue, methods_give_what_the_table_says) {
    const MethodCase cases[] = {
        {"abcdef", "substring", {number_value(2.9f)}, "cdef"},
        {"abcdef", "substring", {number_value(-3), number_value(2)}, "ab"},
        {"abcdef", "substring", {number_value(9)}, ""},
        {"a\xc3\xa9z", "substring", {number_value(1), number_value(1)}, "\xc3\xa9"},
        {"abc", "contains", {text("bc")}, "true"},
        {"abc", "contains", {text("cb")}, "false"},
        {"\xc3\xa9\xc3\xa9x", "index", {text("x")}, "2"},
        {"abc", "index", {text("x")}, "-1"},
        {"abc", "beginswith", {text("ab")}, "true"},
        {"ab", "beginswith", {text("abc")}, "false"},
        {"abc", "endswith", {text("bc")}, "true"},
        {"\t a b\r\n", "strip", {}, "a b"},
        {" \t\r\n", "strip", {}, ""},
        {"%5.2f|%-4d|%i|%s|%%",
         "format",
         {number_value(3.14159f), number_value(7.9f), text("12x"), number_value(1.5f)},
         " 3.14|7   |12|1.5|%"},
        {"%f %4s", "format", {number_value(2.5f), text("ab")}, "2   ab"},
        {"%i", "format", {number_value(1e20f)}, "2147483647"},
        {"az", "next", {}, "ba"},
        {"zz", "next", {}, "aaa"},
        {"ZZ", "next", {}, "AAA"},
        {"99", "next", {}, "000"},
        {"a-9", "next", {}, "a-00"},
        {"Az", "next", {}, "Ba"},
        {"", "next", {}, "0"},
        {"-", "next", {}, "-0"},
        {"a<b>c<d>e<f", "replace", {text("<*>"), text("#")}, "a#c#e<f"},
        {"aXbX", "replace", {text("X"), text("")}, "ab"},
        {"one;two;", "replace", {text("*;"), text(".")}, ".."},
        {"AB", "xor", {text(" ")}, "ab"},
        {"AB", "xor", {text("")}, "AB"},
        {"\xe4", "whiteout", {}, "\t\n\r "},
        {"\t\n\r ", "whitein", {}, "\xe4"},
        {"a\xc3\xa9Z1", "toupper", {}, "A\xc3\xa9Z1"},
        {"aZ1", "tolower", {}, "az1"},
        {"\x1f\xff", "tohex", {}, "1fff"},
        {"4142g4", "fromhex", {}, std::string("AB\x04")},
        {"414", "fromhex", {}, "A@"},
    };
    for (const MethodCase& c : cases) {
        const idstring name = intern(c.method);
        EXPECT_EQ(text(c.self).call_method(name, c.arguments).to_string(), c.result) << c.self << " " << c.method;
        EXPECT_EQ(text(c.self).member(name).call(c.arguments).to_string(), c.result) << c.self << " " << c.method;
    }
}

struct ConversionCase {
    ScriptValue value;
    float number;
    std::string string;
    bool boolean;
    std::string type;
};

TEST(Value, conversions_and_types) {
    const ConversionCase cases[] = {
        {{}, 0, "", false, "<void>"},
        {boolean_value(true), 1, "true", true, "<boolean>"},
        {boolean_value(false), 0, "false", false, "<boolean>"},
        {number_value(3), 3, "3", true, "<number>"},
        {number_value(-3.5f), -3.5f, "-3.5", true, "<number>"},
        {number_value(0.00005f), 0.00005f, "4.9999999e-05", false, "<number>"},
        {number_value(0.000051f), 0.000051f, "5.0999999e-05", true, "<number>"},
        {number_value(-0.0f), 0, "0", false, "<number>"},
        {number_value(16777216), 16777216, "16777216", true, "<number>"},
        {number_value(2147483648.0f), 2147483648.0f, "2.1474836e+09", true, "<number>"},
        {number_value(-2147483648.0f), -2147483648.0f, "-2147483648", true, "<number>"},
        {number_value(0.1f), 0.1f, "0.1", true, "<number>"},
        {number_value(1.0f / 3), 1.0f / 3, "0.33333334", true, "<number>"},
        {number_value(-std::numeric_limits<float>::infinity()), -std::numeric_limits<float>::infinity(), "-inf", true,
         "<number>"},
        {text(""), 0, "", false, "<string>"},
        {text("x"), -1, "x", true, "<string>"},
        {text("false"), -1, "false", false, "<string>"},
        {text(" \n+2.5e1kg"), 25, " \n+2.5e1kg", true, "<string>"},
        {text("-.5"), -0.5f, "-.5", true, "<string>"},
        {text("0x1p4"), 16, "0x1p4", true, "<string>"},
        {text("1e99"), std::numeric_limits<float>::infinity(), "1e99", true, "<string>"},
        {text("-1e-9999"), 0, "-1e-9999", true, "<string>"},
        {text("--1"), -1, "--1", true, "<string>"},
    };
    for (const ConversionCase& c : cases) {
        EXPECT_EQ(c.value.to_number(), c.number) << c.string;
        EXPECT_EQ(c.value.to_string(), c.string);
        EXPECT_EQ(c.value.to_boolean(), c.boolean) << c.string;
        EXPECT_EQ(c.value.type_name(), c.type);
        EXPECT_EQ(c.value.member(intern("type_string")).to_string(), c.type);
        EXPECT_EQ(c.value.to_id(), intern(c.string));
        EXPECT_TRUE(c.value.clone().equals(c.value));
    }
    EXPECT_EQ(number_value(std::nanf("")).to_string(), "nan");
    EXPECT_EQ(number_value(-std::nanf("")).to_string(), "nan");
    EXPECT_EQ(truncate_to_int(std::nanf("")), 0);
}

TEST(Value, wrong_uses_tell_what_was_wrong) {
    const idstring foo = intern("foo");
    const ScriptValue seven = number_value(7);
    const std::pair<std::string, std::string> cases[] = {
        {error_of([&] { seven.set({}); }), "cant set this to a value (type:<number>)"},
        {error_of([&] { seven.call_method(foo, {}); }), "cannot find methodfoo in type<number>"},
        {error_of([&] { ScriptValue().call({}); }), "cant call this thing (type:<void>)"},
        {error_of([&] { seven.member(intern("extension")).to_string(); }), "<number> cannot have tag"},
        {error_of([&] { seven.member(intern("extension")).set(seven); }), "<number> cannot be tagged"},
        {error_of([&] { text("a").member(foo); }), "cant find member: foo in type <string>"},
        {error_of([&] { seven.member(intern("member")).call({{text("foo")}}); }),
         "cant find member: foo in type <number>"},
        {error_of([&] { seven.member(intern("member")).call({}); }), "cant call this thing (type:<member>)"},
        {error_of([&] { ScriptValue().add(seven); }), "Operator  +  does not exist!"},
        {error_of([&] { text("a").subtract(seven); }), "Operator  -  does not exist!"},
        {error_of([&] { boolean_value(true).multiply(seven); }), "Operator  *  does not exist!"},
        {error_of([&] { text("a").divide(seven); }), "Operator  /  does not exist!"},
        {error_of([&] { text("a").remainder(seven); }), "Operator  %  does not exist!"},
        {error_of([&] { text("a").call_method(intern("substring"), {}); }), "substring requires 1 or two arguments"},
        {error_of([&] {
             text("a").call_method(intern("replace"), {{text("*"), text("b")}});
         }),
         "Empty pattern"},
        {error_of([&] { text("%s").call_method(intern("format"), {}); }), "String formatting error."},
        {error_of([&] { text("%x").call_method(intern("format"), {{seven}}); }), "String formatting error."},
        {error_of([&] { text("a%").call_method(intern("format"), {{seven}}); }), "String formatting error."},
        {error_of([&] { text("%99999s").call_method(intern("format"), {{seven}}); }), "String formatting error."},
        {error_of([&] { text("abc").multiply(number_value(1e9f)); }), "String too long"},
    };
    for (const auto& [got, wanted] : cases)
        EXPECT_EQ(got, wanted);
    EXPECT_TRUE(seven.member(foo, /*must_exist=*/false).is_void());
    EXPECT_THROW(seven.member(foo), MemberNotFoundError);
}

TEST(Value, arithmetic_and_order) {
    EXPECT_EQ(number_value(1).add(text("2x")).to_number(), 3);
    EXPECT_EQ(number_value(1).divide({}).to_string(), "inf");
    EXPECT_EQ(number_value(5).remainder(number_value(3)).to_number(), 0);
    EXPECT_EQ(text("ab").multiply(number_value(2.9f)).to_string(), "abab");
    EXPECT_EQ(text("ab").add(number_value(1.5f)).to_string(), "ab1.5");
    EXPECT_TRUE(number_value(-1).less(number_value(2)));
    EXPECT_TRUE(text("abc").less(text("abd")));
    EXPECT_TRUE(id_value(intern("same")).equals(text("same")));
    // Across classes the content plays no part.
    const bool string_first = text("abc").less(number_value(3));
    EXPECT_EQ(text("0").less(number_value(1e9f)), string_first);
    EXPECT_EQ(number_value(3).less(text("abc")), !string_first);
    EXPECT_FALSE(text("3").equals(number_value(3)));
}

TEST(StringValue, counts_in_16_bit_units_and_calls_as_substring) {
    const ScriptValue mixed = text("a\xc3\xa9\xf0\x9f\x98\x80");
    EXPECT_EQ(mixed.member(intern("size")).to_number(), 4);
    EXPECT_EQ(mixed.call({{number_value(1), number_value(1)}}).to_string(), "\xc3\xa9");
    EXPECT_EQ(mixed.call({{number_value(2)}}).to_string(), "\xf0\x9f\x98\x80");
    EXPECT_TRUE(mixed.call({{text("1")}}).identical(mixed));
    const std::string halves =
        mixed.call({{number_value(2), number_value(1)}}).to_string() + mixed.call({{number_value(3)}}).to_string();
    EXPECT_EQ(encode_utf8(decode_utf8(halves)), "\xf0\x9f\x98\x80");
    EXPECT_TRUE(text("1.5kg").member(intern("good_number")).to_boolean());
    EXPECT_FALSE(text("kg").member(intern("good_number")).to_boolean());
}

TEST(Utf16, gives_broken_text_back_byte_for_byte) {
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 8, '\0');
        for (char& c : bytes)
            c = static_cast<char>("\x80\xbf\xc2\xe0\xa0\xed\xb2\xf0\x90\xf4\xff"
                                  "ab"[random() % 13]);
        const std::u16string units = decode_utf8(bytes);
        EXPECT_EQ(count_units(bytes), units.size());
        EXPECT_EQ(decode_utf8(encode_utf8(units)), units);
        if (bytes.find('\xed') == std::string::npos) {
            EXPECT_EQ(encode_utf8(units), bytes);
        }
    }
}

TEST(Value, every_record_goes_back_to_its_pool) {
    const auto live = [] {
        return ClassString::instance().live() + ClassIdMethod::instance().live() + ClassTag::instance().live() +
               MemberClass::instance().live();
    };
    const std::size_t before = live();
    {
        ScriptValue a = text(std::string(1000, 'x'));
        ScriptValue b = a;
        const ScriptValue method = a.member(intern("next"));
        a = b.member(intern("extension"));
        b = std::move(a);
        a = method.call({}).member(intern("member"));
        b = ScriptValue(b);
        EXPECT_EQ(live(), before + 5);
    }
    EXPECT_EQ(live(), before);
}

TEST(Value, a_long_chain_goes_without_deep_recursion) {
    const std::size_t before = ClassTag::instance().live();
    ScriptValue chain = text("end");
    for (int i = 0; i < 1000000; ++i)
        chain = ClassTag::instance().wrap(std::move(chain));
    chain = {};
    EXPECT_EQ(ClassTag::instance().live(), before);
}

} // namespace
} // namespace kst::script
