#pragma once

#include <string>

#include "script/value/IndexPool.h"
#include "script/vm/ProgramRegistry.h"
#include "script/vm/ScriptVM.h"

namespace kst::script {

// The one object of each class is never destroyed: values may go as late as the program's last static object.

/// A class whose data word is a number of the program registry.
class RegistryClass : public ScriptClass {
public:
    void add_ref(Data data) final { ProgramRegistry::instance().add_ref(data); }
    void release(Data data) final { ProgramRegistry::instance().release(data); }
    bool to_boolean(Data) override { return true; }
    std::string to_string(Data data) override { return type_name(data); }

protected:
    explicit RegistryClass(ClassKind kind) : ScriptClass(Counting::pooled, kind) {}
    static const ProgramRegistry::Entry& entry(Data data) { return ProgramRegistry::instance()[data]; }
};

class ScriptVM::ClassFunction final : public RegistryClass {
public:
    static ClassFunction& instance();
    ScriptValue call(Data data, Arguments arguments) override;
    std::string type_name(Data) override { return "<function>"; }

private:
    ClassFunction() : RegistryClass(ClassKind::function) {}
};

/// Calling it makes an object; arguments are ignored.
class ScriptVM::ScriptedClassFactory final : public RegistryClass {
public:
    static ScriptedClassFactory& instance();
    ScriptValue call(Data data, Arguments arguments) override;
    std::string type_name(Data) override { return "<class factory>"; }

private:
    ScriptedClassFactory() : RegistryClass(ClassKind::factory) {}
};

/// A program as a value: its members are what the program exports.
class ScriptVM::ScriptedLibrary final : public RegistryClass {
public:
    static ScriptedLibrary& instance();
    ScriptValue member(Data data, idstring id, bool must_exist) override;
    bool has_member(Data data, idstring id) override;
    std::string type_name(Data) override { return "<library>"; }

private:
    ScriptedLibrary() : RegistryClass(ClassKind::other) {}
};

/// A method of one object.
///
/// The first reference to a record does not count on the object: it is the one that the object itself keeps as its
/// member, and must not keep it alive. Each further one does.
class ScriptVM::ClassMethod final : public ScriptClass {
public:
    struct Record {
        std::uint32_t number = 0;
        std::uint32_t object = 0;
        const Instruction* start = nullptr;
    };

    static ClassMethod& instance() {
        static ClassMethod& instance = *new ClassMethod;
        return instance;
    }
    /// The first reference.
    ScriptValue make(std::uint32_t number, std::uint32_t object, const Instruction* start);
    const Record& record(Data data) { return pool_[data]; }
    /// The class of the method. Throws DSError when the program has gone, or the object has.
    ScriptedClassBase& class_of(Data data);
    std::size_t live() const { return pool_.live(); }

    void add_ref(Data data) override;
    void release(Data data) override;
    bool to_boolean(Data) override { return true; }
    std::string to_string(Data data) override { return type_name(data); }
    ScriptValue call(Data data, Arguments arguments) override;
    std::string type_name(Data data) override;

private:
    ClassMethod() : ScriptClass(Counting::pooled, ClassKind::method) {}

    IndexPool<Record> pool_;
};

/// An object, with its tag.
///
/// A member that its class does not have is looked up on what the object's method `super` returns, if there is one.
class ScriptVM::ClassInstance final : public ScriptClass {
public:
    static ClassInstance& instance() {
        static ClassInstance& instance = *new ClassInstance;
        return instance;
    }
    /// A record of its own; the class sees that there is one an object, and counts it on the object.
    ScriptValue make(std::uint32_t number, std::uint32_t object);
    std::size_t live() const { return pool_.live(); }
    /// A member of the object's own class, or null.
    const ScriptValue* own_member(Data data, idstring id);
    /// Null when the program has gone.
    ScriptedClassBase* class_of(Data data) { return ProgramRegistry::instance()[pool_[data].number].scripted_class; }
    /// The object of its class.
    std::uint32_t object_of(Data data) { return pool_[data].object; }
    /// True when the reference was not the last and is gone.
    bool release_shared(Data data) {
        if (pool_.count(data) == 1)
            return false;
        pool_.drop_ref(data);
        return true;
    }

    void add_ref(Data data) override { pool_.add_ref(data); }
    void release(Data data) override;
    float to_number(Data data) override { return class_of(data) != nullptr ? -1.0f : 0.0f; }
    bool to_boolean(Data data) override { return class_of(data) != nullptr; }
    ScriptValue get_tag(Data data) override { return pool_[data].tag; }
    void set_tag(Data data, const ScriptValue& value) override { pool_[data].tag = value; }
    ScriptValue member(Data data, idstring id, bool must_exist) override;
    bool has_member(Data data, idstring id) override;
    std::string type_name(Data data) override;
    std::string to_string(Data data) override { return type_name(data); }

private:
    struct Record {
        std::uint32_t number = 0;
        std::uint32_t object = 0;
        ScriptValue tag;
    };

    ClassInstance() : ScriptClass(Counting::pooled, ClassKind::instance) {}
    /// What `super` of the object returns, or void.
    ScriptValue extended(Data data);

    IndexPool<Record> pool_;
};

/// An object on the value stack between the look-up of its method and the call, see Operation::method: the data word of
/// a ClassInstance, and its reference. Nothing but the two instructions ever sees it.
class ScriptVM::ClassCalledInstance final : public ScriptClass {
public:
    static ClassCalledInstance& instance() {
        static ClassCalledInstance& instance = *new ClassCalledInstance;
        return instance;
    }
    void add_ref(Data data) override { ClassInstance::instance().add_ref(data); }
    void release(Data data) override { ClassInstance::instance().release(data); }

private:
    ClassCalledInstance() : ScriptClass(Counting::pooled) {}
};

} // namespace kst::script
