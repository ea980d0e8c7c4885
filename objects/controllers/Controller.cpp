#include "objects/controllers/Controller.h"

namespace kst {

bool RotationController::get_matrix(float time, Matrix4& out) {
    GQuat rotation;
    if (!get(time, rotation))
        return false;
    out = to_matrix(rotation);
    return true;
}

bool MatrixRotationController::get(float time, GQuat& out) {
    Matrix4 matrix;
    if (!get_matrix(time, matrix))
        return false;
    out = to_quaternion(matrix);
    return true;
}

} // namespace kst
