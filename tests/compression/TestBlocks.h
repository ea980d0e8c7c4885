#pragma once

#include "compression/BlockContext.h"

#include <cstdint>
#include <string>
#include <vector>

namespace compression {

/// A block of one of the kinds that pictures and adversaries are made of.
struct TestBlock {
    std::string kind;
    std::vector<std::array<std::uint8_t, 3>> pixels; ///< 1 to 16
};

/// `each` blocks of every kind: noise, gradients, few colours, ties, flat and saturated channels, near greys. The same
/// on every machine.
std::vector<TestBlock> test_blocks(int each);

/// Under the default weights, format 0 and a free palette.
BlockContext make_context(const TestBlock& block);

} // namespace compression
