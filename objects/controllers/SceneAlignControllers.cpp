#include "objects/controllers/SceneAlignControllers.h"

namespace kst {

bool Object3DAlignVector3Controller::get(float /*time*/, Vector3& out) {
    if (object() == nullptr)
        return false;
    out = object()->world_position();
    return true;
}

bool Object3DAlignRotationController::get_matrix(float /*time*/, Matrix4& out) {
    if (object() == nullptr)
        return false;
    out = object()->world_matrix();
    out.set_row(3, {});
    return true;
}

} // namespace kst
