#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

#include "script/binding/bind.h"
#include "script/runtime/callbacks.h"
#include "script/value/release_values.h"

namespace kst::script {

/// How many elements a container holds at most: indices are numbers, and beyond this neighbours are the same number.
inline constexpr std::size_t max_elements = std::size_t{1} << 24;

/// How many elements one call makes at most, a hundred times what a script that means it asks for: the memory it takes
/// (16 MiB) stays in proportion to a call that is a mistake.
inline constexpr std::size_t max_new_elements = std::size_t{1} << 20;

/// Throws DSError "Too many elements".
inline void check_element_count(std::size_t count, std::size_t limit = max_elements) {
    if (count > limit)
        throw DSError("Too many elements");
}

/// Walks the elements of a sequence that may change at any time, and keeps it alive.
///
/// An iterator stands at a position. What is put in or changed ahead of it will be seen; if something is put in or taken
/// out in the middle behind it, the rest moves past it by that much. Work at the front of a list does not move it.
template <typename T>
class SequenceIterator : public Bound<SequenceIterator<T>> {
public:
    static constexpr std::string_view script_name = T::iterator_name;
    static void bind(StaticMemberSet<SequenceIterator>& members) {
        members.template method<&SequenceIterator::next>("next");
    }

    explicit SequenceIterator(T& sequence) : sequence_(sequence.value()), position_(sequence.first()) {}
    /// The next element, and void at the end. DSError if the sequence has been destroyed by its native owner.
    ScriptValue next() {
        auto* const sequence = static_cast<T*>(LibraryHelper::CppClass::object_of(sequence_));
        if (sequence == nullptr)
            throw_already_destroyed();
        position_ = std::max(position_, sequence->first());
        const auto index = static_cast<std::size_t>(position_ - sequence->first());
        if (index >= sequence->size())
            return {};
        ++position_;
        return sequence->at(index);
    }

private:
    ScriptValue sequence_;
    std::int64_t position_;
};

/// What vectors and lists have in common: a row of values, with the members that do not care how it is stored.
///
/// For native code it is a plain container that may be copied; a copy has the same elements and is an object of its own.
/// Elements that go are released through release_values: nested containers of any depth go at a fixed stack depth. A
/// container that holds itself, on whatever way, is never freed, as values are only counted; `clear` cuts the circle.
///
/// T names its script type, its `iterator_name`, and binds the common members with `bind_sequence`.
template <typename T, typename Storage>
class ScriptSequence : public Bound<T> {
public:
    using Elements = Storage;

    ScriptSequence() = default;
    explicit ScriptSequence(Arguments elements) : items_(elements.begin(), elements.end()) {}
    ScriptSequence(const ScriptSequence&) = default;
    ScriptSequence& operator=(const ScriptSequence& other) {
        Storage copy = other.items_;
        changed();
        std::swap(items_, copy);
        release(copy);
        return *this;
    }
    ~ScriptSequence() override { release(items_); }

    std::size_t size() const { return items_.size(); }
    bool empty() const { return items_.empty(); }
    /// `index` must be below size().
    const ScriptValue& at(std::size_t index) const { return items_[index]; }
    const Storage& items() const { return items_; }

    void push_back(ScriptValue value) {
        check_element_count(size() + 1);
        changed();
        items_.push_back(std::move(value));
    }

    void clear() {
        changed();
        Storage gone;
        std::swap(items_, gone);
        release(gone);
    }

    /// By the language's `=`.
    bool contains(const ScriptValue& value) const {
        return std::any_of(items_.begin(), items_.end(), [&](const ScriptValue& item) { return item.equals(value); });
    }

    /// Calls `function` with each element of a copy: it may change the sequence as it likes.
    void for_each(const ScriptValue& function) const {
        const Storage walked = items_;
        for (const ScriptValue& item : walked)
            call_back(function, {&item, 1});
    }

    /// Calls `test` with each element of a copy and then removes those where the result was true. If the call fails for
    /// one of them nothing is removed. If `test` itself changes the sequence, what it puts in stays, and of what it
    /// leaves there goes, for each call that gave true, the first occurrence of the very same element.
    void delete_if(const ScriptValue& test) {
        const HeldObject held(*this);
        const Storage walked = items_;
        const std::uint64_t changes = changes_;
        std::vector<bool> doomed;
        doomed.reserve(walked.size());
        for (const ScriptValue& item : walked)
            doomed.push_back(call_back(test, {&item, 1}).to_boolean());
        held.check();
        if (changes_ == changes)
            return remove_where([&, i = std::size_t{0}](const ScriptValue&) mutable { return doomed[i++]; });
        std::map<std::pair<std::uint32_t, ScriptValue::Data>, std::size_t> wanted;
        const auto identity = [](const ScriptValue& v) { return std::pair(v.value_class().order(), v.data()); };
        for (std::size_t i = 0; i < walked.size(); ++i)
            if (doomed[i])
                ++wanted[identity(walked[i])];
        remove_where([&](const ScriptValue& item) {
            const auto found = wanted.find(identity(item));
            return found != wanted.end() && found->second > 0 && found->second-- > 0;
        });
    }

    ScriptValue copy() const { return make_script_owned<T>(static_cast<const T&>(*this)); }
    ScriptValue iterator() { return make_script_owned<SequenceIterator<T>>(static_cast<T&>(*this)); }

    /// The number of the first element, for iterators.
    std::int64_t first() const { return first_; }

protected:
    static void bind_sequence(StaticMemberSet<T>& members) {
        members.template method<&ScriptSequence::size>("size");
        members.template method<&ScriptSequence::empty>("empty");
        members.template method<&ScriptSequence::push_back>("push_back");
        members.template method<&ScriptSequence::clear>("clear");
        members.template method<&ScriptSequence::contains>("contains");
        members.template method<&ScriptSequence::for_each>("for_each");
        members.template method<&ScriptSequence::delete_if>("delete_if");
        members.template method<&ScriptSequence::copy>("copy");
        members.template method<&ScriptSequence::iterator>("iterator");
    }

    void changed() { ++changes_; }

    /// Takes the elements that `doomed` says yes to out, in one walk, and releases them when the sequence is whole again.
    template <typename Predicate>
    void remove_where(Predicate doomed) {
        changed();
        std::vector<ScriptValue> gone;
        Storage kept;
        for (ScriptValue& item : items_) {
            if (doomed(std::as_const(item)))
                gone.push_back(std::move(item));
            else
                kept.push_back(std::move(item));
        }
        std::swap(items_, kept);
        release_values(std::move(gone));
    }

    /// Takes one element out.
    ScriptValue take(std::size_t index) {
        changed();
        const auto place = items_.begin() + static_cast<std::ptrdiff_t>(index);
        ScriptValue gone = std::move(*place);
        items_.erase(place);
        return gone;
    }

    static void release(Storage& items) {
        if constexpr (std::is_same_v<Storage, std::vector<ScriptValue>>)
            release_values(std::move(items));
        else
            release_values(
                std::vector<ScriptValue>(std::move_iterator(items.begin()), std::move_iterator(items.end())));
    }

    Storage items_;
    std::int64_t first_ = 0;

private:
    /// Tells delete_if that somebody else was at work.
    std::uint64_t changes_ = 0;
};

} // namespace kst::script
