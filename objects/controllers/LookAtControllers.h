#pragma once

#include "objects/controllers/Controller.h"
#include "objects/controllers/SceneReferences.h"
#include "objects/scene/Object3D.h"

#include <cstdint>
#include <string_view>

namespace kst {

/// The rotation in which `object` looks at `target`: row 2 points from the target to the object, row 0 is level with
/// `up`, and then both turn about row 2 by `roll`. Given in the frame of the object's parent. The identity, brought into
/// that frame, where the direction has no length or is that of `up`. Nothing without `target` and `object`.
///
/// In a stream, behind the name: references to roll, target and object.
class LookAtRotationController final : public SceneReferences<LookAtRotationController, MatrixRotationController> {
public:
    static constexpr std::string_view class_name = "LookAtRotationController";
    static constexpr std::uint32_t class_type_id = 0x22126DC0;

    // None is owned; any may be null.
    FloatController* roll() const { return roll_; }
    void set_roll(FloatController* roll) { roll_ = roll; }
    Object3D* target() const { return target_; }
    void set_target(Object3D* target) { target_ = target; }
    Object3D* object() const { return object_; }
    void set_object(Object3D* object) { object_ = object; }
    /// (0, 0, 1) at first; not stored.
    const Vector3& up() const { return up_; }
    void set_up(const Vector3& up) { up_ = up; }

    bool get_matrix(float time, Matrix4& out) override;
    float start_time() const override { return roll_ != nullptr ? roll_->start_time() : 0; }
    float end_time() const override { return roll_ != nullptr ? roll_->end_time() : 0; }
    /// The target, if it is set.
    void collect_objects(std::vector<Object3D*>& objects) const override;
    std::uint32_t memory_size() const override { return 32; }

    template <class Self, class Visit>
    static void references(Self& self, Visit visit) {
        visit("roll", self.roll_);
        visit("target", self.target_);
        visit("object", self.object_);
    }
    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        references(self, [&](std::string_view name, auto& target) { form.reference(name, target); });
    }

private:
    FloatController* roll_ = nullptr;
    Object3D* target_ = nullptr;
    Object3D* object_ = nullptr;
    Vector3 up_{0, 0, 1};
};

/// The same with a choice of the row that takes the direction and of how the others are built:
///
///     bits 0-1  the up axis U, 0 x, 1 y, 2 z: of the world, or of `up_object` where that is set
///     bits 2-3  the row that takes the direction; 3 leaves the identity
///     bit 4     that row points from the target to the object; clear: from the object to the target
///     bits 5-6  which of the two other rows is built from U; the last one follows from both.
///               Row 0 taken: 2 builds row 1, else row 2. Row 1: 0 builds row 2, else row 0. Row 2: 0 builds row 1,
///               else row 0
///     bit 7     turns the built row round
///
/// There is no up axis 3: it counts as no direction, which leaves the identity.
///
/// In a stream, behind the name: flags, 32 bits; references to target, object and up_object.
class LookAtConstrRotationController final
    : public SceneReferences<LookAtConstrRotationController, MatrixRotationController> {
public:
    static constexpr std::string_view class_name = "LookAtConstrRotationController";
    static constexpr std::uint32_t class_type_id = 0x679D695B;

    std::uint32_t flags() const { return flags_; }
    void set_flags(std::uint32_t flags) { flags_ = flags; }
    // None is owned; any may be null.
    Object3D* target() const { return target_; }
    void set_target(Object3D* target) { target_ = target; }
    Object3D* object() const { return object_; }
    void set_object(Object3D* object) { object_ = object; }
    Object3D* up_object() const { return up_object_; }
    void set_up_object(Object3D* up_object) { up_object_ = up_object; }

    bool get_matrix(float time, Matrix4& out) override;
    /// The target and the up object, as far as they are set.
    void collect_objects(std::vector<Object3D*>& objects) const override;
    std::uint32_t memory_size() const override { return 24; }

    template <class Self, class Visit>
    static void references(Self& self, Visit visit) {
        visit("target", self.target_);
        visit("object", self.object_);
        visit("up_object", self.up_object_);
    }
    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        form.value("flags", self.flags_);
        references(self, [&](std::string_view name, auto& target) { form.reference(name, target); });
    }

private:
    Vector3 up_axis() const;

    std::uint32_t flags_ = 0;
    Object3D* target_ = nullptr;
    Object3D* object_ = nullptr;
    Object3D* up_object_ = nullptr;
};

} // namespace kst
