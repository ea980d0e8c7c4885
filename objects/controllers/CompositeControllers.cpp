#include "objects/controllers/CompositeControllers.h"

#include <cmath>

namespace kst {

bool XYZVector3Controller::get(float time, Vector3& out) {
    bool any = false;
    const std::array<float*, 3> components{&out.x, &out.y, &out.z};
    for (std::size_t i = 0; i < 3; ++i)
        if (children()[i] != nullptr && children()[i]->get(time, *components[i]))
            any = true;
    return any;
}

bool EulerRotationController::get_matrix(float time, Matrix4& out) {
    std::array<double, 3> sine{};
    std::array<double, 3> cosine{};
    for (std::size_t i = 0; i < 3; ++i) {
        float angle = 0;
        if (children()[i] == nullptr || !children()[i]->get(time, angle))
            return false;
        sine[i] = std::sin(static_cast<double>(angle));
        cosine[i] = std::cos(static_cast<double>(angle));
    }
    const auto [sa, sb, sc] = sine;
    const auto [ca, cb, cc] = cosine;
    const auto row = [](double x, double y, double z) {
        return Vector3{static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
    };
    out = Matrix4{};
    out.set_row(0, row(cc * cb, sc * cb, -sb));
    out.set_row(1, row(sb * sa * cc - sc * ca, sb * sa * sc + cc * ca, cb * sa));
    out.set_row(2, row(sb * ca * cc + sc * sa, sb * ca * sc - cc * sa, cb * ca));
    return true;
}

} // namespace kst
