#include "script/vm/ScriptedClass.h"

#include "script/value/release_values.h"
#include "script/vm/ObjectClasses.h"

namespace kst::script {

void ScriptVM::ScriptedClassBase::declare_object(idstring name) {
    names_.add(name, static_cast<std::uint32_t>(starts_.size()));
    starts_.push_back(nullptr);
}

void ScriptVM::ScriptedClassBase::declare_method(idstring name, const Instruction& start) {
    names_.add(name, static_cast<std::uint32_t>(starts_.size()));
    starts_.push_back(&start);
}

ScriptValue ScriptVM::ScriptedClassBase::make_object() {
    const std::uint32_t object = objects_.take();
    objects_[object].instance = no_instance;
    std::vector<ScriptValue>& all = objects_[object].members;
    all.assign(starts_.size(), ScriptValue());
    for (std::size_t i = 0; i < starts_.size(); ++i)
        if (starts_[i] != nullptr)
            all[i] = ClassMethod::instance().make(number_, object, starts_[i]);
    ScriptValue value = instance_of(object);
    release_object(object); // the instance record holds it now
    return value;
}

ScriptValue ScriptVM::ScriptedClassBase::instance_of(std::uint32_t object) {
    Object& entry = objects_[object];
    if (entry.instance != no_instance)
        return {ClassInstance::instance(), entry.instance};
    ScriptValue value = ClassInstance::instance().make(number_, object);
    entry.instance = value.data();
    objects_.add_ref(object);
    return value;
}

void ScriptVM::ScriptedClassBase::release_object(std::uint32_t object) {
    if (objects_.drop_ref(object) > 0)
        return;
    std::vector<ScriptValue> all = std::move(objects_[object].members);
    objects_[object].members.clear();
    objects_.give_back(object);
    release_values(std::move(all));
}

void ScriptVM::ScriptedClassBase::clear_objects() {
    std::vector<ScriptValue> all;
    for (std::uint32_t object = 0; object < objects_.extent(); ++object) {
        std::vector<ScriptValue>& of_object = objects_[object].members;
        std::move(of_object.begin(), of_object.end(), std::back_inserter(all));
        of_object.clear();
    }
    release_values(std::move(all));
}

} // namespace kst::script
