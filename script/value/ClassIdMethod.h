#pragma once

#include "script/value/IndexPool.h"
#include "script/value/ScriptValue.h"

namespace kst::script {

/// "<method>": a value together with the name of one of its methods. Calling it calls `call_method` on the value.
class ClassIdMethod final : public ScriptClass {
public:
    static ClassIdMethod& instance();

    ScriptValue make(ScriptValue object, idstring name);
    std::size_t live() const { return pool_.live(); }

    void add_ref(Data data) override { pool_.add_ref(data); }
    void release(Data data) override;
    bool to_boolean(Data) override { return true; }
    ScriptValue call(Data data, Arguments arguments) override;
    std::string type_name(Data) override { return "<method>"; }

private:
    struct Record {
        ScriptValue object;
        idstring name = 0;
    };

    ClassIdMethod() : ScriptClass(Counting::pooled) {}

    IndexPool<Record> pool_;
};

} // namespace kst::script
