#include "script/vm/ReferenceClasses.h"

#include "script/value/NestingGuard.h"
#include "script/vm/ScriptStacks.h"
#include "script/vm/ScriptedClass.h"

namespace kst::script {

namespace {

std::vector<ScriptVM::ClassGlobalRef*>& free_global_refs() {
    static std::vector<ScriptVM::ClassGlobalRef*>& instance = *new std::vector<ScriptVM::ClassGlobalRef*>;
    return instance;
}

} // namespace

std::string ReferenceClass::type_name(Data data) {
    const NestingGuard guard; // the place may hold this very reference
    std::string text = "&";
    return text.append(place(data).type_name());
}

ScriptValue& ScriptVM::ClassLocalRef::place(Data data) {
    ScriptStacks& stacks = ScriptStacks::instance();
    if (data >= stacks.locals.count())
        throw DSError("Internal error: No such local");
    return stacks.locals[data];
}

ScriptValue& ScriptVM::ClassCurrentClassMemberRef::place(Data data) {
    ScriptStacks& stacks = ScriptStacks::instance();
    if (stacks.frame_count == 0 || stacks.current().current_class == nullptr)
        throw DSError("Internal error: No current object");
    const Frame& frame = stacks.current();
    std::vector<ScriptValue>& members = frame.current_class->members(frame.object);
    if (data >= members.size())
        throw DSError("Internal error: No such member");
    return members[data];
}

ScriptVM::ClassGlobalRef& ScriptVM::ClassGlobalRef::take(ScriptVM& vm) {
    auto& unused = free_global_refs();
    if (unused.empty())
        unused.push_back(new ClassGlobalRef);
    ClassGlobalRef& taken = *unused.back();
    unused.pop_back();
    taken.vm_ = &vm;
    return taken;
}

void ScriptVM::ClassGlobalRef::give_back() {
    vm_ = nullptr;
    free_global_refs().push_back(this);
}

ScriptValue& ScriptVM::ClassGlobalRef::place(Data data) {
    if (vm_ == nullptr || data >= vm_->globals_.size())
        throw DSError("Internal error: No such global");
    return vm_->globals_[data];
}

} // namespace kst::script
