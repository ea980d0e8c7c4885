#pragma once

namespace kst {

/// What was wrong with a pointer that an allocator was asked to take back.
enum class BadPointer { not_a_block, freed_twice };

/// In a debug build writes "Bad pointer ADDRESS passed to delete: REASON" on standard error and stops the process. In a
/// release build it returns, and the caller leaves its blocks alone: the request is lost, no other block is damaged.
void stop_at_bad_pointer(const void* pointer, BadPointer reason) noexcept;

} // namespace kst
