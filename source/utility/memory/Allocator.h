#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>

namespace kst {

/// One link of the allocator chain. Allocators have no lock of their own: the chain guards `allocate` and `deallocate`.
/// They live to the end of the process, so there is no virtual destructor.
class Allocator {
public:
    /// This allocator takes blocks of `size` bytes. Reads only constants, and doesn't look at what is left.
    virtual bool can_allocate(std::size_t size) const noexcept = 0;
    /// `pointer` lies where only this allocator's blocks lie.
    virtual bool owns(const void* pointer) const noexcept = 0;
    /// A block of at least `size` bytes, for which can_allocate() is true. Null: the address range is used up, and
    /// nothing has changed.
    virtual void* allocate(std::size_t size) = 0;
    /// Takes back a block of this allocator. A pointer that can be told not to be one is handed to
    /// stop_at_bad_pointer() and changes nothing.
    virtual void deallocate(void* pointer) noexcept = 0;
    /// Writes the statistics: one line, or with `detailed` a titled block with a line for each size class.
    virtual void report(std::ostream& stream, bool detailed) const = 0;

protected:
    constexpr Allocator() = default;
    Allocator(const Allocator&) = default;
    Allocator& operator=(const Allocator&) = default;
    ~Allocator() = default;
};

inline constexpr std::size_t page_bytes = 4096;
inline constexpr std::size_t class_step = 4;

/// Requests count in whole words of 4 bytes.
constexpr std::size_t round_to_words(std::size_t size) {
    return (size + class_step - 1) & ~(class_step - 1);
}

} // namespace kst
