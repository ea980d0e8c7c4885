#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kst {

/// One macro: what `xdefine` declares, and a call `@name` or `@name(a, b)` stands for.
struct XMLMacro {
    /// Begins with `@`.
    std::string name;
    /// In order of declaration; each begins with `$`.
    std::vector<std::string> parameters;
    /// Indices into `parameters`, by their text in descending byte order: `$ab` is put in before `$a`, which is a
    /// prefix of it.
    std::vector<std::uint32_t> replacement_order;
    std::string body;
    /// The body is an expression, whose value is put in, and not text.
    bool is_expression = false;

    bool operator==(const XMLMacro&) const = default;
};

/// Splits a signature, `name` or `name(a, b)`, into name, parameters and replacement order. The body stays empty.
XMLMacro parse_macro_signature(std::string_view signature);

/// The macros in force, the newest last. Each lives from its definition to the end of the element around it.
class XMLMacroTable {
public:
    void add(XMLMacro macro);
    void open_scope() { scope_marks_.push_back(static_cast<std::uint32_t>(macros_.size())); }
    /// Forgets every macro since the matching open_scope.
    void close_scope();
    void clear();

    bool empty() const { return macros_.empty(); }
    std::size_t size() const { return macros_.size(); }
    /// The newest macro of that name, given without its `@`; null if there is none. Good until the table changes.
    const XMLMacro* find(std::string_view name) const;

private:
    struct TextHash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    std::vector<std::unique_ptr<const XMLMacro>> macros_;
    std::vector<std::uint32_t> scope_marks_;
    /// Name without `@` to indices into `macros_`, the newest last. Only ever looked up, never walked.
    std::unordered_map<std::string, std::vector<std::uint32_t>, TextHash, std::equal_to<>> by_name_;
};

} // namespace kst
