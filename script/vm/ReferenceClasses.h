#pragma once

#include <string>

#include "script/vm/ScriptVM.h"

namespace kst::script {

/// A value that stands for a storage place: `set` stores there, `clone` reads it. A place that no longer exists is a
/// DSError.
class ReferenceClass : public ScriptClass {
public:
    float to_number(Data) override { return -1; }
    bool to_boolean(Data) override { return true; }
    std::string to_string(Data data) override { return type_name(data); }
    std::string type_name(Data data) override;
    void set(Data data, const ScriptValue& value) override { place(data) = value; }
    ScriptValue clone(Data data) override { return place(data); }

protected:
    explicit ReferenceClass(ClassKind kind) : ScriptClass(Counting::none, kind) {}
    virtual ScriptValue& place(Data data) = 0;
};

/// An entry of the local stack, by its absolute index.
class ScriptVM::ClassLocalRef final : public ReferenceClass {
public:
    static ClassLocalRef& instance() {
        static ClassLocalRef& instance = *new ClassLocalRef;
        return instance;
    }

private:
    ClassLocalRef() : ReferenceClass(ClassKind::local_ref) {}
    ScriptValue& place(Data data) override;
};

/// A member of the object whose method runs when the reference is used.
class ScriptVM::ClassCurrentClassMemberRef final : public ReferenceClass {
public:
    static ClassCurrentClassMemberRef& instance() {
        static ClassCurrentClassMemberRef& instance = *new ClassCurrentClassMemberRef;
        return instance;
    }

private:
    ClassCurrentClassMemberRef() : ReferenceClass(ClassKind::member_ref) {}
    ScriptValue& place(Data data) override;
};

/// A global of the program that the class object belongs to.
///
/// The objects of ended programs are kept and serve later ones, so that a reference that outlives its program finds
/// either nothing or another program's global, never freed memory.
class ScriptVM::ClassGlobalRef final : public ReferenceClass {
public:
    static ClassGlobalRef& take(ScriptVM& vm);
    void give_back();

private:
    ClassGlobalRef() : ReferenceClass(ClassKind::global_ref) {}
    ScriptValue& place(Data data) override;

    ScriptVM* vm_ = nullptr;
};

} // namespace kst::script
