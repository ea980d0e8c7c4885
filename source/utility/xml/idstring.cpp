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

template <class Word>
std::uint64_t word_at(const char* place) {
    Word word = 0;
    std::memcpy(&word, place, sizeof(word));
    return word;
}

/// Up to eight bytes as one number. Loads overlap rather than run a byte at a time: names are short, and most of the
/// time of a parse goes into looking them up.
std::uint64_t short_word(const char* place, std::size_t size) {
    if (size >= 4)
        return word_at<std::uint32_t>(place) | (word_at<std::uint32_t>(place + size - 4) << 32);
    if (size == 0)
        return 0;
    return word_at<std::uint8_t>(place) | (word_at<std::uint8_t>(place + size / 2) << 8) |
           (word_at<std::uint8_t>(place + size - 1) << 16);
}

std::uint64_t hash_of(std::string_view text) {
    std::uint64_t hash = text.size();
    for (; text.size() > 8; text.remove_prefix(8))
        hash = mixed(hash ^ word_at<std::uint64_t>(text.data()));
    return mixed(hash ^ short_word(text.data(), text.size()));
}

bool same_text(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (; a.size() > 8; a.remove_prefix(8), b.remove_prefix(8))
        if (word_at<std::uint64_t>(a.data()) != word_at<std::uint64_t>(b.data()))
            return false;
    return short_word(a.data(), a.size()) == short_word(b.data(), b.size());
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
            if (slot.tag == tag && same_text(this->text(slot.id), text))
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
