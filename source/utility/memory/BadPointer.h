#pragma once

namespace kst {

/// Called for a pointer that an allocator was asked to take back and that is no live block: never was one, or was freed
/// already. In a debug build writes "Bad pointer ADDRESS passed to delete: no block in use starts there" on standard
/// error and stops the process. In a release build it returns, and the caller leaves its blocks alone: the request is
/// lost, no other block is damaged.
void stop_at_bad_pointer(const void* pointer) noexcept;

} // namespace kst
