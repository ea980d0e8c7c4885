#pragma once

#include "objects/controllers/ClassName.h"
#include "objects/controllers/Controller.h"

#include <cstdint>
#include <string_view>

namespace kst {

/// The same value at all times. In a stream, behind the name: the value's floats.
template <class Family, ClassName name, std::uint32_t type>
class ConstController final : public Persistent<ConstController<Family, name, type>, Family> {
public:
    using Value = typename Family::Value;
    static constexpr std::string_view class_name = name.view();
    static constexpr std::uint32_t class_type_id = type;

    ConstController() = default;
    explicit ConstController(const Value& value) : value_(value) {}

    bool get(float /*time*/, Value& out) override {
        out = value_;
        return true;
    }
    void print(std::ostream& out) const override { print_value(out << class_name << ' ', value_); }
    std::uint32_t memory_size() const override { return 8 + sizeof(Value); }

    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        form.value("value", self.value_);
    }

private:
    Value value_{};
};

using ConstFloatController = ConstController<FloatController, "ConstFloatController", 0x2060697E>;
using ConstVector2Controller = ConstController<Vector2Controller, "ConstVector2Controller", 0x19F5386A>;
using ConstVector3Controller = ConstController<Vector3Controller, "ConstVector3Controller", 0x5B0168D0>;
using ConstRotationController = ConstController<RotationController, "ConstRotationController", 0x2E540F3C>;

} // namespace kst
