#pragma once

#include <mutex>

namespace kst::platform {

/// A lock that its holder may enter again. It allocates nothing and is ready before any constructor of a static object
/// has run (declare it `constinit`), so that the allocators may use it too. Works with std::lock_guard.
using CriticalSection = std::recursive_mutex;

} // namespace kst::platform
