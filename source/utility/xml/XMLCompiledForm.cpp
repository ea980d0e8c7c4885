#include "source/utility/xml/XMLCompiledForm.h"

#include "source/utility/Errors.h"
#include "source/utility/xml/XMLDocument.h"
#include "source/utility/xml/XMLLimits.h"
#include "source/utility/xml/XMLNodeAccess.h"
#include "source/utility/xml/XMLWords.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kst {
namespace {

constexpr std::string_view magic("XML\x01", 4);

/// The smallest record, that of a text node.
constexpr std::size_t smallest_record_bytes = 8;

class Writer {
public:
    std::string write(const XMLNode& root, const std::set<std::string>& included_files) {
        write_tree(root);
        put_number(included_files.size());
        for (const std::string& file : included_files)
            put_string(file);
        std::string head(magic);
        append_number(head, pool_.size());
        return head + strings_ + records_;
    }

private:
    /// Children follow their parent at once, so the records stand in the order of a walk.
    void write_tree(const XMLNode& root) {
        std::vector<const XMLNode*> open{&root};
        while (!open.empty()) {
            const XMLNode& node = *open.back();
            open.pop_back();
            write_node(node);
            if (node.type() != XML_ELEMENT)
                continue;
            for (std::size_t i = node.child_count(); i > 0; --i)
                open.push_back(node.child(static_cast<std::ptrdiff_t>(i - 1)));
        }
    }

    void write_node(const XMLNode& node) {
        put_number(static_cast<std::size_t>(node.type()));
        if (node.type() == XML_TEXT)
            put_number(pooled(node.text()));
        else if (node.type() == XML_MACRO)
            write_macro(*node.macro());
        else
            write_element(node);
    }

    void write_element(const XMLNode& node) {
        put_number(pooled(node.name()));
        put_number(node.parameters().size());
        for (const XMLParameter& parameter : node.parameters()) {
            put_number(pooled(idstring_text(parameter.name)));
            put_number(pooled(parameter.value()));
        }
        put_number(node.child_count());
    }

    void write_macro(const XMLMacro& macro) {
        put_string(macro.name);
        put_number(macro.parameters.size());
        for (const std::string& parameter : macro.parameters)
            put_string(parameter);
        put_number(macro.replacement_order.size());
        for (const std::uint32_t index : macro.replacement_order)
            put_number(index);
        put_string(macro.body);
        records_ += macro.is_expression ? '\1' : '\0';
    }

    std::size_t pooled(std::string_view text) {
        const auto [entry, is_new] = pool_.try_emplace(text, pool_.size());
        if (is_new)
            append_string(strings_, text);
        return entry->second;
    }

    void put_number(std::size_t value) { append_number(records_, value); }
    void put_string(std::string_view text) { append_string(records_, text); }

    static void append_number(std::string& out, std::size_t value) {
        for (unsigned shift = 0; shift < 32; shift += 8)
            out += static_cast<char>((value >> shift) & 0xFF);
    }

    static void append_string(std::string& out, std::string_view text) {
        if (text.find('\0') != std::string_view::npos)
            throw ErrorWithCStack("A text with a zero byte has no compiled form");
        out += text;
        out += '\0';
    }

    /// Only looked up; the order of the pool is that of the walk.
    std::unordered_map<std::string_view, std::size_t> pool_;
    std::string strings_;
    std::string records_;
};

class Loader {
public:
    Loader(std::string_view bytes, std::string name, XMLNode& root, idstring source_file)
        : begin_(bytes.data()),
          place_(begin_),
          end_(begin_ + bytes.size()),
          name_(std::move(name)),
          root_(root),
          arena_(XMLNodeAccess::arena(root)),
          source_file_(source_file) {}

    void load(std::set<std::string>& included_files) {
        place_ += magic.size();
        read_pool();
        read_tree();
        for (std::uint32_t count = read_count(1, "included files"); count > 0; --count)
            included_files.insert(std::string(read_string()));
        if (place_ != end_)
            fail("bytes behind the end");
    }

private:
    /// A string of the pool, by its place in the file.
    struct PoolEntry {
        const char* data;
        std::uint32_t size;
        /// -1 until a node uses it as a name.
        idstring id;
    };
    struct OpenElement {
        XMLNode* node;
        XMLNode** next_child;
        std::uint32_t children_left;
    };

    [[noreturn]] void fail(const std::string& fault) const {
        throw ErrorWithCStack(name_ + ": damaged compiled form, " + fault + " at byte " +
                              std::to_string(place_ - begin_));
    }

    std::size_t left() const { return static_cast<std::size_t>(end_ - place_); }

    void need(std::size_t bytes) const {
        if (left() < bytes)
            fail("unexpected end");
    }

    /// Without a check of the bytes that are left.
    std::uint32_t take_number() {
        std::array<unsigned char, 4> bytes;
        std::memcpy(bytes.data(), place_, bytes.size());
        place_ += bytes.size();
        return bytes[0] | (std::uint32_t{bytes[1]} << 8) | (std::uint32_t{bytes[2]} << 16) |
               (std::uint32_t{bytes[3]} << 24);
    }

    std::uint32_t read_number() {
        need(4);
        return take_number();
    }

    /// A count of things that have at least so many bytes each.
    std::uint32_t read_count(std::size_t bytes_each, const char* what) {
        const std::uint32_t count = read_number();
        if (count > left() / bytes_each)
            fail(std::string("too many ") + what);
        return count;
    }

    std::string_view read_string() {
        const void* const zero = left() > 0 ? std::memchr(place_, 0, left()) : nullptr;
        if (!zero)
            fail("string without end");
        const char* const data = std::exchange(place_, static_cast<const char*>(zero) + 1);
        return {data, static_cast<std::size_t>(place_ - data) - 1};
    }

    void read_pool() {
        pool_.resize(read_count(1, "strings"));
        for (PoolEntry& entry : pool_) {
            const std::string_view text = read_string();
            entry = {text.data(), static_cast<std::uint32_t>(text.size()), -1};
        }
    }

    PoolEntry& entry(std::uint32_t index) {
        if (index >= pool_.size())
            fail("string index out of range");
        return pool_[index];
    }

    idstring name_of(std::uint32_t index) {
        PoolEntry& text = entry(index);
        if (text.id < 0)
            text.id = intern({text.data, text.size});
        return text.id;
    }

    void read_tree() {
        read_node(root_);
        while (!open_.empty()) {
            OpenElement& element = open_.back();
            if (element.children_left == 0) {
                open_.pop_back();
                continue;
            }
            --element.children_left;
            --promised_nodes_;
            XMLNode* const child = XMLNodeAccess::make(arena_);
            *element.next_child++ = child;
            read_node(*child);
        }
    }

    void read_node(XMLNode& node) {
        XMLNodeAccess::set_source_file(node, source_file_);
        need(smallest_record_bytes);
        const std::uint32_t type = take_number();
        if (type == XML_ELEMENT)
            read_element(node);
        else if (type == XML_TEXT)
            read_text(node);
        else if (type == XML_MACRO)
            read_macro(node);
        else
            fail("unknown node type");
    }

    void read_text(XMLNode& node) {
        const PoolEntry& text = entry(take_number());
        XMLNodeAccess::set_type(node, XML_TEXT);
        XMLNodeAccess::set_text(node, {text.data, text.size});
    }

    void read_element(XMLNode& node) {
        if (open_.size() >= xml_limits::most_nesting)
            fail("elements nested deeper than " + std::to_string(xml_limits::most_nesting));
        XMLNodeAccess::set_type(node, XML_ELEMENT);
        XMLNodeAccess::set_name(node, name_of(take_number()));
        read_parameters(node);
        // All nodes that are still to come have to fit in what is left, those of the outer elements too.
        const std::uint32_t count = read_count(smallest_record_bytes, "children");
        promised_nodes_ += count;
        if (promised_nodes_ > left() / smallest_record_bytes)
            fail("too many children");
        XMLNode** const list = arena_.allocate<XMLNode*>(count);
        XMLNodeAccess::set_children(node, list, count);
        if (count > 0) {
            // An element that is not finished holds no stray pointer.
            std::fill_n(list, count, nullptr);
            open_.push_back({&node, list, count});
        }
    }

    void read_parameters(XMLNode& node) {
        const std::uint32_t count = read_count(8, "parameters");
        if (count == 0)
            return;
        XMLParameter* const list = arena_.allocate<XMLParameter>(count);
        for (std::uint32_t i = 0; i < count; ++i) {
            const idstring name = name_of(take_number());
            const PoolEntry& value = entry(take_number());
            list[i] = {name, value.size, value.data};
        }
        if (has_repeated_name({list, count}))
            fail("parameter given twice");
        XMLNodeAccess::set_parameters(node, list, count);
    }

    bool has_repeated_name(std::span<const XMLParameter> parameters) {
        constexpr std::size_t few = 12;
        if (parameters.size() > few) {
            names_.clear();
            for (const XMLParameter& parameter : parameters)
                names_.push_back(parameter.name);
            std::ranges::sort(names_);
            return std::ranges::adjacent_find(names_) != names_.end();
        }
        for (std::size_t i = 1; i < parameters.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                if (parameters[i].name == parameters[j].name)
                    return true;
        return false;
    }

    void read_macro(XMLNode& node) {
        XMLMacro macro;
        macro.name = read_string();
        if (!macro.name.starts_with('@'))
            fail("macro without a name");
        macro.parameters.resize(read_count(1, "macro parameters"));
        for (std::string& parameter : macro.parameters)
            parameter = read_string();
        macro.replacement_order.resize(read_count(4, "order entries"));
        if (macro.replacement_order.size() != macro.parameters.size())
            fail("wrong number of order entries");
        for (std::uint32_t& index : macro.replacement_order) {
            index = take_number();
            if (index >= macro.parameters.size())
                fail("order entry out of range");
        }
        macro.body = read_string();
        need(1);
        const char is_expression = *place_++;
        if (is_expression != 0 && is_expression != 1)
            fail("flag out of range");
        macro.is_expression = is_expression == 1;
        XMLNodeAccess::set_type(node, XML_MACRO);
        XMLNodeAccess::set_name(node, xml_words().xdefine);
        XMLNodeAccess::set_macro(node, arena_.keep(std::move(macro)));
    }

    const char* begin_;
    const char* place_;
    const char* end_;
    std::string name_;
    XMLNode& root_;
    XMLArena& arena_;
    idstring source_file_;
    std::vector<PoolEntry> pool_;
    std::vector<OpenElement> open_;
    std::size_t promised_nodes_ = 0;
    std::vector<idstring> names_;
};

} // namespace

bool is_compiled_xml(Archive archive) {
    if (archive.size() - archive.position() < static_cast<std::int64_t>(magic.size()))
        return false;
    std::string head(magic.size(), '\0');
    archive.read(head.data(), head.size());
    return head == magic;
}

std::string compile_xml(const XMLNode& root, const std::set<std::string>& included_files) {
    return Writer().write(root, included_files);
}

void read_compiled_xml(Archive archive, XMLNode& root, idstring source_file, std::set<std::string>& included_files) {
    if (!is_compiled_xml(archive))
        throw ErrorWithCStack(archive.name() + ": no compiled form of version 1");
    const auto size = static_cast<std::size_t>(archive.size() - archive.position());
    if (size > UINT32_MAX)
        throw ErrorWithCStack(archive.name() + ": damaged compiled form, more than 4 GiB");
    // Texts of the tree stay where they stand in the file.
    auto block = std::make_unique_for_overwrite<std::byte[]>(size);
    const std::string_view bytes(reinterpret_cast<const char*>(block.get()), archive.read(block.get(), size));
    XMLNodeAccess::clear_root(root);
    XMLNodeAccess::arena(root).adopt(std::move(block));
    Loader(bytes, archive.name(), root, source_file).load(included_files);
}

void XMLDocument::write_compiled(Archive& archive) const {
    const std::string bytes = compile_xml(*this, included_files_);
    archive.write(bytes.data(), bytes.size());
}

void XMLDocument::read_compiled(const Archive& archive) {
    try {
        included_files_.clear();
        read_compiled_xml(archive, *this, intern(full_path_), included_files_);
    } catch (const std::runtime_error&) {
        clear();
        throw;
    }
}

} // namespace kst
