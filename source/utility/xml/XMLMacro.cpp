#include "source/utility/xml/XMLMacro.h"

#include "source/utility/ascii.h"

#include <algorithm>
#include <numeric>

namespace kst {
namespace {

std::string marked(char mark, std::string_view name) {
    return std::string(1, mark).append(name);
}

} // namespace

XMLMacro parse_macro_signature(std::string_view signature) {
    XMLMacro macro;
    const std::size_t open = signature.find('(');
    if (open == std::string_view::npos) {
        macro.name = marked('@', trimmed(signature));
        return macro;
    }
    macro.name = marked('@', signature.substr(0, open));
    std::string_view list = signature.substr(open + 1, signature.find(')', open) - open - 1);
    while (!list.empty()) {
        const std::string_view piece = list.substr(0, list.find(','));
        list.remove_prefix(std::min(list.size(), piece.size() + 1));
        if (!piece.empty())
            macro.parameters.push_back(marked('$', trimmed(piece)));
    }
    macro.replacement_order.resize(macro.parameters.size());
    std::iota(macro.replacement_order.begin(), macro.replacement_order.end(), 0u);
    std::ranges::stable_sort(macro.replacement_order, std::ranges::greater(),
                             [&](std::uint32_t i) { return std::string_view(macro.parameters[i]); });
    return macro;
}

void XMLMacroTable::add(XMLMacro macro) {
    by_name_[macro.name.substr(1)].push_back(static_cast<std::uint32_t>(macros_.size()));
    macros_.push_back(std::make_unique<const XMLMacro>(std::move(macro)));
}

void XMLMacroTable::close_scope() {
    const std::uint32_t mark = scope_marks_.back();
    scope_marks_.pop_back();
    for (; macros_.size() > mark; macros_.pop_back()) {
        const auto entry = by_name_.find(std::string_view(macros_.back()->name).substr(1));
        entry->second.pop_back();
        if (entry->second.empty())
            by_name_.erase(entry);
    }
}

void XMLMacroTable::clear() {
    macros_.clear();
    scope_marks_.clear();
    by_name_.clear();
}

const XMLMacro* XMLMacroTable::find(std::string_view name) const {
    const auto entry = by_name_.find(name);
    return entry == by_name_.end() ? nullptr : macros_[entry->second.back()].get();
}

} // namespace kst
