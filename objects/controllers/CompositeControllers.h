#pragma once

#include "objects/controllers/Controller.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kst {

/// A controller made of three others, which are not owned and may be null. It begins with the first of them and ends
/// with the last; without any, both times are 0. In a stream, behind the name: three references.
template <class Class, class Family>
class FloatComposite : public Persistent<Class, Family> {
public:
    /// Index 0 to 2.
    FloatController* child(std::size_t index) const { return children_.at(index); }
    void set_child(std::size_t index, FloatController* child) { children_.at(index) = child; }

    float start_time() const override {
        return outermost(&Controller::start_time, [](float a, float b) { return std::min(a, b); });
    }
    float end_time() const override {
        return outermost(&Controller::end_time, [](float a, float b) { return std::max(a, b); });
    }
    void print(std::ostream& out) const override { out << Class::class_name; }
    std::uint32_t memory_size() const override { return 20; }

    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        form.reference("x", self.children_[0]);
        form.reference("y", self.children_[1]);
        form.reference("z", self.children_[2]);
    }

protected:
    const std::array<FloatController*, 3>& children() const { return children_; }

private:
    template <class Choose>
    float outermost(float (Controller::*time)() const, Choose choose) const {
        float result = 0;
        bool any = false;
        for (const FloatController* const child : children_) {
            if (child == nullptr)
                continue;
            const float t = (child->*time)();
            result = any ? choose(result, t) : t;
            any = true;
        }
        return result;
    }

    std::array<FloatController*, 3> children_{};
};

/// A vector by component. What no child delivers stays as it was; `get` is true if any child delivered.
class XYZVector3Controller final : public FloatComposite<XYZVector3Controller, Vector3Controller> {
public:
    static constexpr std::string_view class_name = "XYZVector3Controller";
    static constexpr std::uint32_t class_type_id = 0x33DA0FC4;

    bool get(float time, Vector3& out) override;
};

/// A rotation about x, then y, then z, by the children's angles in radians. Nothing unless all three deliver.
class EulerRotationController final : public FloatComposite<EulerRotationController, MatrixRotationController> {
public:
    static constexpr std::string_view class_name = "EulerRotationController";
    static constexpr std::uint32_t class_type_id = 0x033606E8;

    bool get_matrix(float time, Matrix4& out) override;
};

} // namespace kst
