#include "script/vm/ObjectClasses.h"

#include "script/value/NestingGuard.h"
#include "script/value/names.h"
#include "script/value/release_values.h"
#include "script/vm/Interpreter.h"
#include "script/vm/ScriptedClass.h"

namespace kst::script {

ScriptVM::ClassFunction& ScriptVM::ClassFunction::instance() {
    static ClassFunction& instance = *new ClassFunction;
    return instance;
}

ScriptValue ScriptVM::ClassFunction::call(Data data, Arguments arguments) {
    const ProgramRegistry::Entry& function = entry(data);
    if (function.vm == nullptr)
        throw DSError("Program containing function has been destroyed");
    return Interpreter::call({function.vm, function.start}, arguments);
}

ScriptVM::ScriptedClassFactory& ScriptVM::ScriptedClassFactory::instance() {
    static ScriptedClassFactory& instance = *new ScriptedClassFactory;
    return instance;
}

ScriptValue ScriptVM::ScriptedClassFactory::call(Data data, Arguments) {
    if (entry(data).vm == nullptr)
        throw DSError("Program containing class doesnt exist");
    return entry(data).scripted_class->make_object();
}

ScriptVM::ScriptedLibrary& ScriptVM::ScriptedLibrary::instance() {
    static ScriptedLibrary& instance = *new ScriptedLibrary;
    return instance;
}

ScriptValue ScriptVM::ScriptedLibrary::member(Data data, idstring id, bool must_exist) {
    ScriptVM* const vm = entry(data).vm;
    if (vm == nullptr)
        throw DSError("Program containing library doesnt exist");
    if (id == names().type_string && !vm->has(id))
        return RegistryClass::member(data, id, must_exist);
    return vm->get(id);
}

bool ScriptVM::ScriptedLibrary::has_member(Data data, idstring id) {
    ScriptVM* const vm = entry(data).vm;
    return vm != nullptr && vm->has(id);
}

ScriptValue ScriptVM::ClassMethod::make(std::uint32_t number, std::uint32_t object, const Instruction* start) {
    ProgramRegistry::instance().add_ref(number);
    const Data data = pool_.take();
    pool_[data] = {number, object, start};
    return ScriptValue::adopt(*this, data);
}

ScriptVM::ScriptedClassBase& ScriptVM::ClassMethod::class_of(Data data) {
    const Record& method = pool_[data];
    const ProgramRegistry::Entry& entry = ProgramRegistry::instance()[method.number];
    if (entry.vm == nullptr || !entry.scripted_class->is_live(method.object))
        throw DSError("Program containing method has been destroyed");
    return *entry.scripted_class;
}

void ScriptVM::ClassMethod::add_ref(Data data) {
    pool_.add_ref(data);
    const Record& method = pool_[data];
    const ProgramRegistry::Entry& entry = ProgramRegistry::instance()[method.number];
    if (entry.vm != nullptr)
        entry.scripted_class->add_object_ref(method.object);
}

void ScriptVM::ClassMethod::release(Data data) {
    const Record method = pool_[data];
    ProgramRegistry& registry = ProgramRegistry::instance();
    if (pool_.drop_ref(data) > 0) {
        if (registry[method.number].vm != nullptr)
            registry[method.number].scripted_class->release_object(method.object);
        return;
    }
    pool_.give_back(data);
    registry.release(method.number);
}

ScriptValue ScriptVM::ClassMethod::call(Data data, Arguments arguments) {
    ScriptedClassBase& scripted_class = class_of(data);
    const Record method = pool_[data];
    return Interpreter::call({&scripted_class.vm(), method.start, &scripted_class, method.object}, arguments);
}

std::string ScriptVM::ClassMethod::type_name(Data data) {
    const ProgramRegistry::Entry& entry = ProgramRegistry::instance()[pool_[data].number];
    if (entry.vm == nullptr)
        return "<destroyed object method>";
    return "<" + entry.scripted_class->name() + " method>";
}

ScriptValue ScriptVM::ClassInstance::make(std::uint32_t number, std::uint32_t object) {
    ProgramRegistry::instance().add_ref(number);
    const Data data = pool_.take();
    pool_[data].number = number;
    pool_[data].object = object;
    return ScriptValue::adopt(*this, data);
}

void ScriptVM::ClassInstance::release(Data data) {
    if (pool_.drop_ref(data) > 0)
        return;
    Record& record = pool_[data];
    const std::uint32_t number = record.number;
    const std::uint32_t object = record.object;
    ScriptValue tag = std::move(record.tag);
    ScriptedClassBase* const scripted_class = class_of(data);
    pool_.give_back(data);
    if (scripted_class != nullptr) {
        scripted_class->forget_instance(object);
        scripted_class->release_object(object);
    }
    ProgramRegistry::instance().release(number);
    release_value(std::move(tag));
}

const ScriptValue* ScriptVM::ClassInstance::own_member(Data data, idstring id) {
    ScriptedClassBase* const scripted_class = class_of(data);
    if (scripted_class == nullptr)
        throw DSError("Program containing class has been destroyed");
    const std::uint32_t index = scripted_class->find_member(id);
    return index == NameTable::not_found ? nullptr : &scripted_class->members(pool_[data].object)[index];
}

ScriptValue ScriptVM::ClassInstance::extended(Data data) {
    const ScriptValue* const super = own_member(data, names().super);
    return super != nullptr && super->to_boolean() ? ScriptValue(*super).call({}) : ScriptValue();
}

// The guards: a `super` may lead back to its own object.
ScriptValue ScriptVM::ClassInstance::member(Data data, idstring id, bool must_exist) {
    const NestingGuard guard;
    if (const ScriptValue* const own = own_member(data, id))
        return *own;
    if (id != names().super) {
        const ScriptValue* const super = own_member(data, names().super);
        if (super != nullptr && super->to_boolean())
            return extended(data).member(id, must_exist);
    }
    return ScriptClass::member(data, id, must_exist);
}

bool ScriptVM::ClassInstance::has_member(Data data, idstring id) {
    const NestingGuard guard;
    if (own_member(data, id) != nullptr)
        return true;
    return id != names().super && extended(data).has_member(id);
}

std::string ScriptVM::ClassInstance::type_name(Data data) {
    const ScriptedClassBase* const scripted_class = class_of(data);
    return scripted_class == nullptr ? "<destroyed object>" : "<" + scripted_class->name() + ">";
}

} // namespace kst::script
