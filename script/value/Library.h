#pragma once

#include <cstddef>
#include <string_view>

#include "script/value/ScriptValue.h"

namespace kst::script {

/// Is shown what a library consists of, see Library::visit.
class LibraryVisitor {
public:
    virtual ~LibraryVisitor() = default;
    /// One class of a program, with the count of its live objects.
    virtual void visit_class(std::string_view name, std::size_t live_objects) = 0;
};

/// What answers by name: a program's exports, a native object's members, a union or a tree of libraries.
class Library {
public:
    virtual ~Library() = default;
    virtual bool has(idstring id) = 0;
    /// The library itself, as a value whose members are its entries.
    virtual ScriptValue value() = 0;
    /// The entry of that name. What an unknown name gives is each library's matter.
    virtual ScriptValue get(idstring id) = 0;
    virtual void visit(LibraryVisitor& visitor);
};

/// Whom a program asks for its imports. The operations have the form of Library's, so that a class that is both
/// answers with one function; `get` is asked only for names that `has` knows.
class ScriptInterface {
public:
    virtual ~ScriptInterface() = default;
    virtual bool has(idstring id) = 0;
    virtual ScriptValue get(idstring id) = 0;
};

} // namespace kst::script
