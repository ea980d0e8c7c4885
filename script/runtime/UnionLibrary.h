#pragma once

#include <cstdint>
#include <vector>

#include "script/value/Library.h"

namespace kst::script {

/// An ordered list of libraries that answers like one: the first that has a name answers for it.
class UnionLibrary final : public Library, public ScriptInterface {
public:
    /// The class of a union as a value, "<union_library>": members are looked up through the list. A value may outlive
    /// its union, and has no members then.
    class LibraryInstance;

    UnionLibrary() = default;
    UnionLibrary(const UnionLibrary&) = delete;
    UnionLibrary& operator=(const UnionLibrary&) = delete;
    ~UnionLibrary() override;

    /// Puts a library at the end. Not owned; it must outlive every use of the union.
    void add(Library& library) { libraries_.push_back(&library); }

    bool has(idstring id) override { return find(id) != nullptr; }
    ScriptValue value() override;
    /// Void for a name that no library has.
    ScriptValue get(idstring id) override;
    void visit(LibraryVisitor& visitor) override;

private:
    static constexpr std::uint32_t no_number = 0xffffffff;

    Library* find(idstring id) const;

    std::vector<Library*> libraries_;
    std::uint32_t number_ = no_number; ///< In the pool of LibraryInstance, once there was a value.
};

} // namespace kst::script
