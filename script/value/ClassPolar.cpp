#include "script/value/ClassPolar.h"

#include <array>

#include "script/value/BasicClasses.h"
#include "script/value/numbers.h"

namespace kst::script {

namespace {

ScriptValue get_spin(const Polar& p) {
    return number_value(p.spin);
}
ScriptValue get_pitch(const Polar& p) {
    return number_value(p.pitch);
}
ScriptValue get_r(const Polar& p) {
    return number_value(p.r);
}

constexpr std::array polar_members{
    PooledMember<Polar>{"spin", get_spin},   PooledMember<Polar>{"phi", get_spin},
    PooledMember<Polar>{"pitch", get_pitch}, PooledMember<Polar>{"tilt", get_pitch},
    PooledMember<Polar>{"theta", get_pitch}, PooledMember<Polar>{"r", get_r},
    PooledMember<Polar>{"radius", get_r},
};

} // namespace

ClassPolar::ClassPolar() : PooledValueClass("<polar>", polar_members) {}

ClassPolar& ClassPolar::instance() {
    static ClassPolar& instance = *new ClassPolar;
    return instance;
}

std::string ClassPolar::to_string(Data data) {
    const Polar& p = value(data);
    return "[spin:" + fixed_text(p.spin, 6) + " pitch:" + fixed_text(p.pitch, 6) + " r:" + fixed_text(p.r, 6) + "]";
}

ScriptValue ClassPolar::add(Data data, const ScriptValue& right) {
    const Polar a = value(data), b = read(right);
    return make({a.spin + b.spin, a.pitch + b.pitch, a.r + b.r});
}

ScriptValue ClassPolar::subtract(Data data, const ScriptValue& right) {
    const Polar a = value(data), b = read(right);
    return make({a.spin - b.spin, a.pitch - b.pitch, a.r - b.r});
}

ScriptValue ClassPolar::multiply(Data data, const ScriptValue& right) {
    const Polar p = value(data);
    return make({p.spin, p.pitch, p.r * expect_number(right)});
}

ScriptValue ClassPolar::divide(Data data, const ScriptValue& right) {
    const Polar p = value(data);
    return make({p.spin, p.pitch, p.r / expect_number(right)});
}

bool ClassPolar::before(const Polar& a, const Polar& b) const {
    return ordered_before(std::array{a.spin, a.pitch, a.r}, std::array{b.spin, b.pitch, b.r});
}

} // namespace kst::script
