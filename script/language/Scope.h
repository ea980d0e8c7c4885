#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace kst::script {

enum class ScopeKind : std::uint8_t { global = 0, class_ = 1, function = 2, block = 3 };
enum class SymbolKind : std::uint8_t { object = 1, function = 3, class_ = 4, import_ = 5 };

class Scope;

struct Symbol {
    /// Interned: equal names have equal pointers. For an import the last part of what is imported.
    const std::string* name = nullptr;
    SymbolKind kind = SymbolKind::object;
    /// The full dotted name of an import.
    const std::string* import_name = nullptr;
    /// Of a function.
    std::int32_t first_instruction = -1;
    /// Of a class.
    Scope* class_scope = nullptr;
};

/// The names of one pair of braces, in a chain towards the global scope.
///
/// The frame of a function holds the symbols of its scope and of the blocks within, outer ones first. A slot is counted
/// when code is emitted, so that it leaves room for what an outer block declares behind an inner one:
///   f(a) { { object b; } object c; }     slots: a 0, c 1, b 2
class Scope {
public:
    Scope(ScopeKind kind, Scope* parent) : kind_(kind), parent_(parent) {}

    ScopeKind kind() const { return kind_; }
    Scope* parent() const { return parent_; }
    const std::vector<Symbol>& symbols() const { return symbols_; }
    /// The symbol declared last.
    Symbol& newest() { return symbols_.back(); }

    /// False: the name is taken here.
    bool declare(const std::string* name, SymbolKind kind);
    /// The index of a symbol of this very scope, -1 if there is none.
    std::int32_t find(const std::string* name) const;

    bool in_frame() const { return kind_ == ScopeKind::function || kind_ == ScopeKind::block; }
    /// Symbols of the function and block scopes directly around this one.
    std::size_t enclosing_size() const { return parent_ && parent_->in_frame() ? parent_->size() : 0; }
    /// Its own symbols and those around it: the frame's size while it is open.
    std::size_t size() const;

private:
    ScopeKind kind_;
    Scope* parent_;
    std::vector<Symbol> symbols_;
    /// Of all symbols, once they are many; empty before.
    std::unordered_map<const std::string*, std::int32_t> indices_;
};

/// A name where it is used.
struct NameUse {
    const std::string* name = nullptr;
    Scope* scope = nullptr;
    /// The function or block scope that has declared it so far; none for what class and file may still declare.
    const Scope* found_in = nullptr;
    std::int32_t found_index = -1;

    /// Walks the function and block scopes outwards.
    static NameUse at(const std::string* name, Scope* scope);
};

enum class Place : std::uint8_t { unknown, local, class_object, class_other, global_object, global_other };

struct ResolvedName {
    Place place = Place::unknown;
    std::size_t index = 0;
};

/// Locals as found at the use, then the class around it, then the file, both in full.
ResolvedName resolve(const NameUse& use);

} // namespace kst::script
