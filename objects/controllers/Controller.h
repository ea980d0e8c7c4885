#pragma once

#include "objects/database/PersistentForm.h"
#include "source/utility/math/GQuat.h"

#include <cstdint>
#include <ostream>
#include <vector>

namespace kst {

class Object3D;

/// Gives the value of something at a time. The value itself is `get` of the families below.
///
/// A look-up remembers the segment that it found, so a controller belongs to one thread at a time.
class Controller : public PersistentObject {
public:
    virtual float start_time() const { return 0; }
    virtual float end_time() const { return 0; }
    /// Appends the scene objects that the controller depends on.
    virtual void collect_objects(std::vector<Object3D*>& objects) const { static_cast<void>(objects); }
    /// The class's name, then a constant's value behind a blank, or a line end and the keys of a step or linear track,
    /// a line each: "t: TIME cp: VALUE", a value being its components with blanks between.
    virtual void print(std::ostream& out) const = 0;
    /// Draws the first and the last `count` keys towards the middle of the first and the last key's value: both ends
    /// become that value, and the draw falls off evenly inwards. Does nothing but for linear tracks of Vector3 and
    /// of quaternions.
    virtual void smooth_ends(std::uint32_t count) { static_cast<void>(count); }
    /// Bytes that the controller is counted with: a head, and its keys.
    virtual std::uint32_t memory_size() const = 0;
};

/// The controllers of one kind of value.
template <class ValueType, std::uint32_t type>
class TController : public Controller {
public:
    using Value = ValueType;
    static constexpr std::uint32_t class_type_id = type;

    bool is_a(std::uint32_t type_id) const override { return type_id == class_type_id || Controller::is_a(type_id); }
    std::uint32_t type_id() const override { return class_type_id; }

    /// False if there is no value; `out` is as before then.
    virtual bool get(float time, Value& out) = 0;
};

using FloatController = TController<float, 0x71015166>;
using Vector2Controller = TController<Vector2, 0x787D4CEB>;
using Vector3Controller = TController<Vector3, 0x1F014604>;

/// Rotations, as unit quaternions and as matrices.
class RotationController : public TController<GQuat, 0x564E7A11> {
public:
    /// False if there is no value; `out` is as before then. By default the matrix of `get`.
    virtual bool get_matrix(float time, Matrix4& out);
};

/// A rotation that is found as a matrix: `get` is the quaternion of that matrix.
class MatrixRotationController : public RotationController {
public:
    bool get(float time, GQuat& out) override;
    bool get_matrix(float time, Matrix4& out) override = 0;
};

} // namespace kst
