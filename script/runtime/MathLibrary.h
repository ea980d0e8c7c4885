#pragma once

#include "script/binding/bind.h"
#include "script/runtime/RandomSource.h"

namespace kst::script {

/// The library `math`. Its members, one by one: docs/script-math.md.
///
/// Angles are radians. The frame is right-handed with z up; an object at rest looks along x, with y to its left. Random
/// members but `cryptrand` draw from one source, which the seed alone decides.
class MathLibrary : public Bound<MathLibrary> {
public:
    static constexpr std::string_view script_name = "MathLibrary";
    static void bind(StaticMemberSet<MathLibrary>& members);

    explicit MathLibrary(std::uint32_t seed = RandomSource::default_seed) : random_(seed) {}
    RandomSource& random() { return random_; }

private:
    RandomSource random_;
};

} // namespace kst::script
