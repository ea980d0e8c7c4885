#pragma once

#include "objects/controllers/KeyTrack.h"
#include "source/utility/math/SlerpArc.h"

#include <cstring>
#include <type_traits>
#include <vector>

// What a keyed controller is made of besides its track: how a value comes of a segment, and which of the optional
// operations it has. An interpolation tells
//
//     Value, Content                  what `get` delivers; what a key holds
//     at(segment, memo)               the value at a place between two keys
//     Memo                            what `at` keeps from one place to the next, to save work and without effect
//     prints_keys                     whether `print` lists the keys
//     value_of(content)               the value at a key, where keys are listed or smoothed
//     smooths                         whether the ends can be smoothed; then also
//     content_of(value), mix(a, b, w) a key's content, and the way from a (w = 0) to b
//     fields(track, form)             the track's persistent form
namespace kst {

template <class ValueType, class ContentType = ValueType>
struct Interpolation {
    using Value = ValueType;
    using Content = ContentType;
    using Track = KeyTrack<Key<Content>>;
    using Segment = typename Track::Segment;
    struct Memo {};
    static constexpr bool prints_keys = true;
    static constexpr bool smooths = false;

    template <class SomeTrack, class Form>
    static void fields(SomeTrack& track, Form& form) {
        Track::fields(track, form);
    }
    static const Content& value_of(const Content& content) { return content; }
    static const Content& content_of(const Content& value) { return value; }
};

template <class Value>
struct StepInterpolation : Interpolation<Value> {
    static Value at(const typename Interpolation<Value>::Segment& s, typename Interpolation<Value>::Memo&) {
        return *s.previous;
    }
};

template <class Value>
struct LinearInterpolation : Interpolation<Value> {
    static constexpr bool smooths = std::is_same_v<Value, Vector3>;

    static Value at(const typename Interpolation<Value>::Segment& s, typename Interpolation<Value>::Memo&) {
        return mix(*s.previous, *s.next, s.alpha);
    }
    static Value mix(const Value& a, const Value& b, float w) { return (1 - w) * a + w * b; }
};

/// A cubic through both keys with their tangents.
template <class Value>
struct BezierInterpolation : Interpolation<Value, BezierContent<Value>> {
    static constexpr bool prints_keys = false;

    static Value at(const typename BezierInterpolation::Segment& s, typename BezierInterpolation::Memo&) {
        const float a = s.alpha;
        const float b = 1 - a;
        const float d = s.delta * 0.33333334f;
        const Value& p0 = s.previous->value;
        const Value p1 = p0 + d * s.previous->out;
        const Value& p3 = s.next->value;
        const Value p2 = p3 - d * s.next->in;
        return (b * b * b) * p0 + (3 * a * b * b) * p1 + (3 * a * a * b) * p2 + (a * a * a) * p3;
    }
};

/// The arc between the two keys that were asked for last, which are most often those of the next place, too. Keys are
/// told apart by their bits, so that no change of a track goes unseen.
template <class Content>
class LastArc {
public:
    const SlerpArc& between(const Content& p, const Content& q, GQuat (*rotation_of)(const Content&)) {
        if (!known_ || !is_same(p, from_) || !is_same(q, to_)) {
            arc_ = SlerpArc(rotation_of(p), rotation_of(q));
            from_ = p;
            to_ = q;
            known_ = true;
        }
        return arc_;
    }

private:
    static bool is_same(const Content& a, const Content& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

    bool known_ = false;
    Content from_;
    Content to_;
    SlerpArc arc_;
};

struct SlerpInterpolation : Interpolation<GQuat> {
    using Memo = LastArc<GQuat>;
    static constexpr bool smooths = true;

    static GQuat at(const Segment& s, Memo& memo) {
        return memo.between(*s.previous, *s.next, [](const GQuat& q) { return q; }).at(s.alpha);
    }
    static GQuat mix(const GQuat& a, const GQuat& b, float w) { return blend(a, b, w); }
};

/// Slerp between keys of 8 bytes. A stream has the whole quaternions; loading thins them out (see thin_keys).
struct PackedSlerpInterpolation : Interpolation<GQuat, PackedQuat> {
    using Memo = LastArc<PackedQuat>;
    static constexpr bool smooths = true;

    static GQuat at(const Segment& s, Memo& memo) { return memo.between(*s.previous, *s.next, value_of).at(s.alpha); }
    static GQuat mix(const GQuat& a, const GQuat& b, float w) { return blend(a, b, w); }
    static GQuat value_of(const PackedQuat& content) { return unpack(content); }
    static PackedQuat content_of(const GQuat& value) { return pack(value); }

    template <class SomeTrack, class Form>
    static void fields(SomeTrack& track, Form& form) {
        KeyTrack<Key<GQuat>> whole = unpacked(track);
        KeyTrack<Key<GQuat>>::fields(whole, form);
        if constexpr (Form::loads)
            track.assign(whole, packed(whole));
    }

    static KeyTrack<Key<GQuat>> unpacked(const Track& track);
    static std::vector<Key<PackedQuat>> packed(const KeyTrack<Key<GQuat>>& whole);
};

/// The construction of de Casteljau with `slerp` in place of the straight line.
struct QuatBezierInterpolation : Interpolation<GQuat, BezierContent<GQuat>> {
    static constexpr bool prints_keys = false;

    static GQuat at(const Segment& s, Memo&) {
        const float a = s.alpha;
        const GQuat s1 = slerp(s.previous->value, s.previous->out, a);
        const GQuat s2 = slerp(s.previous->out, s.next->in, a);
        const GQuat s3 = slerp(s.next->in, s.next->value, a);
        return slerp(slerp(s1, s2, a), slerp(s2, s3, a), a);
    }
};

} // namespace kst
