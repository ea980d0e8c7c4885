#pragma once

#include <cstddef>

namespace kst {

/// What the system maps as one large page where it finds the memory, sparing the processor's address tables. It is
/// asked to for whole multiples of this size that are committed at once.
inline constexpr std::size_t large_page_bytes = std::size_t{2} << 20;

/// Takes `size` bytes of address space without memory behind them: a touch of them stops the process. Null when the
/// system refuses. `size` is a multiple of the system's page size; the result is aligned to it, or to a
/// large page if `size` reaches one.
void* reserve_address_range(std::size_t size) noexcept;

/// Puts readable and writable memory, all zero, behind whole pages of a reserved range. False when the system refuses;
/// the pages are then as before.
[[nodiscard]] bool commit_pages(void* address, std::size_t size) noexcept;

/// Gives a reserved range back, with all that was committed in it.
void release_address_range(void* address, std::size_t size) noexcept;

} // namespace kst
