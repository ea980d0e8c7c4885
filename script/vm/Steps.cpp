#include <algorithm>
#include <cmath>

#include "script/value/BasicClasses.h"
#include "script/value/ClassString.h"
#include "script/value/names.h"
#include "script/vm/Interpreter.h"
#include "script/vm/ObjectClasses.h"
#include "script/vm/ReferenceClasses.h"
#include "script/vm/ScriptedClass.h"

namespace kst::script {

namespace {

/// Identifiers above this do not fit a resolved operand, which then stays text.
constexpr idstring longest_resolved = 0xffffff;

std::uint32_t read_24(const std::uint8_t* p) {
    return p[0] | static_cast<std::uint32_t>(p[1]) << 8 | static_cast<std::uint32_t>(p[2]) << 16;
}

std::uint32_t read_32(const std::uint8_t* p) {
    return read_24(p) | static_cast<std::uint32_t>(p[3]) << 24;
}

/// Puts the identifier in the place of the text, if both it and the operand's length fit.
void resolve_operand(std::uint8_t* operand, std::size_t text_size, idstring id) {
    if (text_size > longest_name || id > longest_resolved)
        return;
    const auto number = static_cast<std::uint32_t>(id);
    operand[0] = 0;
    operand[1] = static_cast<std::uint8_t>(number);
    operand[2] = static_cast<std::uint8_t>(number >> 8);
    operand[3] = static_cast<std::uint8_t>(number >> 16);
    operand[4] = static_cast<std::uint8_t>(std::max(text_size + 1, least_name_operand));
}

bool less(const ScriptValue& a, const ScriptValue& b) {
    return is_number(a) && is_number(b) ? float_of(a) < float_of(b) : a.less(b);
}

bool equal(const ScriptValue& a, const ScriptValue& b) {
    if (a.kind() == ClassKind::string && b.kind() == ClassKind::string)
        return a.identical(b) || ClassString::instance().same_text(a.data(), b.data());
    return a.equals(b);
}

bool compare(Opcode opcode, const ScriptValue& left, const ScriptValue& right) {
    switch (opcode) {
    case Opcode::lt:
        return less(left, right);
    case Opcode::le:
        return !less(right, left);
    case Opcode::gt:
        return less(right, left);
    case Opcode::ge:
        return !less(left, right);
    case Opcode::eq:
        return equal(left, right);
    default:
        return !equal(left, right);
    }
}

ScriptValue calculate(Opcode opcode, const ScriptValue& left, const ScriptValue& right) {
    switch (opcode) {
    case Opcode::add:
        return left.add(right);
    case Opcode::sub:
        return left.subtract(right);
    case Opcode::mul:
        // A number may multiply whatever knows how to be multiplied by one.
        return is_number(left) ? right.multiply(left) : left.multiply(right);
    default:
        return left.divide(right);
    }
}

float calculate_numbers(Opcode opcode, float left, float right) {
    switch (opcode) {
    case Opcode::add_numbers:
        return left + right;
    case Opcode::sub_numbers:
        return left - right;
    case Opcode::mul_numbers:
        return left * right;
    case Opcode::div_numbers:
        return left / right;
    default:
        return std::fmod(left, right);
    }
}

} // namespace

std::uint8_t* Interpreter::operand() const {
    return vm_->code_.data() + ip_->offset + 1;
}

idstring Interpreter::resolve_name(std::uint8_t* operand) {
    if (*operand == 0)
        return static_cast<idstring>(read_24(operand + 1));
    const std::string_view text(reinterpret_cast<const char*>(operand));
    const idstring id = intern(text);
    resolve_operand(operand, text.size(), id);
    return id;
}

idstring Interpreter::site_id() {
    NameSite& site = *ip_->site;
    if (site.id == NameSite::unknown)
        site.id = resolve_name(operand());
    return site.id;
}

// As a name, but it may be empty (five zeros: a resolved operand is never of length 0) and of any length.
void Interpreter::push_string() {
    const std::uint8_t* const text = operand();
    if (ip_->site->id != NameSite::unknown)
        return values_.push(id_value(ip_->site->id));
    if (*text == 0 && text[4] == 0)
        return values_.push(string_value({}));
    if (*text != 0)
        if (std::string long_text(reinterpret_cast<const char*>(text)); long_text.size() > longest_name)
            return values_.push(string_value(std::move(long_text)));
    values_.push(id_value(site_id()));
}

ScriptValue Interpreter::take_right() {
    if (ip_->right_place == ValuePlace::stack)
        return values_.pop();
    return at(ip_->right_place, ip_->right);
}

ScriptValue Interpreter::take_left() {
    if (ip_->left_place == ValuePlace::stack)
        return values_.pop();
    return at(ip_->left_place, ip_->left);
}

void Interpreter::deliver(ScriptValue&& value) {
    if (ip_->result_place == ValuePlace::stack)
        return values_.push(std::move(value));
    if (ip_->result_place == ValuePlace::argument)
        return locals_.push(std::move(value));
    at(ip_->result_place, ip_->result) = std::move(value);
}

// Text grows at its end where it is, if it is what an expression made so far, or a variable that gets the result:
//
//   x := x + "," + y       one copy of x in all, and none in  x := x + y
bool Interpreter::append_text(const ScriptValue& right) {
    const bool to_itself = ip_->left_place == ip_->result_place && ip_->left == ip_->result;
    if (ip_->opcode != Opcode::add || (is_indexed(ip_->left_place) && !to_itself))
        return false;
    const bool on_stack = !is_indexed(ip_->left_place);
    const ScriptValue& left = on_stack ? values_.top() : at(ip_->left_place, ip_->left);
    if (left.kind() != ClassKind::string || !ClassString::instance().append(left.data(), right))
        return false;
    if (on_stack && ip_->result_place != ValuePlace::stack)
        deliver(values_.pop());
    return true;
}

void Interpreter::binary() {
    ScriptValue result;
    {
        const ScriptValue right = take_right();
        if (append_text(right))
            return;
        const ScriptValue left = take_left();
        result = calculate(ip_->opcode, left, right);
    }
    check_programs(); // ahead of the look for the place
    deliver(std::move(result));
}

bool Interpreter::compare_operands() {
    const ScriptValue right = take_right();
    const ScriptValue left = take_left();
    return compare(ip_->opcode, left, right);
}

void Interpreter::store() {
    ScriptValue value = take_left();
    at(ip_->result_place, ip_->result) = std::move(value);
}

void Interpreter::assign() {
    const ScriptValue value = values_.pop();
    const ScriptValue place = values_.pop();
    place.set(value);
}

void Interpreter::convert() {
    const ScriptValue value = values_.pop();
    if (ip_->opcode == Opcode::cnv_number)
        values_.push(number_value(value.to_number()));
    else if (ip_->opcode == Opcode::cnv_boolean)
        values_.push(boolean_value(value.to_boolean()));
    else
        values_.push(value.kind() == ClassKind::string ? ScriptValue(value) : string_value(value.to_string()));
}

bool Interpreter::pop_boolean() {
    return values_.pop().to_boolean();
}

void Interpreter::dereference() {
    values_.push(values_.pop().clone());
}

void Interpreter::resize_frame() {
    locals_.resize(&at(ValuePlace::local, ip_->count));
}

void Interpreter::release(ScriptClass& value_class, ScriptClass::Data data) {
    value_class.release(data);
}

bool Interpreter::find_own_member(const ScriptValue& object) {
    const idstring id = site_id();
    if (object.kind() != ClassKind::instance || is_universal_member(id))
        return false;
    auto* const scripted_class = ScriptVM::ClassInstance::instance().class_of(object.data());
    if (scripted_class == nullptr)
        return false;
    NameSite& site = *ip_->site;
    if (site.class_serial == scripted_class->serial())
        return true;
    const std::uint32_t index = scripted_class->find_member(id);
    if (index == NameTable::not_found)
        return false;
    site.index = index;
    site.start = scripted_class->start_of(index);
    site.class_serial = scripted_class->serial();
    return true;
}

void Interpreter::read_member() {
    const ScriptValue object = values_.pop();
    if (find_own_member(object)) {
        auto& instances = ScriptVM::ClassInstance::instance();
        const auto& members = instances.class_of(object.data())->members(instances.object_of(object.data()));
        return values_.push(ScriptValue(members[ip_->site->index]));
    }
    values_.push(object.member(site_id(), /*must_exist=*/true));
}

void Interpreter::prepare_method() {
    ScriptValue& object = values_.top();
    if (object.kind() == ClassKind::other && object.take_member(site_id(), ip_->site->cache))
        return;
    if (find_own_member(object) && ip_->site->start != nullptr)
        object.overwrite(ScriptVM::ClassCalledInstance::instance(), object.data()); // owns what it owned
    else
        read_member();
}

void Interpreter::declare() {
    std::uint8_t* const name = operand();
    switch (ip_->opcode) {
    case Opcode::import_:
        return vm_->declare_import(resolve_name(name));
    case Opcode::declare_object:
        return vm_->declare_object(resolve_name(name));
    case Opcode::declare_function:
        return vm_->declare_function(resolve_name(name + 4), read_32(name));
    case Opcode::begin_class:
        return vm_->begin_class(resolve_name(name));
    default:
        return vm_->end_class();
    }
}

void Interpreter::other() {
    const Opcode opcode = ip_->opcode;
    const std::uint32_t index = ip_->left;
    switch (opcode) {
    case Opcode::import_:
    case Opcode::declare_object:
    case Opcode::declare_function:
    case Opcode::begin_class:
    case Opcode::end_class:
        return declare();
    case Opcode::push_global_ref:
        return values_.push({*vm_->global_ref_class_, index});
    case Opcode::push_member_ref:
        return values_.push({ScriptVM::ClassCurrentClassMemberRef::instance(), index});
    case Opcode::push_local_ref: {
        const std::size_t absolute = stacks_.locals.index_of(&at(ValuePlace::local, 0)) + index;
        return values_.push({ScriptVM::ClassLocalRef::instance(), static_cast<std::uint32_t>(absolute)});
    }
    case Opcode::cnv_number:
    case Opcode::cnv_string:
    case Opcode::cnv_boolean:
        return convert();
    case Opcode::lt:
    case Opcode::le:
    case Opcode::eq:
    case Opcode::ge:
    case Opcode::gt:
    case Opcode::ne:
        return values_.push(boolean_value(compare_operands()));
    case Opcode::mod:
    case Opcode::add_numbers:
    case Opcode::sub_numbers:
    case Opcode::mul_numbers:
    case Opcode::div_numbers: {
        const float right = values_.pop().to_number();
        const float left = values_.pop().to_number();
        return values_.push(number_value(calculate_numbers(opcode, left, right)));
    }
    case Opcode::negate:
        return values_.push(number_value(-values_.pop().to_number()));
    case Opcode::assign:
        return assign();
    case Opcode::push_global:
        fail("Internal error: No such global");
    default:
        fail("Internal error: Invalid opcode");
    }
}

} // namespace kst::script
