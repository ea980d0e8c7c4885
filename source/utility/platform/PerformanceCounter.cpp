#include "source/utility/platform/PerformanceCounter.h"

#include <chrono>

namespace kst::platform {

std::int64_t performance_counter() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

} // namespace kst::platform
