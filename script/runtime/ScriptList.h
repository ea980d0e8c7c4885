#pragma once

#include <deque>

#include "script/runtime/ScriptSequence.h"

namespace kst::script {

/// "<ScriptList>": a row of values with two ends. Taking from an empty list gives void. The members of scripts, one by
/// one: docs/script-containers.md.
class ScriptList : public ScriptSequence<ScriptList, std::deque<ScriptValue>> {
public:
    static constexpr std::string_view script_name = "ScriptList";
    static constexpr std::string_view iterator_name = "ScriptListIterator";
    static void bind(StaticMemberSet<ScriptList>& members);

    using ScriptSequence::ScriptSequence;

    /// In front of the element at `index`; at the end for index size(). DSError for any other.
    void insert(std::int32_t index, ScriptValue value);
    void push_front(ScriptValue value);
    ScriptValue pop_front();
    ScriptValue pop_back();
    ScriptValue front() const { return empty() ? ScriptValue() : items_.front(); }
    ScriptValue back() const { return empty() ? ScriptValue() : items_.back(); }
};

using ScriptListIterator = SequenceIterator<ScriptList>;

} // namespace kst::script
