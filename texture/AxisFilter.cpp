#include "texture/AxisFilter.h"

#include <cassert>

namespace mosaicer {

AxisFilter::AxisFilter(std::int32_t size, std::int32_t output_count, const FilterKernel& kernel, Layout layout)
    : outputs(static_cast<std::size_t>(output_count)) {
    const std::size_t tap_count = kernel.taps().size();
    const std::size_t step = static_cast<std::size_t>(size) / outputs;
    const bool shares = layout == Layout::shared_blocks && outputs > 1 && tap_count > step;
    segments = shares ? (tap_count + step - 1) / step : 1;
    block = shares ? step : tap_count;
    assert(segments <= max_segments);

    taps.assign(block * segments, 0.0);
    for (std::size_t k = 0; k < tap_count; ++k)
        taps[k % block * segments + k / block] = static_cast<double>(kernel.taps()[k]);

    const std::size_t blocks = outputs + segments - 1;
    positions.reserve(blocks * block);
    const auto first = static_cast<std::int64_t>(step / 2) - static_cast<std::int64_t>(tap_count / 2);
    for (std::size_t b = 0; b < blocks; ++b)
        for (std::size_t p = 0; p < block; ++p)
            positions.push_back(
                static_cast<std::int32_t>(mirror(first + static_cast<std::int64_t>(b * step + p), size)));
}

} // namespace mosaicer
