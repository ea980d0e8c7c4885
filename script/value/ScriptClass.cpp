#include "script/value/ScriptClass.h"

#include "script/value/DSError.h"
#include "script/value/Library.h"
#include "script/value/ScriptValue.h"
#include "script/value/names.h"

namespace kst::script {

namespace {

std::uint32_t next_order() {
    static std::uint32_t next = 16; // below: the classes that stand ready from the start
    return next++;
}

[[noreturn]] void no_operator(std::string_view sign) {
    throw DSError("Operator " + std::string(sign) + " does not exist!");
}

} // namespace

constinit ScriptClass void_class(ClassKind::plain_void, Counting::none, 0);

ScriptClass::ScriptClass(Counting counting, ClassKind kind)
    : order_(next_order()), kind_(kind), counted_(counting == Counting::pooled) {}

void ScriptClass::add_ref(Data) {}
void ScriptClass::release(Data) {}
float ScriptClass::to_number(Data) {
    return 0;
}
std::string ScriptClass::to_string(Data) {
    return {};
}
bool ScriptClass::to_boolean(Data) {
    return false;
}
idstring ScriptClass::to_id(Data data) {
    return intern(to_string(data));
}

void ScriptClass::set(Data data, const ScriptValue&) {
    throw DSError("cant set this to a value (type:" + type_name(data) + ")");
}

ScriptValue ScriptClass::call_method(Data data, idstring id, Arguments) {
    throw DSError("cannot find method" + idstring_text(id) + " in type" + type_name(data));
}

ScriptValue ScriptClass::call(Data data, Arguments) {
    throw DSError("cant call this thing (type:" + type_name(data) + ")");
}

ScriptValue ScriptClass::get_tag(Data data) {
    throw DSError(type_name(data) + " cannot have tag");
}

void ScriptClass::set_tag(Data data, const ScriptValue&) {
    throw DSError(type_name(data) + " cannot be tagged");
}

ScriptValue ScriptClass::member(Data data, idstring id, bool must_exist) {
    if (id == names().type_string)
        return string_value(type_name(data));
    if (must_exist)
        throw MemberNotFoundError("cant find member: " + idstring_text(id) + " in type " + type_name(data));
    return {};
}

bool ScriptClass::take_member(ScriptValue&, idstring, MemberCache&) {
    return false;
}

bool ScriptClass::has_member(Data, idstring) {
    return false;
}

ScriptValue ScriptClass::add(Data, const ScriptValue&) {
    no_operator(" + ");
}
ScriptValue ScriptClass::subtract(Data, const ScriptValue&) {
    no_operator(" - ");
}
ScriptValue ScriptClass::multiply(Data, const ScriptValue&) {
    no_operator(" * ");
}
ScriptValue ScriptClass::divide(Data, const ScriptValue&) {
    no_operator(" / ");
}
ScriptValue ScriptClass::remainder(Data, const ScriptValue&) {
    no_operator(" % ");
}

bool ScriptClass::less(Data data, const ScriptValue& other) {
    if (&other.value_class() != this)
        return order() < other.value_class().order();
    return data < other.data();
}

std::string ScriptClass::type_name(Data) {
    return "<void>";
}
ScriptValue ScriptClass::clone(Data data) {
    return {*this, data};
}
void* ScriptClass::native_pointer(Data) {
    return nullptr;
}
void ScriptClass::instance_hook(Data) {}

void Library::visit(LibraryVisitor&) {}

} // namespace kst::script
