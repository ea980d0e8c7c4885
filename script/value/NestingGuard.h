#pragma once

#include "script/value/DSError.h"

namespace kst::script {

/// Counts how deep native code and scripts have called into each other. Calls from script to script do not nest
/// natively; a native function that calls back, a walk along `super`, a tag of a tag do, and each of these takes a
/// guard. Throws DSError above the limit, well before the thread's stack ends.
class NestingGuard {
public:
    static constexpr int limit = 200;

    NestingGuard() {
        if (depth >= limit)
            throw DSError("Script error: calls are nested too deeply");
        ++depth;
    }
    ~NestingGuard() { --depth; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;

private:
    static inline int depth = 0;
};

} // namespace kst::script
