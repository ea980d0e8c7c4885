#pragma once

#include "texture/AxisFilter.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace mosaicer {

/// A window so much wider than its row that it meets each sample many times, as at the top levels of a narrow and high
/// picture. Summed tap by tap, a picture of one column and 65,536 rows would take a minute.
///
/// Adding up the taps of each sample beforehand gives the same sum but for the last bits of a double. What counts is
/// the float next to it; unless that hangs on those bits, it is the float that the sum tap by tap gives.
class FoldedWindow {
public:
    /// `axis` has one output and one segment, and must outlive the window.
    explicit FoldedWindow(const AxisFilter& axis, std::size_t size);

    /// Whether the short cut is worth it.
    static bool pays(const AxisFilter& axis, std::size_t size) {
        return axis.outputs == 1 && axis.segments == 1 && axis.block >= 8 * size;
    }

    /// The sum over the samples at samples[i * stride], none negative, tap by tap, as a float.
    float sum(const double* samples, std::size_t stride) const;

    /// The same by the short cut; empty if the last bits might matter.
    std::optional<float> sum_if_certain(const double* samples, std::size_t stride) const;

private:
    const AxisFilter& axis_;
    std::vector<double> weights_;    ///< sum of each sample's taps
    std::vector<double> magnitudes_; ///< sum of their absolute values
    double error_share_;             ///< bound of the two sums' distance, as a share of the sum of magnitudes
};

} // namespace mosaicer
