#include "objects/controllers/LookAtControllers.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace kst {

namespace {

/// From the target to the object, in the world.
Vector3 direction(const Object3D& object, const Object3D& target) {
    return normalised(object.world_position() - target.world_position());
}

using Rows = std::array<Vector3, 3>;

/// The matrix of the rows, the identity if one of them is zero, brought into the frame of the object's parent.
Matrix4 in_parent_frame(const Rows& rows, const Object3D& object) {
    Matrix4 matrix;
    if (rows[0] != Vector3{} && rows[1] != Vector3{} && rows[2] != Vector3{})
        for (int i = 0; i < 3; ++i)
            matrix.set_row(i, rows[static_cast<std::size_t>(i)]);
    if (object.parent() != nullptr)
        matrix = matrix * affine_inverse(object.parent()->world_matrix());
    return matrix;
}

Vector3 unit_axis(std::uint32_t axis) {
    return {axis == 0 ? 1.0f : 0.0f, axis == 1 ? 1.0f : 0.0f, axis == 2 ? 1.0f : 0.0f};
}

void append_if_set(Object3D* object, std::vector<Object3D*>& objects) {
    if (object != nullptr)
        objects.push_back(object);
}

} // namespace

bool LookAtRotationController::get_matrix(float time, Matrix4& out) {
    if (target_ == nullptr || object_ == nullptr)
        return false;
    float angle = 0;
    if (roll_ != nullptr)
        roll_->get(time, angle);
    const auto c = static_cast<float>(std::cos(static_cast<double>(angle)));
    const auto s = static_cast<float>(std::sin(static_cast<double>(angle)));
    const Vector3 d = direction(*object_, *target_);
    const Vector3 x = normalised(cross(up_, d));
    const Vector3 y = cross(d, x);
    out = in_parent_frame({c * x + s * y, c * y - s * x, d}, *object_);
    return true;
}

void LookAtRotationController::collect_objects(std::vector<Object3D*>& objects) const {
    append_if_set(target_, objects);
}

Vector3 LookAtConstrRotationController::up_axis() const {
    const std::uint32_t axis = flags_ & 3u;
    if (up_object_ == nullptr || axis == 3)
        return unit_axis(axis);
    return up_object_->world_matrix().row(static_cast<int>(axis));
}

bool LookAtConstrRotationController::get_matrix(float /*time*/, Matrix4& out) {
    if (target_ == nullptr || object_ == nullptr)
        return false;
    const std::size_t row = (flags_ >> 2) & 3u;
    const std::uint32_t build = (flags_ >> 5) & 3u;
    Rows rows{};
    if (row < 3) {
        const Vector3 d = direction(*object_, *target_);
        const Vector3 u = up_axis();
        rows[row] = (flags_ & 16u) != 0 ? d : -d;
        // In the circle of rows 0, 1, 2, a row is the cross product of the two behind it.
        const std::size_t after = (row + 1) % 3;
        const std::size_t before = (row + 2) % 3;
        const bool builds_after = row == 0 ? build == 2 : (build == 0) == (row == 1);
        const std::size_t built = builds_after ? after : before;
        const std::size_t last = builds_after ? before : after;
        const bool turned = (flags_ & 128u) != 0;
        const Vector3 across = builds_after ? cross(u, rows[row]) : cross(rows[row], u);
        rows[built] = normalised(turned ? -across : across);
        rows[last] = cross(rows[(last + 1) % 3], rows[(last + 2) % 3]);
    }
    out = in_parent_frame(rows, *object_);
    return true;
}

void LookAtConstrRotationController::collect_objects(std::vector<Object3D*>& objects) const {
    append_if_set(target_, objects);
    append_if_set(up_object_, objects);
}

} // namespace kst
