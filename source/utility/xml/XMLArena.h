#pragma once

#include "source/utility/xml/XMLMacro.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace kst {

/// The memory of one tree of XML nodes: nodes, parameter lists and texts stand one behind the other in a few large
/// blocks, and all go at once when the arena does. So a tree of any depth is freed without recursion, and making a node
/// costs no more than its bytes. What a node gives up by being changed stays taken until then.
class XMLArena {
public:
    XMLArena() = default;
    XMLArena(const XMLArena&) = delete;
    XMLArena& operator=(const XMLArena&) = delete;

    /// Uninitialised room for `count` objects that need no destructor. Null for none.
    template <class T>
    T* allocate(std::size_t count) {
        const std::size_t bytes = count * sizeof(T); // NOLINT(bugprone-sizeof-expression): T may be a pointer
        const auto gap = static_cast<std::size_t>(-reinterpret_cast<std::uintptr_t>(next_)) & (alignof(T) - 1);
        if (bytes + gap > room_)
            return reinterpret_cast<T*>(allocate_slowly(bytes));
        std::byte* const place = next_ + gap;
        next_ += bytes + gap;
        room_ -= bytes + gap;
        return reinterpret_cast<T*>(place);
    }

    /// A copy of the text that lives as long as the arena.
    std::string_view keep(std::string_view text) {
        char* const place = allocate<char>(text.size());
        if (!text.empty())
            std::memcpy(place, text.data(), text.size());
        return {place, text.size()};
    }

    /// Takes over a block that texts of the tree point into.
    void adopt(std::unique_ptr<std::byte[]> block) { blocks_.push_back(std::move(block)); }

    const XMLMacro* keep(XMLMacro macro) {
        macros_.push_back(std::make_unique<const XMLMacro>(std::move(macro)));
        return macros_.back().get();
    }

private:
    /// Starts a new block; one that is big itself gets a block of its own, and the current one goes on.
    std::byte* allocate_slowly(std::size_t bytes);

    std::byte* next_ = nullptr;
    std::size_t room_ = 0;
    std::size_t next_block_bytes_ = 512;
    std::vector<std::unique_ptr<std::byte[]>> blocks_;
    std::vector<std::unique_ptr<const XMLMacro>> macros_;
};

} // namespace kst
