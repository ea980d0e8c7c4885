#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "script/binding/LibraryHelper.h"

namespace kst::script {

/// Makes the value of one member of native objects.
class MemberFactory {
public:
    MemberFactory() = default;
    MemberFactory(const MemberFactory&) = delete;
    MemberFactory& operator=(const MemberFactory&) = delete;
    virtual ScriptValue make(LibraryHelper& object) = 0;
    /// Turns a value of an object into the value of its member, where the two count at the same place; else says false.
    virtual bool take(ScriptValue&) { return false; }
    virtual ~MemberFactory() = default;
    virtual std::string description() const { return "<member>"; }
    /// The owner needs it no more; destroys the factory as soon as no value does either.
    virtual void retire() { delete this; }
};

struct RetireFactory {
    void operator()(MemberFactory* factory) const { factory->retire(); }
};
using MemberFactoryPointer = std::unique_ptr<MemberFactory, RetireFactory>;

/// A factory that is itself the class of the values it makes. Their data word is the object's index in the table of
/// live native objects, and they count there: a member value keeps an object alive that belongs to scripts.
class TMFactoryBase : public MemberFactory, public ScriptClass {
public:
    ScriptValue make(LibraryHelper& object) override { return {*this, object.enter()}; }
    bool take(ScriptValue& object) override {
        ++values_;
        object.overwrite(*this, object.data()); // the object's own count is the member value's from now on
        return true;
    }
    void retire() override;

    void add_ref(Data data) override;
    void release(Data data) override;
    std::string type_name(Data) override { return description(); }

protected:
    TMFactoryBase() : ScriptClass(Counting::pooled) {}

    // Inline in this class's own file, and used only there.

    /// A value of the member for as long as a call lasts.
    class Held;
    /// Throws DSError "Object already destroyed".
    static LibraryHelper& object(Data data);

private:
    void hold(Data data);
    void let_go(Data data);

    std::uint64_t values_ = 0;
    bool retired_ = false;
};

/// The members that are called. What differs from function to function is in `invoke`, which bind.h generates.
class MethodFactory : public TMFactoryBase {
public:
    /// Arguments that are missing come from the end of the defaults, extra ones are ignored. Throws DSError for a
    /// destroyed object and, with the description, for too few arguments.
    ScriptValue call(Data data, Arguments arguments) final;
    bool to_boolean(Data) override { return true; }
    std::string to_string(Data data) override { return type_name(data); }

protected:
    MethodFactory(std::size_t parameters, std::vector<ScriptValue> defaults)
        : parameters_(parameters), defaults_(std::move(defaults)) {}
    /// With at least as many arguments as parameters.
    virtual ScriptValue invoke(LibraryHelper& object, Arguments arguments) const = 0;

private:
    std::size_t parameters_;
    std::vector<ScriptValue> defaults_;
};

/// The members that are read and assigned like variables. The value stands for the place: reading it out (as every
/// expression does) gives `read`, assigning calls `write`.
class PropertyFactory : public TMFactoryBase {
public:
    float to_number(Data data) override { return current(data).to_number(); }
    std::string to_string(Data data) override { return current(data).to_string(); }
    bool to_boolean(Data data) override { return current(data).to_boolean(); }
    idstring to_id(Data data) override { return current(data).to_id(); }
    void set(Data data, const ScriptValue& value) final;
    ScriptValue call(Data data, Arguments arguments) override { return current(data).call(arguments); }
    ScriptValue get_tag(Data data) override { return current(data).get_tag(); }
    void set_tag(Data data, const ScriptValue& value) override { current(data).set_tag(value); }
    ScriptValue member(Data data, idstring id, bool must_exist) override {
        return current(data).member(id, must_exist);
    }
    bool has_member(Data data, idstring id) override { return current(data).has_member(id); }
    ScriptValue clone(Data data) override { return current(data); }
    void* native_pointer(Data data) override { return current(data).native_pointer(); }

protected:
    virtual ScriptValue read(LibraryHelper& object) const = 0;
    /// By default a DSError: the property is only read.
    virtual void write(LibraryHelper& object, const ScriptValue& value) const;

private:
    ScriptValue current(Data data) const;
};

} // namespace kst::script
