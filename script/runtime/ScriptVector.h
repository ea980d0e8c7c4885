#pragma once

#include <vector>

#include "script/runtime/ScriptSequence.h"

namespace kst::script {

/// "<ScriptVector>": values by index, from 0. Reading beside the elements gives void, as for a missing entry; writing
/// there is a DSError. The members of scripts, one by one: docs/script-containers.md.
class ScriptVector : public ScriptSequence<ScriptVector, std::vector<ScriptValue>> {
public:
    static constexpr std::string_view script_name = "ScriptVector";
    static constexpr std::string_view iterator_name = "ScriptVectorIterator";
    static void bind(StaticMemberSet<ScriptVector>& members);

    using ScriptSequence::ScriptSequence;

    /// Void for an index that does not exist.
    ScriptValue element(std::int32_t index) const;
    /// DSError for an index that does not exist.
    void set(std::int32_t index, ScriptValue value);
    void delete_at(std::int32_t index);
    /// New elements are void. DSError below 0, above max_elements, and for more than max_new_elements at once.
    void resize(std::int32_t count);
    /// Removes every element that is `=` to the value. By value: it may be one of the elements.
    void remove_equal(ScriptValue value);
    /// The numbers start, start + step and so on, below end + step / 2, in place of the elements. DSError if the step
    /// does not lead to the end, or to more than max_new_elements; the vector is then as before.
    void set_range(float start, float end, float step);
    /// A new vector with the indices of this one.
    ScriptValue indices() const;

private:
    std::size_t checked(std::int32_t index) const;
    void replace_items(std::vector<ScriptValue> items);
};

using ScriptVectorIterator = SequenceIterator<ScriptVector>;

} // namespace kst::script
