#pragma once

#include <cstdint>

namespace kst {

/// The holders of each store, counted outside the stores in one process-wide table under one lock. A slot is a small
/// number; slots whose count fell to 0 are used again, the last one freed first.
namespace store_references {

/// A slot with the count 1.
std::int32_t take();
void add(std::int32_t slot);
/// True: that was the last holder. The slot is free again and the store is the caller's to destroy.
[[nodiscard]] bool release(std::int32_t slot);

} // namespace store_references

} // namespace kst
