#include "texture/FoldedWindow.h"

#include <cmath>

namespace mosaicer {

FoldedWindow::FoldedWindow(const AxisFilter& axis, std::size_t size) : axis_(axis), weights_(size), magnitudes_(size) {
    for (std::size_t k = 0; k < axis.block; ++k) {
        const auto sample = static_cast<std::size_t>(axis.positions[k]);
        weights_[sample] += axis.taps[k];
        magnitudes_[sample] += std::abs(axis.taps[k]);
    }
    // Each of the n additions of the one sum, and of the up to n + size operations of the other, is off by at most
    // 2^-53 of the magnitudes. Twice that covers the rounding of the bound itself.
    error_share_ = 2 * static_cast<double>(2 * axis.block + 2 * size) * 0x1p-53;
}

std::optional<float> FoldedWindow::sum_if_certain(const double* samples, std::size_t stride) const {
    double sum = 0;
    double magnitude = 0;
    for (std::size_t i = 0; i < weights_.size(); ++i) {
        sum += samples[i * stride] * weights_[i];
        magnitude += samples[i * stride] * magnitudes_[i];
    }
    const double error = magnitude * error_share_;
    const auto low = static_cast<float>(sum - error);
    const auto high = static_cast<float>(sum + error);
    return low == high ? std::optional(low) : std::nullopt;
}

float FoldedWindow::sum(const double* samples, std::size_t stride) const {
    if (const auto certain = sum_if_certain(samples, stride))
        return *certain;
    double sum = 0;
    for (std::size_t k = 0; k < axis_.block; ++k)
        sum += samples[static_cast<std::size_t>(axis_.positions[k]) * stride] * axis_.taps[k];
    return static_cast<float>(sum);
}

} // namespace mosaicer
