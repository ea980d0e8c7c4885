#include "driver/check/AttributeCheck.h"
#include "source/utility/xml/XmlParameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace mosaicer {
namespace {

struct ValueCase {
    AttributeForm form;
    AttributeValues values;
    std::string_view value;
    std::string_view message; ///< behind `a "VALUE" `; empty if the value is sound
};

std::vector<std::string_view> right_angles() {
    return {"0", "90"};
}

std::vector<std::string_view> switch_words() {
    return {"true", "false"};
}

TEST(ValueFault, tells_what_a_value_does_not_mean) {
    using Form = AttributeForm;
    const AttributeValues any{""};
    const AttributeValues from_1{"", nullptr, 1};
    const AttributeValues share{"", nullptr, 0, 1};
    const AttributeValues angles{"", right_angles};
    const AttributeValues words{"", switch_words};
    const ValueCase cases[] = {
        {Form::integer, from_1, "64", ""},
        {Form::integer, from_1, " +64.000000 ", ""},
        {Form::integer, any, "-0", ""},
        {Form::integer, any, "-2147483648", ""},
        {Form::integer, from_1, "0", "is below 1"},
        {Form::integer, from_1, "12px", "counts as 12"},
        {Form::integer, from_1, "1.5", "counts as 1"},
        {Form::integer, from_1, "wide", "is no number and counts as 0"},
        {Form::integer, from_1, "", "is no number and counts as 0"},
        {Form::integer, any, "2147483648", "counts as 2147483647"},
        {Form::integer, any, "99999999999999999999", "counts as 2147483647"},
        {Form::integer, angles, "090", ""},
        {Form::integer, angles, "45", "is none of 0 or 90"},
        {Form::decimal, share, ".75", ""},
        {Form::decimal, share, "7.5e-1", ""},
        {Form::decimal, share, "1.01", "is above 1"},
        {Form::decimal, share, "0,75", "counts as 0"},
        {Form::decimal, share, "75%", "counts as 75"},
        {Form::decimal, share, "nan", "is no number and counts as 0"},
        {Form::boolean, words, "true", ""},
        {Form::boolean, words, "yes", "counts as false: it must be true or false"},
        {Form::keyword, words, "", ""},
        {Form::keyword, words, "TRUE", "ends the run: it must be true or false"},
        {Form::word, words, "half", "is passed over: it must be true or false"},
        {Form::integers, any, "1 -2  3", ""},
        {Form::integers, any, "1,2", ": \"1,2\" counts as 1; the numbers are separated by single blanks"},
        {Form::integers, any, "a", ": \"a\" is no number and counts as -1"},
        {Form::text, any, "anything", ""},
    };
    for (const ValueCase& each : cases) {
        const std::string message = value_fault("a", each.form, each.values, each.value).message;
        EXPECT_THAT(message, testing::EndsWith(std::string(each.message))) << each.value;
        EXPECT_EQ(message.empty(), each.message.empty()) << each.value;
        // What is said to be counted is what the reader makes of it.
        if (each.form == Form::integer && message.find("counts as") != std::string::npos) {
            EXPECT_THAT(message, testing::EndsWith(" " + std::to_string(kst::leading_integer(each.value))));
        }
    }
    EXPECT_EQ(value_fault("a", Form::integer, from_1, "12px").suggestion, "12");
    EXPECT_EQ(value_fault("a", Form::keyword, words, "TRUE").suggestion, "true");
}

} // namespace
} // namespace mosaicer
