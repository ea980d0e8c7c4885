#pragma once

#include "driver/records/Keywords.h"

#include <array>
#include <stdexcept>
#include <string_view>

namespace mosaicer {

/// What one insertion strategy means to the walk, to the log and to the generation loop.
struct InsertionStrategyInfo {
    InsertionStrategy value;
    bool pixel_step;       ///< candidates are one texel apart
    bool expanding_square; ///< the walk is confined to a region that grows from the top left corner
    std::string_view text;
    InsertionStrategy alternative; ///< what a second attempt uses
};

inline constexpr std::array insertion_strategies{
    InsertionStrategyInfo{InsertionStrategy::PIXEL_STEP, true, false, "pixel step",
                          InsertionStrategy::PIXEL_STEP_EXPANDING_SQUARE},
    InsertionStrategyInfo{InsertionStrategy::PIXEL_STEP_EXPANDING_SQUARE, true, true, "pixel step, expanding square",
                          InsertionStrategy::PIXEL_STEP},
    InsertionStrategyInfo{InsertionStrategy::SMALL_STEP, false, false, "small step",
                          InsertionStrategy::SMALL_STEP_EXPANDING_SQUARE},
    InsertionStrategyInfo{InsertionStrategy::SMALL_STEP_EXPANDING_SQUARE, false, true, "small step, expanding square",
                          InsertionStrategy::SMALL_STEP},
};

/// The row of `value`. Throws std::runtime_error "Unknown insertion strategy" for a value outside the table.
constexpr const InsertionStrategyInfo& insertion_strategy_info(InsertionStrategy value) {
    for (const auto& info : insertion_strategies)
        if (info.value == value)
            return info;
    throw std::runtime_error("Unknown insertion strategy");
}

} // namespace mosaicer
