#include "script/binding/LibraryHelper.h"

#include "script/binding/MemberFactory.h"
#include "script/binding/MemberSet.h"
#include "script/binding/NativeObjects.h"
#include "script/value/DSError.h"
#include "script/value/NestingGuard.h"
#include "script/value/release_values.h"

namespace kst::script {

namespace {

LibraryHelper* live_object(ScriptClass::Data data) {
    return NativeObjects::instance().object(data);
}

} // namespace

void throw_already_destroyed() {
    throw DSError("Object already destroyed");
}

std::uint64_t LibraryHelper::next_serial() {
    static std::uint64_t serial = 0;
    return ++serial;
}

// Nothing of what ties an object to its values is copied.
LibraryHelper::LibraryHelper(const LibraryHelper&) noexcept : LibraryHelper() {}

LibraryHelper::~LibraryHelper() {
    NativeObjects::instance().forget(*this);
    release_value(std::move(tag_));
}

std::uint32_t LibraryHelper::enter() {
    if (handle_ == no_handle)
        handle_ = static_cast<std::int32_t>(NativeObjects::instance().enter(*this));
    return static_cast<std::uint32_t>(handle_);
}

ScriptValue LibraryHelper::value() {
    return {CppClass::instance(), enter()};
}

bool LibraryHelper::has(idstring id) {
    return members().find(id) != nullptr;
}

ScriptValue LibraryHelper::get(idstring id) {
    MemberFactory* const factory = members().find(id);
    return factory == nullptr ? ScriptValue() : factory->make(*this);
}

ScriptValue LibraryHelper::call(Arguments) {
    throw DSError("Can't call this thing" + type_name());
}

LibraryHelper::CppClass& LibraryHelper::CppClass::instance() {
    static CppClass& instance = *new CppClass;
    return instance;
}

LibraryHelper* LibraryHelper::CppClass::object_of(const ScriptValue& value) {
    return &value.value_class() == &instance() ? live_object(value.data()) : nullptr;
}

void LibraryHelper::CppClass::add_ref(Data data) {
    NativeObjects::instance().add_ref(data);
}
void LibraryHelper::CppClass::release(Data data) {
    NativeObjects::instance().release(data);
}

float LibraryHelper::CppClass::to_number(Data data) {
    return live_object(data) == nullptr ? 0.0f : -1.0f;
}

std::string LibraryHelper::CppClass::to_string(Data data) {
    LibraryHelper* const object = live_object(data);
    return object == nullptr ? std::string() : object->type_name();
}

bool LibraryHelper::CppClass::to_boolean(Data data) {
    return live_object(data) != nullptr;
}

// The guard: an object's own call may lead back to it.
ScriptValue LibraryHelper::CppClass::call(Data data, Arguments arguments) {
    LibraryHelper* const object = live_object(data);
    if (object == nullptr)
        throw DSError("Can't call this thing" + type_name(data));
    const NestingGuard guard;
    const ScriptValue self(*this, data);
    return with_script_errors([&] { return object->call(arguments); });
}

ScriptValue LibraryHelper::CppClass::get_tag(Data data) {
    LibraryHelper* const object = live_object(data);
    return object == nullptr ? ScriptValue() : object->tag();
}

void LibraryHelper::CppClass::set_tag(Data data, const ScriptValue& value) {
    LibraryHelper* const object = live_object(data);
    if (object == nullptr)
        throw_already_destroyed();
    object->set_tag(value);
}

ScriptValue LibraryHelper::CppClass::member(Data data, idstring id, bool must_exist) {
    if (LibraryHelper* const object = live_object(data))
        if (MemberFactory* const factory = object->members().find(id))
            return factory->make(*object);
    return ScriptClass::member(data, id, must_exist);
}

bool LibraryHelper::CppClass::has_member(Data data, idstring id) {
    LibraryHelper* const object = live_object(data);
    return object != nullptr && object->members().find(id) != nullptr;
}

bool LibraryHelper::CppClass::take_member(ScriptValue& object, idstring id, MemberCache& cache) {
    LibraryHelper* const helper = live_object(object.data());
    MemberFactory* const factory = helper == nullptr ? nullptr : helper->members().find(id, cache);
    return factory != nullptr && factory->take(object);
}

bool LibraryHelper::CppClass::less(Data data, const ScriptValue& other) {
    if (&other.value_class() != this)
        return ScriptClass::less(data, other);
    const LibraryHelper* const left = live_object(data);
    const LibraryHelper* const right = live_object(other.data());
    if (left != nullptr && right != nullptr)
        return left->less(*right);
    if (left == nullptr && right == nullptr)
        return data < other.data();
    return left == nullptr;
}

std::string LibraryHelper::CppClass::type_name(Data data) {
    const LibraryHelper* const object = live_object(data);
    return object == nullptr ? "<destroyed c++class>" : object->type_name();
}

void* LibraryHelper::CppClass::native_pointer(Data data) {
    return live_object(data);
}

} // namespace kst::script
