#pragma once

#include "objects/database/CloneManager.h"
#include "objects/database/PersistentForm.h"
#include "source/utility/math/GQuat.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace kst {

/// A place in a scene: a position and a rotation in the frame of its parent, or in the world without one. What the
/// scene-based controllers read.
///
/// Its data in a stream, behind the name: position, 3 floats; rotation, 4 floats; reference to the parent.
class Object3D final : public Persistent<Object3D, PersistentObject> {
public:
    static constexpr std::string_view class_name = "Object3D";
    static constexpr std::uint32_t class_type_id = 0x3D0B7EC7;

    const Vector3& position() const { return position_; }
    void set_position(const Vector3& position) { position_ = position; }
    const GQuat& rotation() const { return rotation_; }
    void set_rotation(const GQuat& rotation) { rotation_ = rotation; }
    /// Null for none; not owned.
    Object3D* parent() const { return parent_; }
    void set_parent(Object3D* parent) { parent_ = parent; }

    /// From the object's frame to the world. Throws ErrorWithCStack "Object3D::world_matrix() the parents of NAME form
    /// a circle", as a stream may tell them to.
    Matrix4 world_matrix() const;
    Vector3 world_position() const { return world_matrix().row(3); }

    void collect_references(CloneSet& set) const override { set.add(parent_); }
    std::unique_ptr<Clonable> clone() const override { return std::make_unique<Object3D>(*this); }
    void patch_references(const CloneMapping& mapping) override { mapping.patch(parent_); }

    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        form.value("position", self.position_);
        form.value("rotation", self.rotation_);
        form.reference("parent", self.parent_);
    }

private:
    Matrix4 local_matrix() const;

    Vector3 position_;
    GQuat rotation_;
    Object3D* parent_ = nullptr;
};

} // namespace kst
