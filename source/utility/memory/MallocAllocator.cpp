#include "source/utility/memory/MallocAllocator.h"

#include "source/utility/Errors.h"
#include "source/utility/memory/BadPointer.h"
#include "source/utility/memory/FormatBytes.h"

#include <cstdint>
#include <cstdlib>
#include <new>
#include <ostream>

namespace kst {
namespace {

struct BlockHeader {
    std::size_t tagged_size;
    void* raw;
};
static_assert(sizeof(BlockHeader) == 16, "the block behind it keeps the C heap's alignment");

/// Addresses have 47 bits, so the upper ones of a size are free to tell a block from other memory. A block that the C
/// heap got back has its links there.
constexpr std::uint64_t size_mask = (std::uint64_t{1} << 48) - 1;
constexpr std::uint64_t block_tag = 0xB10Cull << 48;

bool is_block(const BlockHeader& header) {
    const auto raw = reinterpret_cast<std::uintptr_t>(header.raw);
    return (header.tagged_size & ~size_mask) == block_tag && raw <= reinterpret_cast<std::uintptr_t>(&header);
}

/// 16 bytes that are asked of the C heap, and 20 that are reckoned for its own header and rounding.
constexpr std::int64_t cost_of_block = 36;

[[noreturn]] void throw_out_of_memory(std::size_t size) {
    // The text needs memory itself. When that request fails too, it comes back here, and the language's own exception,
    // which needs none, ends the descent.
    thread_local bool telling = false;
    if (telling)
        throw std::bad_alloc();
    struct Telling {
        Telling() { telling = true; }
        ~Telling() { telling = false; }
    } const guard;
    throw ErrorWithCStack("Out of memory allocating " + std::to_string(size) + " bytes");
}

} // namespace

void* MallocAllocator::allocate_aligned(std::size_t size, std::size_t alignment) {
    constexpr std::size_t most = size_mask / 2; // more than there are addresses
    if (size > most || alignment > most - size - sizeof(BlockHeader))
        throw_out_of_memory(size);
    const std::size_t padding = alignment > 16 ? alignment : 0;
    void* const raw = std::malloc(size + sizeof(BlockHeader) + padding);
    if (!raw)
        throw_out_of_memory(size);
    const auto first = reinterpret_cast<std::uintptr_t>(raw) + sizeof(BlockHeader);
    const std::size_t skipped = ((first + alignment - 1) & ~(alignment - 1)) - first;
    std::byte* const block = static_cast<std::byte*>(raw) + sizeof(BlockHeader) + skipped;
    new (block - sizeof(BlockHeader)) BlockHeader{size | block_tag, raw};
    count(static_cast<std::int64_t>(size) + cost_of_block);
    return block;
}

void MallocAllocator::deallocate(void* pointer) noexcept {
    const auto* const header =
        reinterpret_cast<const BlockHeader*>(static_cast<std::byte*>(pointer) - sizeof(BlockHeader));
    if (reinterpret_cast<std::uintptr_t>(pointer) % 16 != 0 || !is_block(*header))
        return stop_at_bad_pointer(pointer);
    count(-(static_cast<std::int64_t>(header->tagged_size & size_mask) + cost_of_block));
    std::free(header->raw);
}

void MallocAllocator::count(std::int64_t bytes) noexcept {
    const std::int64_t now = used_.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    std::int64_t peak = max_used();
    while (now > peak && !max_used_.compare_exchange_weak(peak, now, std::memory_order_relaxed)) {
    }
}

void MallocAllocator::report(std::ostream& stream, bool detailed) const {
    if (!detailed) {
        stream << "Malloc allocator:    " << format_bytes(used()) << '\n';
        return;
    }
    stream << "Malloc allocator\n---------------\n"
           << "Used memory:      " << format_bytes(used()) << '\n'
           << "Max used memory:  " << format_bytes(max_used()) << "\n\n";
}

} // namespace kst
