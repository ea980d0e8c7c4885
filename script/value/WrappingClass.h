#pragma once

#include "script/value/IndexPool.h"
#include "script/value/ScriptValue.h"

namespace kst::script {

/// A class whose values each wrap one other value, in a pool.
class WrappingClass : public ScriptClass {
public:
    ScriptValue wrap(ScriptValue value);
    std::size_t live() const { return pool_.live(); }

    void add_ref(Data data) final { pool_.add_ref(data); }
    void release(Data data) final;

protected:
    WrappingClass() : ScriptClass(Counting::pooled) {}
    /// A copy: what is done with the value may see the wrapper go.
    ScriptValue wrapped(Data data) { return pool_[data]; }

private:
    IndexPool<ScriptValue> pool_;
};

/// "<tag>": stands for the tag slot of the value it wraps. Everything acts on the tag itself, but for `set`, which
/// changes it.
class ClassTag final : public WrappingClass {
public:
    static ClassTag& instance();

    float to_number(Data data) override;
    std::string to_string(Data data) override;
    bool to_boolean(Data data) override;
    void set(Data data, const ScriptValue& value) override;
    ScriptValue call(Data data, Arguments arguments) override;
    ScriptValue member(Data data, idstring id, bool must_exist) override;
    std::string type_name(Data) override { return "<tag>"; }
};

/// "<member>": calling it with a name gives that member of the value it wraps.
class MemberClass final : public WrappingClass {
public:
    static MemberClass& instance();

    ScriptValue call(Data data, Arguments arguments) override;
    std::string type_name(Data) override { return "<member>"; }
};

} // namespace kst::script
