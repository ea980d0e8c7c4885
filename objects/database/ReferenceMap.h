#pragma once

#include "objects/database/PersistentObject.h"
#include "objects/database/PointerNumbers.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

namespace kst {

/// A reference to an object that is not part of the stream.
class UnkownReferenceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A pointer that waits for its target.
class ReferencePatcher {
public:
    ReferencePatcher() = default;
    ReferencePatcher(const ReferencePatcher&) = delete;
    ReferencePatcher& operator=(const ReferencePatcher&) = delete;
    virtual ~ReferencePatcher() = default;

    /// Stores the object, or null if it is not of the pointer's class. True if it is.
    virtual bool patch(PersistentObject* object) = 0;
};

/// Fills a pointer to T, which may be const.
template <class T>
class reference_patcher : public ReferencePatcher {
public:
    /// The pointer is not owned and must outlive the patcher.
    explicit reference_patcher(T** target) : target_(target) {}

    bool patch(PersistentObject* object) override {
        *target_ = dynamic_cast<T*>(object);
        return *target_ != nullptr;
    }

private:
    T** target_;
};

/// Objects and their reference numbers during one save or load. A number has no meaning but identity within its stream;
/// 0 is the null pointer. Objects that are saved are numbered 1, 2, 3 and so on; a stream that is loaded may number
/// them as it likes.
class ReferenceMap {
public:
    /// With the number of objects that are about to be loaded, numbers up to it are found without a search. Memory is
    /// taken for them at once.
    explicit ReferenceMap(std::uint32_t expected_objects = 0) : dense_(std::size_t{expected_objects} + 1) {}

    /// For saving: makes room for so many objects.
    void reserve(std::size_t count) { written_.reserve(count); }
    /// For saving: the object's number, 0 for null. An unknown object is given the next number if `allow_new`;
    /// otherwise throws UnkownReferenceError "Unkown reference target!".
    std::uint32_t reference_of(const PersistentObject* object, bool allow_new);

    /// For loading: `object` has arrived, and whatever waits for it is patched, in the order of the requests. Again
    /// with the same object does nothing. Throws ErrorWithCStack "ReferenceMap::register_ref() a reference is already
    /// registered with a different object".
    void register_ref(std::uint32_t number, PersistentObject* object);
    /// For loading: patches at once if the object is known, else when it arrives.
    void request_ref(std::uint32_t number, std::unique_ptr<ReferencePatcher> patcher);
    /// For loading: the object of that number, null if it has not arrived.
    PersistentObject* find(std::uint32_t number) const;
    /// How many patchers still wait. They are freed.
    std::size_t check_unresolved();

private:
    struct Entry {
        PersistentObject* object = nullptr; ///< null until it has arrived
        std::vector<std::unique_ptr<ReferencePatcher>> pending;
    };

    Entry& entry_of(std::uint32_t number);

    PointerNumbers written_;
    // Running numbers have a place of their own; whatever else a stream uses is searched. A hash would be as fast for
    // both, but a hostile stream could choose numbers that collide.
    std::vector<Entry> dense_;
    std::map<std::uint32_t, Entry> sparse_;
};

/// What a `load` calls for a stored reference: has `*target` filled with the object of that number, or with null for
/// the number 0. Until the object arrives, `*target` is left as it is. It must stay in its place until the load ends.
template <class T>
void load_reference(ReferenceMap& references, std::uint32_t number, T** target) {
    if (number == 0)
        *target = nullptr;
    else if (PersistentObject* const object = references.find(number)) // as request_ref would, without an allocation
        reference_patcher<T>(target).patch(object);
    else
        references.request_ref(number, std::make_unique<reference_patcher<T>>(target));
}

} // namespace kst
