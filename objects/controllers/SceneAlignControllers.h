#pragma once

#include "objects/controllers/Controller.h"
#include "objects/controllers/SceneReferences.h"
#include "objects/scene/Object3D.h"

#include <cstdint>
#include <string_view>

namespace kst {

/// Follows an object, which is not owned; nothing without one. The class keeps its family's identifier, and the object
/// is not stored: a stream has only the name.
template <class Class, class Family>
class Object3DAlign : public SceneReferences<Class, Family> {
public:
    static constexpr std::uint32_t class_type_id = Family::class_type_id;

    Object3D* object() const { return object_; }
    void set_object(Object3D* object) { object_ = object; }

    std::uint32_t memory_size() const override { return 12; }

    template <class Self, class Visit>
    static void references(Self& self, Visit visit) {
        visit("object", self.object_);
    }
    template <class Self, class Form>
    static void fields(Self& /*self*/, Form& /*form*/) {}

private:
    Object3D* object_ = nullptr;
};

/// Delivers the object's position in the world.
class Object3DAlignVector3Controller final : public Object3DAlign<Object3DAlignVector3Controller, Vector3Controller> {
public:
    static constexpr std::string_view class_name = "Object3DAlignVector3Controller";

    bool get(float time, Vector3& out) override;
};

/// Delivers the object's rotation in the world.
class Object3DAlignRotationController final
    : public Object3DAlign<Object3DAlignRotationController, MatrixRotationController> {
public:
    static constexpr std::string_view class_name = "Object3DAlignRotationController";

    bool get_matrix(float time, Matrix4& out) override;
};

} // namespace kst
