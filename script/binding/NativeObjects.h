#pragma once

#include <cstdint>
#include <vector>

#include "script/value/IndexPool.h"

namespace kst::script {

class LibraryHelper;

/// The table of live native objects: what stands behind values of native objects and of their members, whose data word
/// is an index here.
///
/// An object enters when its first value is made, and holds one count itself; each value holds one more. When only the
/// object's own count is left it leaves the table, and is told so. An object that is destroyed first leaves a null
/// behind, until its last value goes.
class NativeObjects {
public:
    /// Never destroyed: values may go as late as the program's last static object.
    static NativeObjects& instance() {
        static NativeObjects& instance = *new NativeObjects;
        return instance;
    }

    /// Null when the object has been destroyed.
    LibraryHelper* object(std::uint32_t index) { return pool_[index]; }
    std::size_t live() const { return pool_.live(); }

    std::uint32_t enter(LibraryHelper& object);
    void add_ref(std::uint32_t index) { pool_.add_ref(index); }
    void release(std::uint32_t index) {
        const std::int32_t left = pool_.drop_ref(index);
        if (left <= 1)
            leave(index, left);
    }
    /// For the object's destructor.
    void forget(LibraryHelper& object);

private:
    /// `left`, 1 or 0, is the count that the entry still has.
    void leave(std::uint32_t index, std::int32_t left);
    void tell_waiting();

    IndexPool<LibraryHelper*> pool_;
    /// Objects whose last value has gone and which have not been told yet. Telling one may free it, and with it the
    /// last value of the next: they wait here, so that a chain of any length goes at a fixed stack depth.
    std::vector<LibraryHelper*> waiting_;
    bool telling_ = false;
};

} // namespace kst::script
