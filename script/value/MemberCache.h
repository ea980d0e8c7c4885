#pragma once

#include <cstdint>

namespace kst::script {

/// What a place in the code remembers of the member that it last looked up. It belongs to whatever class the value had:
/// only that knows what the pointers are, and finds out by itself if they still hold.
struct MemberCache {
    const void* table = nullptr;
    void* found = nullptr;
    std::uint64_t version = 0;
};

} // namespace kst::script
