#include "source/utility/xml/idstring.h"

#include <cassert>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace kst {
namespace {

/// Strings are added in blocks of this many, so that a reference to one never moves.
constexpr std::size_t block_entries = 10000;

std::uint64_t mixed(std::uint64_t value) {
    value *= 0x9E3779B97F4A7C15u;
    return value ^ (value >> 32);
}

/// Eight bytes at a time: names are short, so this is two or three multiplications.
std::uint64_t hash_of(std::string_view text) {
    std::uint64_t hash = text.size();
    while (text.size() >= 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), 8);
        hash = mixed(hash ^ word);
        text.remove_prefix(8);
    }
    std::uint64_t tail = 0;
    for (const char c : text)
        tail = (tail << 8) | static_cast<unsigned char>(c);
    return mixed(hash ^ tail);
}

/// Blocks of strings, and over them an open-addressed index with linear probing, at most half full.
class Table {
public:
    Table() : slots_(4096) { add("", hash_of("")); }

    idstring find(std::string_view text, std::uint64_t hash) const {
        const std::uint32_t tag = static_cast<std::uint32_t>(hash >> 32);
        for (std::size_t i = hash & (slots_.size() - 1);; i = (i + 1) & (slots_.size() - 1)) {
            const Slot& slot = slots_[i];
            if (slot.id < 0)
                return -1;
            if (slot.tag == tag && this->text(slot.id) == text)
                return slot.id;
        }
    }

    idstring add(std::string_view text, std::uint64_t hash) {
        if (count_ % block_entries == 0)
            blocks_.push_back(std::make_unique<std::string[]>(block_entries));
        blocks_.back()[count_ % block_entries] = text;
        const auto id = static_cast<idstring>(count_++);
        if (count_ * 2 > slots_.size())
            rehash(slots_.size() * 2);
        place({static_cast<std::uint32_t>(hash >> 32), id}, hash);
        return id;
    }

    const std::string& text(idstring id) const {
        const auto index = static_cast<std::size_t>(id);
        assert(index < count_);
        return blocks_[index / block_entries][index % block_entries];
    }

    std::size_t count() const { return count_; }

private:
    struct Slot {
        std::uint32_t tag = 0;
        idstring id = -1;
    };

    void place(Slot slot, std::uint64_t hash) {
        std::size_t i = hash & (slots_.size() - 1);
        while (slots_[i].id >= 0)
            i = (i + 1) & (slots_.size() - 1);
        slots_[i] = slot;
    }

    void rehash(std::size_t size) {
        const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(size));
        for (const Slot& slot : old)
            if (slot.id >= 0)
                place(slot, hash_of(text(slot.id)));
    }

    std::vector<std::unique_ptr<std::string[]>> blocks_;
    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};

Table& table() {
    // Never destroyed: names are asked for by destructors of other statics.
    static Table* const the_table = new Table;
    return *the_table;
}

} // namespace

idstring intern(std::string_view text) {
    Table& names = table();
    const std::uint64_t hash = hash_of(text);
    const idstring id = names.find(text, hash);
    return id >= 0 ? id : names.add(text, hash);
}

idstring find_interned(std::string_view text) {
    return table().find(text, hash_of(text));
}

const std::string& idstring_text(idstring id) {
    return table().text(id);
}

std::size_t idstring_count() {
    return table().count();
}

} // namespace kst
