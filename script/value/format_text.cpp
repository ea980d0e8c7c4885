#include "script/value/format_text.h"

#include "script/value/DSError.h"
#include "script/value/ScriptValue.h"
#include "script/value/numbers.h"
#include "script/value/text_operations.h"

namespace kst::script {

namespace {

struct Field {
    bool left_justified = false;
    int width = 0;
    int precision = 0;
    char kind = 0;
};

[[noreturn]] void fail() {
    throw DSError("String formatting error.");
}

class FieldReader {
public:
    FieldReader(std::string_view format, std::size_t position) : format_(format), position_(position) {}

    Field read() {
        Field field;
        field.left_justified = skip('-');
        field.width = decimal();
        if (skip('.'))
            field.precision = decimal();
        if (position_ == format_.size())
            fail();
        field.kind = format_[position_++];
        return field;
    }
    std::size_t position() const { return position_; }

private:
    bool skip(char c) {
        const bool found = position_ < format_.size() && format_[position_] == c;
        position_ += found ? 1 : 0;
        return found;
    }

    int decimal() {
        int value = 0;
        for (; position_ < format_.size() && format_[position_] >= '0' && format_[position_] <= '9'; ++position_) {
            value = value * 10 + (format_[position_] - '0');
            if (value > max_format_width)
                fail();
        }
        return value;
    }

    std::string_view format_;
    std::size_t position_;
};

std::string field_text(const Field& field, const ScriptValue& value) {
    switch (field.kind) {
    case 'f':
        return fixed_text(value.to_number(), field.precision);
    case 'd':
    case 'i':
        return std::to_string(truncate_to_int(value.to_number()));
    case 's':
        return value.to_string();
    default:
        fail();
    }
}

void append_field(std::string& result, const Field& field, const std::string& text) {
    const auto width = static_cast<std::size_t>(field.width);
    const std::size_t padding = width > text.size() ? width - text.size() : 0;
    check_string_size(result.size() + padding + text.size());
    if (!field.left_justified)
        result.append(padding, ' ');
    result += text;
    if (field.left_justified)
        result.append(padding, ' ');
}

} // namespace

std::string format_text(std::string_view format, Arguments arguments) {
    std::string result;
    std::size_t next_argument = 0;
    for (std::size_t i = 0; i < format.size();) {
        if (format[i] != '%') {
            result.push_back(format[i++]);
            continue;
        }
        if (format.substr(i).starts_with("%%")) {
            result.push_back('%');
            i += 2;
            continue;
        }
        FieldReader reader(format, i + 1);
        const Field field = reader.read();
        if (next_argument == arguments.size())
            fail();
        append_field(result, field, field_text(field, arguments[next_argument++]));
        i = reader.position();
    }
    return result;
}

} // namespace kst::script
