#pragma once

#include "objects/controllers/ClassName.h"
#include "objects/controllers/Controller.h"
#include "objects/controllers/interpolations.h"

#include <cstdint>
#include <string_view>

namespace kst {

/// A controller that is a track of keys and a way to interpolate between them. Its classes are the list below.
///
/// In a stream, behind the name: the track (see KeyTrack).
template <class Family, class Interpolation, ClassName name, std::uint32_t type>
class KeyedController final : public Persistent<KeyedController<Family, Interpolation, name, type>, Family> {
public:
    using Value = typename Interpolation::Value;
    using Content = typename Interpolation::Content;
    static constexpr std::string_view class_name = name.view();
    static constexpr std::uint32_t class_type_id = type;

    typename Interpolation::Track& track() { return track_; }
    const typename Interpolation::Track& track() const { return track_; }

    /// See KeyTrack::add_key. The content is all that a key holds besides its time.
    void add_key(float time, const Content& content) { track_.add_key(time, content); }

    float start_time() const override { return track_.start(); }
    float end_time() const override { return track_.end(); }

    bool get(float time, Value& out) override {
        typename Interpolation::Segment segment;
        if (!track_.find_segment(time, segment))
            return false;
        out = Interpolation::at(segment, memo_);
        return true;
    }

    void print(std::ostream& out) const override {
        out << class_name;
        if constexpr (Interpolation::prints_keys) {
            out << '\n';
            for (const auto& key : track_.keys()) {
                out << "t: " << key.time << " cp: ";
                print_value(out, Interpolation::value_of(key.value));
                out << '\n';
            }
        }
    }

    void smooth_ends(std::uint32_t count) override {
        if constexpr (Interpolation::smooths) {
            const std::size_t n = track_.keys().size();
            if (n == 0)
                return;
            const Value middle = Interpolation::mix(value_at(0), value_at(n - 1), 0.5f);
            for (std::size_t i = 0; i < count && i < n / 2; ++i) {
                const float w = 1 - static_cast<float>(i) / static_cast<float>(count);
                for (const std::size_t index : {i, n - 1 - i})
                    track_.set_content(index,
                                       Interpolation::content_of(Interpolation::mix(value_at(index), middle, w)));
            }
        }
    }

    std::uint32_t memory_size() const override {
        return static_cast<std::uint32_t>(12 + track_.keys().size() * sizeof(Key<Content>));
    }

    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        Interpolation::fields(self.track_, form);
    }

private:
    Value value_at(std::size_t index) const { return Interpolation::value_of(track_.keys()[index].value); }

    typename Interpolation::Track track_;
    [[no_unique_address]] typename Interpolation::Memo memo_;
};

using StepFloatController =
    KeyedController<FloatController, StepInterpolation<float>, "StepFloatController", 0x6DA951B2>;
using StepVector2Controller =
    KeyedController<Vector2Controller, StepInterpolation<Vector2>, "StepVector2Controller", 0x49B17EFB>;
using StepVector3Controller =
    KeyedController<Vector3Controller, StepInterpolation<Vector3>, "StepVector3Controller", 0x544E238F>;
using LinearFloatController =
    KeyedController<FloatController, LinearInterpolation<float>, "LinearFloatController", 0x76BF5B66>;
using LinearVector2Controller =
    KeyedController<Vector2Controller, LinearInterpolation<Vector2>, "LinearVector2Controller", 0x247C751B>;
using LinearVector3Controller =
    KeyedController<Vector3Controller, LinearInterpolation<Vector3>, "LinearVector3Controller", 0x26A5128C>;
using BezierFloatController =
    KeyedController<FloatController, BezierInterpolation<float>, "BezierFloatController", 0x29743550>;
using BezierVector3Controller =
    KeyedController<Vector3Controller, BezierInterpolation<Vector3>, "BezierVector3Controller", 0x28DB639A>;
using QuatLinearRotationController =
    KeyedController<RotationController, SlerpInterpolation, "QuatLinearRotationController", 0x648A206C>;
/// Shares identifier and stream form with its unpacked twin: a stream of either can be read by either.
using QuatLinearRotationControllerPacked =
    KeyedController<RotationController, PackedSlerpInterpolation, "QuatLinearRotationControllerPacked", 0x648A206C>;
using QuatBezRotationController =
    KeyedController<RotationController, QuatBezierInterpolation, "QuatBezRotationController", 0x197345A5>;

} // namespace kst
