#pragma once

namespace compression {

/// A symmetric 3 by 3 matrix. Its power, scaled between the steps, leads to the principal axis.
template <typename T>
struct Symmetric {
    T xx, xy, xz, yy, yz, zz;

    T trace() const { return xx + yy + zz; }
    Symmetric squared() const {
        return {xx * xx + xy * xy + xz * xz, xx * xy + xy * yy + xz * yz, xx * xz + xy * yz + xz * zz,
                xy * xy + yy * yy + yz * yz, xy * xz + yy * yz + yz * zz, xz * xz + yz * yz + zz * zz};
    }
    Symmetric scaled(T s) const { return {xx * s, xy * s, xz * s, yy * s, yz * s, zz * s}; }
};

} // namespace compression
