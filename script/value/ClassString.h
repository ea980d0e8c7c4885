#pragma once

#include <string>

#include "script/value/IndexPool.h"
#include "script/value/ScriptValue.h"

namespace kst::script {

/// "<string>": the data word is the index of a record that holds a text, or an identifier, or both. The one comes from
/// the other when somebody asks for it. Strings that others hold never change.
///
/// Texts are UTF-8; `size`, positions and counts of the methods are in 16-bit units.
class ClassString final : public ScriptClass {
public:
    static ClassString& instance();

    ScriptValue make(std::string text);
    ScriptValue make(idstring id);
    /// The text of a value of this class. The view lives as long as the value.
    const std::string& text(Data data);
    /// How many strings exist.
    std::size_t live() const { return pool_.live(); }

    void add_ref(Data data) override { pool_.add_ref(data); }
    void release(Data data) override;
    float to_number(Data data) override;
    std::string to_string(Data data) override { return text(data); }
    bool to_boolean(Data data) override;
    idstring to_id(Data data) override;
    /// The string methods, by name. Their texts and errors: the table in the .cpp.
    ScriptValue call_method(Data data, idstring id, Arguments arguments) override;
    /// With one number a substring from there, with two one of that length; else the string itself.
    ScriptValue call(Data data, Arguments arguments) override;
    ScriptValue member(Data data, idstring id, bool must_exist) override;
    bool has_member(Data data, idstring id) override;
    ScriptValue add(Data data, const ScriptValue& right) override;
    ScriptValue multiply(Data data, const ScriptValue& right) override;
    bool less(Data data, const ScriptValue& other) override;
    std::string type_name(Data) override { return "<string>"; }
    /// Makes `left + right` of the left string itself, which nobody may see happen: false, and nothing done, unless the
    /// caller holds the one reference to it, and the right side is one of the simple classes. Throws as `make` does, with the string as it was.
    bool append(Data left, const ScriptValue& right);
    /// Equal texts; compares numbers where both identifiers are known.
    bool same_text(Data left, Data right);

private:
    enum class State : std::uint8_t { text_only, id_only, both };
    struct Record {
        State state = State::text_only;
        idstring id = 0;
        std::string text;
    };

    ClassString();

    IndexPool<Record> pool_;
};

} // namespace kst::script
