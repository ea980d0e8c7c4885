#pragma once

#include "objects/controllers/PackedQuat.h"
#include "objects/database/print_value.h"

#include <ostream>

namespace kst {

/// A key of a track, in memory as in files: 32-bit numbers without padding.
template <class ContentType>
struct Key {
    using Content = ContentType;

    float time = 0;
    Content value{};
};

/// What a Bezier key holds besides its time. `in` and `out` are tangents in units of value a unit of time; of a
/// quaternion key they are the inner points of the curve.
template <class Value>
struct BezierContent {
    Value value{}, in{}, out{};
};

static_assert(sizeof(Key<float>) == 8 && sizeof(Key<Vector2>) == 12 && sizeof(Key<Vector3>) == 16);
static_assert(sizeof(Key<GQuat>) == 20 && sizeof(Key<PackedQuat>) == 8);
static_assert(sizeof(Key<BezierContent<float>>) == 16 && sizeof(Key<BezierContent<Vector3>>) == 40);
static_assert(sizeof(Key<BezierContent<GQuat>>) == 52);

template <class Value>
void print_value(std::ostream& out, const BezierContent<Value>& content) {
    print_record(out, content.value);
    print_record(out << ' ', content.in);
    print_record(out << ' ', content.out);
}

/// In a dump: TIME:VALUE.
template <class Content>
void print_record(std::ostream& out, const Key<Content>& key) {
    out << key.time << ':';
    print_record(out, key.value);
}

} // namespace kst
