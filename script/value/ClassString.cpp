#include "script/value/ClassString.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "script/value/BasicClasses.h"
#include "script/value/ClassIdMethod.h"
#include "script/value/DSError.h"
#include "script/value/format_text.h"
#include "script/value/numbers.h"
#include "script/value/text_operations.h"
#include "script/value/utf16.h"

namespace kst::script {

namespace {

/// Text that outgrew this is given back when its record goes; less stays for the next user.
constexpr std::size_t kept_capacity = 64;

ScriptValue method_substring(const ScriptValue& self, Arguments arguments) {
    const std::string& text = ClassString::instance().text(self.data());
    if (arguments.size() == 1)
        return string_value(substring(text, arguments[0].to_number()));
    if (arguments.size() == 2)
        return string_value(substring(text, arguments[0].to_number(), arguments[1].to_number()));
    throw DSError("substring requires 1 or two arguments");
}

ScriptValue method_replace(const ScriptValue& self, Arguments arguments) {
    const std::string& text = ClassString::instance().text(self.data());
    const ScriptValue& by = arguments[1];
    return string_value(replace_pattern(text, arguments[0].to_string(), [&](std::string_view between) {
        if (by.kind() == ClassKind::string)
            return by.to_string();
        const ScriptValue argument = string_value(std::string(between));
        return by.call({&argument, 1}).to_string();
    }));
}

using Text = const std::string&;

/// Most methods: text in, text or something simple out.
template <auto operation>
ScriptValue on_text(const ScriptValue& self, Arguments) {
    return string_value(operation(ClassString::instance().text(self.data())));
}

template <auto operation>
ScriptValue on_two_texts(const ScriptValue& self, Arguments arguments) {
    return operation(ClassString::instance().text(self.data()), arguments[0].to_string());
}

struct StringMethod {
    std::string_view name;
    /// -1: the method looks at the count itself.
    int arguments;
    ScriptValue (*call)(const ScriptValue& self, Arguments arguments);
};

constexpr std::array string_methods{
    StringMethod{"substring", -1, method_substring},
    StringMethod{"contains", 1, on_two_texts<[](Text a, Text b) { return boolean_value(a.find(b) != a.npos); }>},
    StringMethod{"index", 1,
                 on_two_texts<[](Text a, Text b) { return number_value(static_cast<float>(index_of(a, b))); }>},
    StringMethod{"beginswith", 1, on_two_texts<[](Text a, Text b) { return boolean_value(a.starts_with(b)); }>},
    StringMethod{"endswith", 1, on_two_texts<[](Text a, Text b) { return boolean_value(a.ends_with(b)); }>},
    StringMethod{"strip", 0, on_text<strip_blanks>},
    StringMethod{"format", -1,
                 [](const ScriptValue& self, Arguments arguments) {
                     return string_value(format_text(ClassString::instance().text(self.data()), arguments));
                 }},
    StringMethod{"next", 0, on_text<next_text>},
    StringMethod{"replace", 2, method_replace},
    StringMethod{"xor", 1, on_two_texts<[](Text a, Text b) { return string_value(xor_text(a, b)); }>},
    StringMethod{"whiteout", 0, on_text<to_blanks>},
    StringMethod{"whitein", 0, on_text<from_blanks>},
    StringMethod{"toupper", 0, on_text<to_upper_ascii>},
    StringMethod{"tolower", 0, on_text<to_lower_ascii>},
    StringMethod{"tohex", 0, on_text<to_hex>},
    StringMethod{"fromhex", 0, on_text<from_hex>},
};

struct StringNames {
    idstring size = intern("size");
    idstring good_number = intern("good_number");
    std::array<idstring, string_methods.size()> methods;

    StringNames() : methods() {
        std::ranges::transform(string_methods, methods.begin(), [](const StringMethod& m) { return intern(m.name); });
    }
};

const StringNames& string_names() {
    static const StringNames instance;
    return instance;
}

const StringMethod* find_method(idstring id) {
    const auto& ids = string_names().methods;
    const auto found = std::ranges::find(ids, id);
    return found == ids.end() ? nullptr : &string_methods[static_cast<std::size_t>(found - ids.begin())];
}

} // namespace

ScriptValue string_value(std::string text) {
    return ClassString::instance().make(std::move(text));
}
ScriptValue id_value(idstring id) {
    return ClassString::instance().make(id);
}

ClassString::ClassString() : ScriptClass(Counting::pooled, ClassKind::string) {}

// Never destroyed: values may go as late as the program's last static object.
ClassString& ClassString::instance() {
    static ClassString& instance = *new ClassString;
    return instance;
}

ScriptValue ClassString::make(std::string text) {
    check_string_size(text.size());
    const Data data = pool_.take();
    Record& record = pool_[data];
    record.state = State::text_only;
    record.text = std::move(text);
    return ScriptValue::adopt(*this, data);
}

ScriptValue ClassString::make(idstring id) {
    const Data data = pool_.take();
    Record& record = pool_[data];
    record.state = State::id_only;
    record.id = id;
    return ScriptValue::adopt(*this, data);
}

const std::string& ClassString::text(Data data) {
    Record& record = pool_[data];
    if (record.state == State::id_only) {
        record.text = idstring_text(record.id);
        record.state = State::both;
    }
    return record.text;
}

void ClassString::release(Data data) {
    if (pool_.drop_ref(data) > 0)
        return;
    std::string& text = pool_[data].text;
    text.clear();
    if (text.capacity() > kept_capacity)
        text.shrink_to_fit();
    pool_.give_back(data);
}

float ClassString::to_number(Data data) {
    const std::string& digits = text(data);
    return digits.empty() ? 0.0f : scan_number(digits).value_or(-1.0f);
}

bool ClassString::to_boolean(Data data) {
    const std::string& content = text(data);
    return !content.empty() && content != "false";
}

idstring ClassString::to_id(Data data) {
    Record& record = pool_[data];
    if (record.state == State::text_only) {
        record.id = intern(record.text);
        record.state = State::both;
    }
    return record.id;
}

ScriptValue ClassString::call_method(Data data, idstring id, Arguments arguments) {
    const StringMethod* method = find_method(id);
    if (method == nullptr)
        return ScriptClass::call_method(data, id, arguments);
    if (method->arguments > 0 && arguments.size() < static_cast<std::size_t>(method->arguments))
        throw DSError(std::string(method->name) + " requires " + std::to_string(method->arguments) + " arguments");
    // Held: a method that calls back may see the last other reference go.
    const ScriptValue self(*this, data);
    return method->call(self, arguments);
}

ScriptValue ClassString::call(Data data, Arguments arguments) {
    if (arguments.size() == 1 && is_number(arguments[0]))
        return string_value(substring(text(data), arguments[0].to_number()));
    if (arguments.size() == 2 && is_number(arguments[0]) && is_number(arguments[1]))
        return string_value(substring(text(data), arguments[0].to_number(), arguments[1].to_number()));
    return {*this, data};
}

ScriptValue ClassString::member(Data data, idstring id, bool must_exist) {
    if (id == string_names().size)
        return number_value(static_cast<float>(count_units(text(data))));
    if (id == string_names().good_number)
        return boolean_value(scan_number(text(data)).has_value());
    if (find_method(id) != nullptr)
        return ClassIdMethod::instance().make(ScriptValue(*this, data), id);
    return ScriptClass::member(data, id, must_exist);
}

bool ClassString::has_member(Data, idstring id) {
    return id == string_names().size || id == string_names().good_number || find_method(id) != nullptr;
}

ScriptValue ClassString::add(Data data, const ScriptValue& right) {
    const std::string& left = text(data);
    if (right.kind() == ClassKind::string) {
        const std::string& tail = text(right.data());
        std::string joined;
        joined.reserve(left.size() + tail.size());
        return make(std::move(joined.append(left).append(tail)));
    }
    return make(left + right.to_string());
}

bool ClassString::append(Data left, const ScriptValue& right) {
    // Another class may run anything to make its text, and see the string.
    if (pool_.count(left) != 1 || right.kind() > ClassKind::string)
        return false;
    const auto append_text = [&](const std::string& tail) {
        check_string_size(text(left).size() + tail.size());
        Record& record = pool_[left];
        record.text.append(tail);
        record.state = State::text_only;
    };
    if (right.kind() == ClassKind::string)
        append_text(text(right.data()));
    else
        append_text(right.to_string());
    return true;
}

ScriptValue ClassString::multiply(Data data, const ScriptValue& right) {
    return make(repeat(text(data), right.to_number()));
}

bool ClassString::less(Data data, const ScriptValue& other) {
    if (&other.value_class() != this)
        return ScriptClass::less(data, other);
    return text(data) < text(other.data());
}

bool ClassString::same_text(Data left, Data right) {
    const Record& a = pool_[left];
    const Record& b = pool_[right];
    if (a.state != State::text_only && b.state != State::text_only)
        return a.id == b.id;
    return text(left) == text(right);
}

} // namespace kst::script
