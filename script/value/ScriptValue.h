#pragma once

#include <bit>
#include <string>
#include <utility>

#include "script/value/ScriptClass.h"

namespace kst::script {

/// The class of void, and of the default-constructed value.
extern constinit ScriptClass void_class;

/// Everything that a script touches: a class and one 32-bit word. Copying tells the class, destroying too; numbers,
/// booleans and void have no storage behind them and cost neither.
///
/// A moved-from value is void. Not for use by several threads.
class ScriptValue {
public:
    using Data = ScriptClass::Data;

    ScriptValue() : class_(&void_class), data_(0) {}
    /// A further reference to what `data` stands for.
    ScriptValue(ScriptClass& value_class, Data data) : class_(&value_class), data_(data) { add_ref(); }
    ScriptValue(const ScriptValue& other) : class_(other.class_), data_(other.data_) { add_ref(); }
    ScriptValue(ScriptValue&& other) noexcept
        : class_(std::exchange(other.class_, &void_class)), data_(std::exchange(other.data_, 0)) {}
    // The old content goes last, when this value already holds the new one: its release may run anything.
    ScriptValue& operator=(const ScriptValue& other) {
        ScriptValue copy(other);
        swap(copy);
        return *this;
    }
    ScriptValue& operator=(ScriptValue&& other) noexcept {
        ScriptValue taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~ScriptValue() {
        if (class_->counted())
            class_->release(data_);
    }

    /// The value that owns the one reference a pool entry was made with.
    static ScriptValue adopt(ScriptClass& value_class, Data data) {
        ScriptValue value;
        value.class_ = &value_class;
        value.data_ = data;
        return value;
    }

    void swap(ScriptValue& other) noexcept {
        std::swap(class_, other.class_);
        std::swap(data_, other.data_);
    }

    /// Sets class and word with no regard to the content, which must own nothing; neither must the new one.
    void overwrite(ScriptClass& value_class, Data data) {
        class_ = &value_class;
        data_ = data;
    }

    ScriptClass& value_class() const { return *class_; }
    Data data() const { return data_; }
    ClassKind kind() const { return class_->kind(); }
    bool is_void() const { return class_ == &void_class; }
    /// The same class and the same word: equal without asking the class.
    bool identical(const ScriptValue& other) const { return class_ == other.class_ && data_ == other.data_; }

    float to_number() const { return class_->to_number(data_); }
    std::string to_string() const { return class_->to_string(data_); }
    bool to_boolean() const { return class_->to_boolean(data_); }
    idstring to_id() const { return class_->to_id(data_); }
    void set(const ScriptValue& value) const { class_->set(data_, value); }
    ScriptValue call_method(idstring id, Arguments arguments) const {
        return class_->call_method(data_, id, arguments);
    }
    ScriptValue call(Arguments arguments) const { return class_->call(data_, arguments); }
    ScriptValue get_tag() const { return class_->get_tag(data_); }
    void set_tag(const ScriptValue& value) const { class_->set_tag(data_, value); }
    /// Member access. `extension` gives this value's tag slot and `member` its members by computed name, whatever the
    /// class; every other name is the class's matter.
    ScriptValue member(idstring id, bool must_exist = true) const;
    /// Turns this value into its member, or says false: see ScriptClass::take_member.
    bool take_member(idstring id, MemberCache& cache) { return class_->take_member(*this, id, cache); }
    bool has_member(idstring id) const { return class_->has_member(data_, id); }
    ScriptValue add(const ScriptValue& right) const { return class_->add(data_, right); }
    ScriptValue subtract(const ScriptValue& right) const { return class_->subtract(data_, right); }
    ScriptValue multiply(const ScriptValue& right) const { return class_->multiply(data_, right); }
    ScriptValue divide(const ScriptValue& right) const { return class_->divide(data_, right); }
    ScriptValue remainder(const ScriptValue& right) const { return class_->remainder(data_, right); }
    bool less(const ScriptValue& other) const { return class_->less(data_, other); }
    /// The language's `=`: identical, or neither less than the other.
    bool equals(const ScriptValue& other) const { return identical(other) || (!less(other) && !other.less(*this)); }
    std::string type_name() const { return class_->type_name(data_); }
    ScriptValue clone() const { return class_->clone(data_); }
    void* native_pointer() const { return class_->native_pointer(data_); }
    void instance_hook() const { class_->instance_hook(data_); }

private:
    void add_ref() const {
        if (class_->counted())
            class_->add_ref(data_);
    }

    ScriptClass* class_;
    Data data_;
};

inline ScriptValue void_value() {
    return {};
}
/// Throws DSError for a text above max_string_bytes.
ScriptValue string_value(std::string text);
/// A string of which only the identifier is known; its text is fetched when somebody reads it.
ScriptValue id_value(idstring id);

} // namespace kst::script
