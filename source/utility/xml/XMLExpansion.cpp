#include "source/utility/ascii.h"
#include "source/utility/expression/ExpressionEvaluator.h"
#include "source/utility/xml/XMLParseContext.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

namespace kst {
namespace {

bool is_name_character(char c) {
    return c != ':' && xml_byte_is(c, XML_BYTE_NAME);
}

/// A text that is searched from front to back and changed at the place of the search. What lies behind the search
/// stands at the end of a buffer with room ahead of it, so a replacement costs its own length and not the text's.
///
///   done_: "a [1] b "      buffer_: "...........@m(2) c"
///                                               ^ rest_
class SearchedText {
public:
    SearchedText(std::string text, const XMLParseContext& context) : buffer_(std::move(text)), context_(context) {}

    std::string_view rest() const { return std::string_view(buffer_).substr(rest_); }

    /// Replaces `rest()[begin, end)`. The search goes on `overlap` characters ahead of the replacement, where it may
    /// have made a match together with what stands there.
    void replace(std::size_t begin, std::size_t end, std::string_view replacement, std::size_t overlap) {
        context_.charge_expansion(replacement.size());
        done_.append(buffer_, rest_, begin);
        rest_ += end;
        prepend(replacement);
        overlap = std::min(overlap, done_.size());
        prepend(std::string_view(done_).substr(done_.size() - overlap));
        done_.resize(done_.size() - overlap);
    }

    std::string whole() && { return done_.append(buffer_, rest_); }

private:
    void prepend(std::string_view text) {
        if (text.size() > rest_) {
            const std::size_t room = text.size() + (buffer_.size() - rest_);
            std::string wider(room, '\0');
            wider.append(buffer_, rest_);
            buffer_ = std::move(wider);
            rest_ = room;
        }
        rest_ -= text.size();
        text.copy(buffer_.data() + rest_, text.size());
    }

    std::string done_;
    std::string buffer_;
    std::size_t rest_ = 0;
    const XMLParseContext& context_;
};

/// Until none is left, also of those that a replacement brings.
std::string replace_all(std::string text, std::string_view what, std::string_view by, const XMLParseContext& context) {
    SearchedText searched(std::move(text), context);
    for (;;) {
        const std::size_t place = searched.rest().find(what);
        if (place == std::string_view::npos)
            return std::move(searched).whole();
        searched.replace(place, place + what.size(), by, what.size() - 1);
    }
}

/// The value's first component as "%f" prints it.
std::string value_of(const std::string& expression, const XMLParseContext& context) {
    ExpressionEvaluator evaluator(context.state.random_state);
    ExpressionProgram program;
    evaluator.compile(expression, program);
    if (!program.unknown_identifiers.empty())
        context.reader.fail("Unknown identifier " + program.unknown_identifiers.front());
    const auto value = static_cast<double>(evaluator.evaluate(program));
    context.state.random_state = evaluator.random_state();
    // A float has up to 39 digits ahead of the point.
    std::array<char, 64> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, 6);
    return {digits.data(), end.ptr};
}

struct Call {
    std::vector<std::string_view> arguments;
    /// Behind the call, counted from the end of its name.
    std::size_t length = 0;
};

/// `text` begins behind the name. The first parentheses count, wherever they are and whatever stands before them.
Call read_call(std::string_view text) {
    Call call;
    const std::size_t open = text.find('(');
    const std::size_t close = text.find(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return call;
    call.length = close + 1;
    std::string_view list = text.substr(open + 1, close - open - 1);
    for (std::size_t comma = list.find(','); comma != std::string_view::npos; comma = list.find(',')) {
        call.arguments.push_back(trimmed(list.substr(0, comma)));
        list.remove_prefix(comma + 1);
    }
    call.arguments.push_back(trimmed(list));
    return call;
}

std::string body_with(const XMLMacro& macro, const std::vector<std::string_view>& arguments,
                      const XMLParseContext& context) {
    std::string body = macro.body;
    for (const std::uint32_t i : macro.replacement_order)
        body = replace_all(std::move(body), macro.parameters[i], arguments[i], context);
    return macro.is_expression ? value_of(body, context) : body;
}

/// Where the macro's next call stands in a text, or npos. A longer name that begins like the macro's hides whatever
/// follows it.
std::size_t find_call(const XMLMacro& macro, std::string_view text) {
    const std::size_t place = text.find(macro.name);
    if (place == std::string_view::npos)
        return place;
    const std::size_t end = place + macro.name.size();
    return end < text.size() && is_name_character(text[end]) ? std::string_view::npos : place;
}

std::string apply_until_gone(const XMLMacro& macro, std::string text, const XMLParseContext& context) {
    SearchedText searched(std::move(text), context);
    for (;;) {
        const std::string_view rest = searched.rest();
        const std::size_t begin = find_call(macro, rest);
        if (begin == std::string_view::npos)
            return std::move(searched).whole();
        std::size_t end = begin + macro.name.size();
        Call call;
        if (!macro.parameters.empty()) {
            call = read_call(rest.substr(end));
            end += call.length;
            while (call.arguments.size() > macro.parameters.size() && call.arguments.back().empty())
                call.arguments.pop_back();
            if (call.arguments.size() != macro.parameters.size())
                context.reader.fail("Wrong number of macro parameters to " + macro.name);
        }
        searched.replace(begin, end, body_with(macro, call.arguments, context), macro.name.size() - 1);
    }
}

} // namespace

void XMLParseContext::charge_expansion(std::size_t bytes) const {
    const std::uint64_t allowed =
        xml_limits::expansion_bytes + xml_limits::expansion_bytes_per_source_byte * state.source_bytes;
    state.expanded_bytes += bytes + xml_limits::replacement_cost;
    if (state.expanded_bytes > allowed)
        reader.fail("Macro expansion exceeds " + std::to_string(allowed) + " bytes");
}

std::string expand_macros(const XMLMacroTable& table, std::string_view text, const XMLParseContext& context) {
    std::string result(text);
    for (std::size_t at = result.find('@'); at != std::string::npos; at = result.find('@', at + 1)) {
        std::size_t end = at + 1;
        while (end < result.size() && is_name_character(result[end]))
            ++end;
        const XMLMacro* const macro = table.find(std::string_view(result).substr(at + 1, end - at - 1));
        if (macro && find_call(*macro, result) != std::string_view::npos)
            result = apply_until_gone(*macro, std::move(result), context);
    }
    return result;
}

} // namespace kst
