#pragma once

#include "source/utility/memory/AllocatorChain.h"

namespace kst {

/// The chain behind `new` and `delete` of a program that links kst::global_new.
AllocatorChain& global_chain() noexcept;

} // namespace kst
