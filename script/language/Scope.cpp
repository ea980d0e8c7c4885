#include "script/language/Scope.h"

namespace kst::script {

namespace {

/// Most scopes are blocks with a few names, where a walk beats a table.
constexpr std::size_t few_symbols = 8;

} // namespace

bool Scope::declare(const std::string* name, SymbolKind kind) {
    if (find(name) >= 0)
        return false;
    symbols_.push_back({.name = name, .kind = kind});
    if (symbols_.size() > few_symbols) {
        for (std::size_t i = indices_.size(); i < symbols_.size(); ++i)
            indices_.emplace(symbols_[i].name, static_cast<std::int32_t>(i));
    }
    return true;
}

std::int32_t Scope::find(const std::string* name) const {
    if (symbols_.size() > few_symbols) {
        const auto found = indices_.find(name);
        return found == indices_.end() ? -1 : found->second;
    }
    for (std::size_t i = 0; i < symbols_.size(); ++i)
        if (symbols_[i].name == name)
            return static_cast<std::int32_t>(i);
    return -1;
}

std::size_t Scope::size() const {
    std::size_t size = symbols_.size();
    for (const Scope* outer = parent_; outer && outer->in_frame(); outer = outer->parent_)
        size += outer->symbols_.size();
    return size;
}

NameUse NameUse::at(const std::string* name, Scope* scope) {
    NameUse use{.name = name, .scope = scope};
    for (const Scope* outer = scope; outer && outer->in_frame(); outer = outer->parent()) {
        const std::int32_t index = outer->find(name);
        if (index >= 0) {
            use.found_in = outer;
            use.found_index = index;
            break;
        }
    }
    return use;
}

ResolvedName resolve(const NameUse& use) {
    if (use.found_in)
        return {Place::local, use.found_in->enclosing_size() + static_cast<std::size_t>(use.found_index)};
    for (const Scope* outer = use.scope; outer; outer = outer->parent()) {
        const std::int32_t found = outer->in_frame() ? -1 : outer->find(use.name);
        if (found < 0)
            continue;
        const auto index = static_cast<std::size_t>(found);
        const bool object = outer->symbols()[index].kind == SymbolKind::object;
        if (outer->kind() == ScopeKind::class_)
            return {object ? Place::class_object : Place::class_other, index};
        return {object ? Place::global_object : Place::global_other, index};
    }
    return {};
}

} // namespace kst::script
