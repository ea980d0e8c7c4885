#pragma once

#include <sys/single_threaded.h>

namespace kst {

/// True while the process has only ever had one thread, so that a lock may be left out. A thread that sees true can
/// rely on it until it starts another thread itself.
inline bool process_has_one_thread() noexcept {
    return __libc_single_threaded != 0;
}

} // namespace kst
