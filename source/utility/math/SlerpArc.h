#pragma once

#include "source/utility/math/GQuat.h"

namespace kst {

/// The way from one rotation to another, for many places on it: `slerp` with all that does not hang on the place done
/// once. Both give the same bits.
class SlerpArc {
public:
    /// From nothing to nothing.
    SlerpArc() = default;
    SlerpArc(const GQuat& p, const GQuat& q);

    /// slerp(p, q, a).
    GQuat at(float a) const;

private:
    GQuat from_;
    GQuat to_;
    double angle_ = 0; ///< between the two, the short way; its cosine and sine
    double cosine_ = 1;
    double sine_ = 0;
    double sign_ = 1;      ///< of the end that is nearer, q or -q
    bool straight_ = true; ///< too near for an angle
};

} // namespace kst
